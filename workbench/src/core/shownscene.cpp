#include <workbench/shownscene.h>

#include <utility>
#include <vector>

namespace workbench {

ShownScene::ShownScene(Interface& host, std::function<void()> onOutdated)
    : host_(host),
      onOutdated_(std::move(onOutdated)),
      watch_([](void* self) { static_cast<ShownScene*>(self)->onOutdated_(); }, this) {}

const render::SceneModel& ShownScene::model() {
    if (held_) return feed_.model();
    if (!isCurrent()) {
        const auto copyOf = [](std::span<INode* const> nodes) {
            return std::vector<INode*>(nodes.begin(), nodes.end());
        };
        const std::vector<INode*> changed = copyOf(watch_.ChangedNodes());
        const std::vector<INode*> moved = copyOf(watch_.MovedNodes());
        const bool mayFollow = isRead_ && !watch_.HasChangedOtherwise();
        // Before it is read, so that a change meanwhile is told.
        watch_.Take();
        isRead_ = false;
        if (!mayFollow || !feed_.follow(host_, changed, moved))
            feed_.build(host_);
        else if (selectionChanged_)
            feed_.updateSelection();
        isRead_ = true;
    } else if (selectionChanged_) {
        feed_.updateSelection();
    }
    selectionChanged_ = false;
    isRead_ = false;
    if (!feed_.followPoses(host_)) feed_.build(host_);
    isRead_ = true;
    return feed_.model();
}

std::span<INode* const> ShownScene::nodes() {
    model();
    return feed_.nodes();
}

INode* ShownScene::nodeOf(render::ItemIndex item) const {
    return isCurrent() && !held_ ? feed_.nodeOf(item) : nullptr;
}

void ShownScene::selectionChanged() {
    if (!std::exchange(selectionChanged_, true) && isCurrent()) onOutdated_();
}

void ShownScene::readFiles(const std::function<bool(const std::string& path)>& mayGoOn) {
    if (held_) return;
    model();
    feed_.readFiles(host_, mayGoOn);
    if (feed_.unread().empty()) onOutdated_();
}

void ShownScene::noticeFiles() {
    if (!held_ && isRead_ && feed_.noticeChanges()) readAgain();
}

void ShownScene::readAgain() {
    isRead_ = false;
    if (!held_) onOutdated_();
}

void ShownScene::hold(bool held) {
    held_ = held;
    if (!held && (selectionChanged_ || !isCurrent())) onOutdated_();
}

}  // namespace workbench
