#include <framework/module.h>
#include <kiln/kiln.h>
#include <kiln/language.h>
#include <plugin/pluginapp.h>

namespace plugin {

bool PluginApp::InitInstance() {
    framework::setLanguageSource(
        []() noexcept { return static_cast<base::Language>(GetLanguage()); });
    RegisterNotification(languageChanged, this, NOTIFY_LANGUAGE_CHANGED);
    return true;
}

int PluginApp::ExitInstance() {
    UnRegisterNotification(languageChanged, this, NOTIFY_LANGUAGE_CHANGED);
    destroyWindow();
    return CWinApp::ExitInstance();
}

void PluginApp::languageChanged(void* app, NotifyInfo*) {
    const framework::ModuleScope scope;
    try {
        static_cast<PluginApp*>(app)->followLanguage();
    } catch (...) {
        // Without memory it goes on in the language before.
    }
}

}  // namespace plugin
