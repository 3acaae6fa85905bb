// The application object of a plug-in with a window of its own.
#pragma once

#include <framework/cwinapp.h>

struct NotifyInfo;

namespace plugin {

/// Has the module speak the host's language, and its window follow when that changes.
class PluginApp : public framework::CWinApp {
public:
    bool InitInstance() override;
    int ExitInstance() override;

protected:
    /// The host speaks another language.
    virtual void followLanguage() = 0;
    /// The module goes; its window has to go before.
    virtual void destroyWindow() = 0;

private:
    static void languageChanged(void* app, NotifyInfo* info);
};

}  // namespace plugin
