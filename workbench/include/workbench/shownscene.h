// The scene as the program shows it.
#pragma once

#include <render/scenefeed.h>

#include <kiln/scenewatch.h>

#include <functional>
#include <span>
#include <utility>
#include <vector>

namespace workbench {

/// Reads the scene anew when somebody looks at it and it has changed since, whoever changed it: all
/// of it, or what has changed.
class ShownScene {
public:
    /// `onOutdated` is called when what was read is out of date, once until it is read again.
    ShownScene(Interface& host, std::function<void()> onOutdated);

    /// What to draw: as the scene is now, unless it is being held. Valid until the next call.
    const render::SceneModel& model();
    /// The nodes that are not hidden.
    std::span<INode* const> nodes();
    /// The node behind an item of the last model; null for none, and while that is out of date.
    INode* nodeOf(render::ItemIndex item) const;
    /// Of the last model.
    const render::SceneCounts& counts() const { return feed_.counts(); }
    std::vector<std::string> takeFailures() { return feed_.takeFailures(); }
    /// What the references of the last model do not find, one sentence each.
    std::vector<std::string> missing() const { return feed_.missing(); }
    std::size_t missingCount() const { return feed_.missingCount(); }
    /// The files that the last model refers to and that are still to be read.
    const std::vector<std::string>& unreadFiles() const { return feed_.unread(); }
    /// Reads some of them: before each, `mayGoOn` is asked. What was read is shown once all of a
    /// model's are.
    void readFiles(const std::function<bool(const std::string& path)>& mayGoOn);
    /// Reads anew what has changed on disk.
    void noticeFiles();
    /// Reads the scene and its files anew, also where nothing of the scene has changed.
    void readAgain();
    /// Whether what the last model shows changes with time.
    bool changes() const { return feed_.model().changes(); }

    /// Shows joints in these poses, and the others as the scene says; who looks then draws anew.
    void pose(render::Poses poses, render::FilePoses inFiles = {}) {
        feed_.setPoses(std::move(poses), std::move(inFiles));
    }
    /// The nodes of files that the last model shows by way of references, with all below them.
    std::vector<INode*> fileTops() const { return feed_.fileTops(); }
    /// The box of what is selected, and below it, in the last model; empty without any.
    render::Box selectedBox() const { return feed_.model().selectedBox(); }

    /// To be told when the set of selected nodes has changed.
    void selectionChanged();
    /// Forgets the nodes, which are about to go.
    void forget() { feed_.clear(); }
    /// While the scene is half-done what was read last is shown.
    void hold(bool held);
    bool isHeld() const { return held_; }

private:
    bool isCurrent() const { return isRead_ && !watch_.HasChanged(); }

    Interface& host_;
    std::function<void()> onOutdated_;
    SceneWatch watch_;
    render::SceneFeed feed_;
    bool isRead_ = false;
    bool selectionChanged_ = false;
    bool held_ = false;
};

}  // namespace workbench
