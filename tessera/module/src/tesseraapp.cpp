// The application object of the module: its start and end hooks frame everything else.
#include <framework/cwinapp.h>
#include <tessera/browser.h>
#include <tessera/nodecreation.h>

namespace {

class CTesseraApp : public CWinApp {
public:
    bool InitInstance() override {
        tessera::browserStartUp();
        return true;
    }

    int ExitInstance() override {
        tessera::browserShutDown();
        return CWinApp::ExitInstance();
    }
};

CTesseraApp theApp;

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID) {
    return CWinApp::DllMain(reason);
}
