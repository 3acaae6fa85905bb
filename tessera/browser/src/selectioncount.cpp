#include "selectioncount.h"

#include <base/texts.h>
#include <base/utf16.h>
#include <framework/gdi.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>
#include <string>

using framework::loadString;

namespace tessera {
namespace {

constexpr int kMargin = 8;  // pixels at 100 % scaling, to the frame's right end

}  // namespace

void SelectionCount::found(std::size_t count) {
    hasFound_ = true;
    found_ = count;
    marks_ = tree_.Model().marks();
    known_ = true;
    show(base::fillText(loadString(IDS_FOUND_COUNT), {std::to_string(count)}));
}

void SelectionCount::update() {
    const TreeModel& model = tree_.Model();
    const bool sameMarks = marks_ == model.marks();
    if (known_ && sameMarks && branches_ == tree_.BranchChanges()) return;
    if (hasFound_ && sameMarks) return;
    hasFound_ = false;
    known_ = true;
    marks_ = model.marks();
    branches_ = tree_.BranchChanges();
    const std::size_t count = tree_.Selection().count();
    const std::size_t hidden = count == 0 ? 0 : count - tree_.Selection().visible().size();
    if (hidden > 0)
        show(base::fillText(loadString(IDS_SELECTED_HIDDEN),
                            {std::to_string(count), std::to_string(hidden)}));
    else if (count > 1)
        show(base::fillText(loadString(IDS_SELECTED_COUNT), {std::to_string(count)}));
    else
        show("");
}

void SelectionCount::renew() {
    if (!label_.HasWindow()) return;
    if (hasFound_) return found(found_);
    known_ = false;
    update();
}

// It stands in the frame itself, over its line, and covers no more of that than the text needs.
void SelectionCount::show(const std::string& text) {
    if (text.empty()) {
        if (label_.HasWindow()) label_.Hide();
        return;
    }
    framework::CWnd frame;
    frame.Attach(form_.Item(IDC_TREE_GROUP));
    if (!label_.HasWindow()) {
        const RECT nowhere{};
        if (!label_.CreateEx(0, L"Static", "", WS_CHILD | SS_CENTER, nowhere, frame.Handle(),
                             IDC_SELECTED_COUNT))
            return;
        label_.SetFont(form_.Font());
    }
    const std::wstring wide = base::toWide(text);
    SIZE size{};
    {
        const framework::WindowDc dc(label_.Handle());
        const framework::SelectScope font(dc.get(), label_.Font());
        ::GetTextExtentPoint32W(dc.get(), wide.c_str(), static_cast<int>(wide.size()), &size);
    }
    const LONG margin = form_.Scaled(kMargin);
    const LONG right = frame.ClientRect().right - margin;
    label_.SetText(text);
    label_.MoveTo({std::max(margin, right - size.cx - margin), 0, right, size.cy});
    label_.Show(SW_SHOWNA);
    label_.Invalidate();
}

}  // namespace tessera
