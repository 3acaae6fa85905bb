#include "treesearch.h"

#include "formlayout.h"
#include "propertyside.h"
#include "recordkinds.h"
#include "usermessages.h"

#include <base/utf16.h>
#include <framework/centredtext.h>
#include <framework/cwaitcursor.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>
#include <array>
#include <string>

using framework::loadString;

namespace tessera {
namespace {

constexpr int kLongestText = 256;  // characters
constexpr int kGap = 4;            // pixels at 100 % scaling
constexpr int kCountWidth = 64;    // the same

/// The text in small letters. Most names are ASCII, which takes no detour.
std::string inSmallLetters(std::string_view text) {
    std::string small(text);
    if (std::ranges::all_of(small, [](char c) { return static_cast<unsigned char>(c) < 0x80; })) {
        for (char& c : small)
            if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        return small;
    }
    std::wstring wide = base::toWide(text);
    ::CharLowerBuffW(wide.data(), static_cast<DWORD>(wide.size()));
    return base::toUtf8(wide);
}

}  // namespace

// ---------------------------------------------------------------- the line

// It is made when it is first wanted and stands before the tree in the tab order.
void TreeSearch::create() {
    const RECT nowhere{};
    if (!field_.Create("", WS_CHILD | WS_TABSTOP | ES_AUTOHSCROLL, nowhere, form_.Handle(),
                       IDC_SEARCH))
        return;
    count_.CreateEx(0, L"Static", "", WS_CHILD | SS_RIGHT | SS_CENTERIMAGE, nowhere, form_.Handle(),
                    IDC_SEARCH_COUNT);
    field_.SetFont(form_.Font());
    count_.SetFont(form_.Font());
    framework::centreText(field_.Handle());
    field_.SetLimit(kLongestText);
    followLanguage();
    const HWND before = ::GetWindow(tree_.Handle(), GW_HWNDPREV);
    for (const HWND window : {count_.Handle(), field_.Handle()})
        ::SetWindowPos(window, before, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE);
}

void TreeSearch::open() {
    if (!field_.HasWindow()) create();
    if (!field_.HasWindow()) return beepSimply();
    if (!open_) {
        open_ = true;
        layout_.setSearchLine(true);
        arrange();
        evaluate();
        field_.Show();
        count_.Show();
    }
    field_.Select(0, -1);
    field_.SetFocus();
}

void TreeSearch::close() {
    if (!open_) return;
    open_ = false;
    if (field_.HasFocus()) tree_.SetFocus();
    field_.Hide();
    count_.Hide();
    tree_.DimOthers(false);
    layout_.setSearchLine(false);
    form_.Invalidate();
}

void TreeSearch::arrange() const {
    if (!open_) return;
    RECT area = layout_.searchLine();
    RECT count = area;
    count.left = std::max(area.left, area.right - form_.Scaled(kCountWidth));
    area.right = std::max(area.left, count.left - form_.Scaled(kGap));
    field_.MoveTo(area);
    count_.MoveTo(count);
}

// What can be typed is said in the empty field itself.
void TreeSearch::followLanguage() const {
    constexpr WPARAM kAlsoWithKeyboard = TRUE;
    const std::wstring hint = base::toWide(loadString(IDS_SEARCH_HINT));
    field_.Send(EM_SETCUEBANNER, kAlsoWithKeyboard, reinterpret_cast<LPARAM>(hint.c_str()));
    if (open_) showCount();
}

// ---------------------------------------------------------------- matches

void TreeSearch::evaluate() {
    const std::string wanted = inSmallLetters(field_.Text());
    std::array<bool, kRecordKindCount> wantedKinds{};
    for (std::size_t row = 0; row < wantedKinds.size(); ++row)
        wantedKinds[row] =
            inSmallLetters(kindName(static_cast<int>(row))).find(wanted) != std::string::npos;
    TreeModel& model = tree_.Model();
    matches_ = 0;
    for (TreeItem* at = model.first(); at; at = TreeModel::following(*at)) {
        const auto row = static_cast<std::size_t>(at->image);
        at->found =
            !wanted.empty() && ((at->node && row < wantedKinds.size() && wantedKinds[row]) ||
                                inSmallLetters(at->text).find(wanted) != std::string::npos);
        if (at->found) ++matches_;
    }
    seen_ = model.changes();
    tree_.DimOthers(!wanted.empty());
    showCount();
}

void TreeSearch::update() {
    if (open_ && seen_ != tree_.Model().changes()) evaluate();
}

TreeSearch::Around TreeSearch::around(const TreeItem* item) const {
    Around found;
    TreeItem* first = nullptr;
    TreeItem* last = nullptr;
    std::size_t passed = 0;
    bool behind = false;
    for (TreeItem* at = tree_.Model().first(); at; at = TreeModel::following(*at)) {
        if (at->found) {
            ++passed;
            if (!first) first = at;
            if (at == item) found.place = passed;
            if (behind && !found.after) found.after = at;
        }
        if (at == item) {
            behind = true;
            found.before = last;
        }
        if (at->found) last = at;
    }
    if (!found.after) found.after = first;
    if (!found.before) found.before = last;
    return found;
}

// The keyboard stays where it is, so that typing can go on.
void TreeSearch::show(TreeItem& item) {
    const HTREEITEM handle = item.handle;
    {
        const framework::CWaitCursor wait;
        const RedrawPause pause(tree_);
        const auto keep = properties_.keepFocus();
        tree_.Branches().reveal({&item});
        tree_.Selection().click(handle, false, false);
        tree_.EnsureVisible(handle);
    }
    showCount();
}

void TreeSearch::showCount() const {
    std::string text;
    if (!field_.Text().empty()) {
        const TreeItem* const caret = tree_.Find(tree_.Caret());
        const std::size_t place = caret && caret->found ? around(caret).place : 0;
        if (place) text = std::to_string(place) + " / ";
        text += std::to_string(matches_);
    }
    count_.SetText(text);
}

void TreeSearch::next(bool forward) {
    update();
    const Around found = around(tree_.Find(tree_.Caret()));
    TreeItem* const item = forward ? found.after : found.before;
    if (!item || !tree_.isUsable()) return beepSimply();
    show(*item);
}

// ---------------------------------------------------------------- keys and typing

bool TreeSearch::onKey(const MSG& message) {
    const bool shift = ::GetKeyState(VK_SHIFT) < 0;
    const bool control = ::GetKeyState(VK_CONTROL) < 0;
    const bool inLine = open_ && message.hwnd == field_.Handle();
    switch (message.wParam) {
        case 'F':
            if (!control || shift || ::GetKeyState(VK_MENU) < 0) return false;
            open();
            return true;
        case VK_F3:
            if (!open_) return false;
            next(!shift);
            return true;
        case VK_RETURN:
            if (!inLine) return false;
            next(!shift);
            return true;
        case VK_ESCAPE:
            if (!inLine && !(open_ && message.hwnd == tree_.Handle())) return false;
            close();
            return true;
        case VK_DOWN:
            if (!inLine) return false;
            tree_.SetFocus();
            return true;
        default:
            return false;
    }
}

// As long as what is typed goes on matching the node that is shown, that one stays.
bool TreeSearch::onCommand(int id, UINT code) {
    if (id != IDC_SEARCH || code != EN_CHANGE) return false;
    if (!open_) return true;
    evaluate();
    TreeItem* const caret = tree_.Find(tree_.Caret());
    if (!tree_.isUsable() || (caret && caret->found)) return true;
    if (TreeItem* const match = around(caret).after) show(*match);
    return true;
}

}  // namespace tessera
