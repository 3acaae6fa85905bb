// The application object of the module, with its start and end hooks.
#include <framework/cwinapp.h>
#include <framework/module.h>
#include <kiln/language.h>
#include <kiln/notify.h>
#include <tessera/browser.h>
#include <tessera/browserclient.h>
#include <tessera/nodecreation.h>

using framework::CWinApp, framework::setLanguageSource;

namespace {

// The utility's page is the host's to open anew, and an about box keeps its language to the end.
void followLanguage(void*, NotifyInfo*) {
    tessera::browserFollowLanguage();
}

class CTesseraApp : public CWinApp {
public:
    bool InitInstance() override {
        setLanguageSource([]() noexcept { return static_cast<base::Language>(GetLanguage()); });
        tessera::browserStartUp();
        RegisterNotification(followLanguage, nullptr, NOTIFY_LANGUAGE_CHANGED);
        return true;
    }

    int ExitInstance() override {
        UnRegisterNotification(followLanguage, nullptr, NOTIFY_LANGUAGE_CHANGED);
        tessera::leaveScene();
        tessera::browserShutDown();
        tessera::releaseNameMaker();
        return CWinApp::ExitInstance();
    }
};

CTesseraApp theApp;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return CWinApp::DllMain(reason);
}
