// Saves the scene aside while the user works, offers at the start what a crash has left, and asks
// Windows to wait when it ends the session.
#pragma once

#include <framework/cwnd.h>
#include <workbench/autosave.h>

#include <string>

namespace workbench {

class SceneFiles;

class Recovery {
public:
    /// `folder` is where scenes are saved aside; empty for nowhere. All outlive this.
    Recovery(framework::CWnd& window, kiln::Core& core, SceneFiles& files,
             const std::string& folder);

    /// Begins, once the window is there.
    void start();
    /// Offers what programs have left that did not end properly; true when the user took one.
    bool offer();
    /// Nothing is unsaved any more, or the user does not want it.
    void discard() { save_.discard(); }

    /// To be told of each message that the program takes.
    void noteMessage(const MSG& message);
    /// Long work has begun or ended.
    void setBusy(bool busy) { busy_ = busy; }
    /// Whether it was this one's timer.
    bool onTimer(UINT_PTR id);

    /// WM_QUERYENDSESSION: whether the session may end at once. Otherwise the system is asked to
    /// wait, and `askAtEnd` is to follow.
    bool mayEndSession();
    /// Asks the user what to do with the changes; true when the program may end.
    bool askAtEnd();
    /// WM_ENDSESSION: the session ends, whether or not the user has answered.
    void endSession();

private:
    bool isEngaged() const;

    framework::CWnd& window_;
    kiln::Core& core_;
    SceneFiles& files_;
    const std::string folder_;
    AutoSave save_;
    ULONGLONG lastInput_ = 0, lastKey_ = 0;
    bool busy_ = false;
};

}  // namespace workbench
