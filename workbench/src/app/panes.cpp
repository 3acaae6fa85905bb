#include "panes.h"

#include <framework/accessible.h>
#include <workbench/texts.h>

#include <algorithm>

using framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

constexpr UINT kViewportId = 10, kPanelId = 11, kScriptId = 12, kStatusId = 13;
constexpr int kScriptHeight = 132, kLeastScriptHeight = 50, kLeastViewportHeight = 120;
constexpr int kSplitter = 5;  // pixels at 100 %, as the others

}  // namespace

bool Panes::create() {
    const HWND parent = parent_.Handle();
    scriptHeight_ = parent_.Scaled(kScriptHeight);
    const bool made = viewport_.Create(parent, kViewportId) && panel_.Create(parent, kPanelId) &&
                      script_.Create(parent, kScriptId) && status_.Create(parent, kStatusId);
    if (made) showLanguage();
    return made;
}

void Panes::showLanguage() {
    framework::describeControl(viewport_.Handle(), {textOf(TextId::kViewportName), {}});
    panel_.showLanguage();
    script_.showLanguage();
}

void Panes::layout() {
    if (!status_.HasWindow()) return;
    const RECT area = parent_.ClientRect();
    const int width = widthOf(area);
    status_.place(width);
    const int height = heightOf(area) - status_.height(), gap = parent_.Scaled(kSplitter);
    const int panelLeft = std::max(width - panel_.wantedWidth(), 0);
    const int least = parent_.Scaled(kLeastScriptHeight);
    scriptHeight_ = std::clamp(scriptHeight_, least,
                               std::max(height - parent_.Scaled(kLeastViewportHeight), least));
    const int scriptTop = std::max(height - scriptHeight_, 0);
    viewport_.MoveTo({0, 0, std::max(panelLeft - gap, 0), std::max(scriptTop - gap, 0)});
    script_.MoveTo({0, scriptTop, std::max(panelLeft - gap, 0), height});
    panel_.MoveTo({panelLeft, 0, width, height});
}

bool Panes::isOverSplitter(POINT at) const {
    const RECT view = viewport_.AreaInParent(), script = script_.AreaInParent();
    const RECT splitter{view.left, view.bottom, view.right, script.top};
    return ::PtInRect(&splitter, at) != FALSE;
}

void Panes::beginDrag(POINT at) {
    if (!isOverSplitter(at)) return;
    dragging_ = true;
    ::SetCapture(parent_.Handle());
}

void Panes::drag(POINT at) {
    if (!dragging_ || ::GetCapture() != parent_.Handle()) return;
    scriptHeight_ = heightOf(parent_.ClientRect()) - status_.height() - static_cast<int>(at.y);
    layout();
}

void Panes::endDrag() {
    if (dragging_) ::ReleaseCapture();
    dragging_ = false;
}

}  // namespace workbench
