#include "contextmenus.h"

#include "editcommands.h"
#include "nodeclipboard.h"
#include "propertyside.h"
#include "recordkinds.h"
#include "selectioncommands.h"
#include "selectionfollower.h"
#include "treesearch.h"

#include <base/utf16.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>

using framework::loadString;

namespace tessera {
namespace {

/// What can be chosen. The platform's number for nothing is 0.
enum Command : int {
    kNothing,
    kRename,
    kFind,
    kCut,
    kCopy,
    kPaste,
    kDuplicate,
    kDelete,
    kSelectChildren,
    kSelectParents,
    kSelectSameKind,
    kCopyValue,
    kCopyRow,
    kResetValue,
    kFollow,
    kFold,
    kUnfold,
    kFoldAll,
    kUnfoldAll,
    kLevels = 0x100,       ///< and the number of levels; without one, all
    kCreateBelow = 0x200,  ///< and the row of the kind, as in the next
    kCreateBeside = 0x300,
    kGroup = 0xF00,
};

constexpr int kMostLevels = 5;

/// A menu that is being put together.
class Menu {
public:
    Menu() : menu_(::CreatePopupMenu()) {}
    ~Menu() {
        if (menu_) ::DestroyMenu(menu_);
    }
    Menu(const Menu&) = delete;
    Menu& operator=(const Menu&) = delete;

    void add(int command, std::string_view text, bool enabled = true) {
        ::AppendMenuW(menu_, MF_STRING | (enabled ? 0U : MF_GRAYED), static_cast<UINT_PTR>(command),
                      base::toWide(text).c_str());
    }
    void add(int command, UINT text, bool enabled = true) {
        add(command, loadString(text), enabled);
    }
    void add(Menu& below, UINT text, bool enabled = true) {
        ::AppendMenuW(menu_, MF_POPUP | (enabled ? 0U : MF_GRAYED),
                      reinterpret_cast<UINT_PTR>(below.menu_),
                      base::toWide(loadString(text)).c_str());
        below.menu_ = nullptr;  // it goes with this one
    }
    void check(int command, bool checked) {
        ::CheckMenuItem(menu_, static_cast<UINT>(command), checked ? MF_CHECKED : MF_UNCHECKED);
    }
    void separate() { ::AppendMenuW(menu_, MF_SEPARATOR, 0, nullptr); }

    /// Shows it; returns what was chosen.
    int track(HWND owner, POINT at) const {
        return ::TrackPopupMenu(menu_, TPM_RETURNCMD | TPM_RIGHTBUTTON, at.x, at.y, 0, owner,
                                nullptr);
    }

private:
    HMENU menu_;
};

void addKinds(Menu& menu, int command) {
    for (int row = 0; row < creatableKindCount(); ++row) menu.add(command + row, kindName(row));
}

}  // namespace

bool ContextMenus::show(HWND control, POINT at) {
    if (control == parts_.tree.Handle())
        showTreeMenu(at);
    else if (control == parts_.form.Item(IDC_GRID))
        showGridMenu(at);
    else
        return false;
    return true;
}

POINT ContextMenus::besideCaret() const {
    RECT label{};
    const HTREEITEM caret = parts_.tree.Caret();
    if (caret) parts_.tree.EnsureVisible(caret);
    if (!caret || !parts_.tree.ItemRect(caret, label, true)) label = {};
    return parts_.tree.ToScreen({label.left, label.bottom});
}

// A menu keeps whoever opens it until the user has chosen. Programs that drive the form send the
// tree presses of the right button, which select, without a user behind them.
void ContextMenus::showTreeMenu(POINT at) {
    const bool byKey = at.x == -1 && at.y == -1;
    if (!byKey && !parts_.tree.WasRightPressed()) return;
    const NodeClipboard& clipboard = parts_.clipboard;
    const TreeItem* const first = parts_.tree.Selection().first();
    const bool usable = parts_.tree.isUsable() && first;
    Menu below;
    addKinds(below, kCreateBelow);
    Menu beside;
    addKinds(beside, kCreateBeside);
    Menu levels;
    for (int level = 1; level <= kMostLevels; ++level) {
        const std::string number = std::to_string(level);
        levels.add(kLevels + level, "&" + number + "\tCtrl+" + number);
    }
    levels.add(kLevels, IDS_MENU_ALL_LEVELS);
    Menu others;
    others.add(kSelectChildren, IDS_MENU_SELECT_CHILDREN);
    others.add(kSelectParents, IDS_MENU_SELECT_PARENTS);
    others.add(kSelectSameKind, IDS_MENU_SELECT_SAME_KIND);

    Menu menu;
    menu.add(kRename, IDS_MENU_RENAME, usable && parts_.tree.Caret());
    menu.add(below, IDS_MENU_CREATE_BELOW, usable && first->node);
    menu.add(beside, IDS_MENU_CREATE_BESIDE, usable && first->parent);
    menu.separate();
    menu.add(kCut, IDS_MENU_CUT, clipboard.canCut());
    menu.add(kCopy, IDS_MENU_COPY, clipboard.canCopy());
    menu.add(kPaste, IDS_MENU_PASTE, clipboard.canPaste());
    menu.add(kDuplicate, IDS_MENU_DUPLICATE, clipboard.canDuplicate());
    menu.add(kDelete, IDS_MENU_DELETE, clipboard.canDelete());
    menu.separate();
    menu.add(others, IDS_MENU_SELECT, usable);
    menu.add(levels, IDS_MENU_EXPAND_TO, usable);
    menu.add(kFind, IDS_MENU_FIND, parts_.tree.isUsable());
    menu.separate();
    menu.add(kFollow, IDS_MENU_FOLLOW, parts_.follower.canFollow());
    menu.check(kFollow, parts_.follower.isOn());
    carryOut(menu.track(parts_.form.Handle(), byKey ? besideCaret() : at));
}

void ContextMenus::showGridMenu(POINT at) {
    const PropertySide& properties = parts_.properties;
    const bool keyboard = at.x == -1 && at.y == -1;
    Menu menu;
    menu.add(kCopyValue, IDS_MENU_COPY_VALUE, properties.hasChosenRows());
    menu.add(kCopyRow, IDS_MENU_COPY_ROW, properties.hasChosenRows());
    menu.separate();
    menu.add(kResetValue, IDS_MENU_RESET_VALUE, properties.canReset());
    if (properties.hasSections()) {
        const std::optional<bool> folded = properties.isSectionFolded();
        menu.separate();
        menu.add(folded.value_or(false) ? kUnfold : kFold,
                 folded.value_or(false) ? IDS_MENU_UNFOLD : IDS_MENU_FOLD, folded.has_value());
        menu.add(kFoldAll, IDS_MENU_FOLD_ALL);
        menu.add(kUnfoldAll, IDS_MENU_UNFOLD_ALL);
    }
    carryOut(menu.track(parts_.form.Handle(), keyboard ? properties.belowFocusCell() : at));
}

void ContextMenus::carryOut(int command) {
    switch (command & kGroup) {
        case kLevels:
            return parts_.selection.expandToLevel(
                command > kLevels ? command - kLevels : SelectionCommands::kAllLevels);
        case kCreateBelow:
            return parts_.edits.createBelow(command - kCreateBelow);
        case kCreateBeside:
            return parts_.edits.createBeside(command - kCreateBeside);
        default:
            break;
    }
    switch (command) {
        case kRename:
            static_cast<void>(parts_.tree.EditLabel(parts_.tree.Caret()));
            return;
        case kFind:
            return parts_.search.open();
        case kFollow:
            return parts_.follower.turn(!parts_.follower.isOn());
        case kCut:
            return parts_.clipboard.cut();
        case kCopy:
            return parts_.clipboard.copy();
        case kPaste:
            return parts_.clipboard.paste();
        case kDuplicate:
            return parts_.clipboard.duplicate();
        case kDelete:
            return parts_.clipboard.remove();
        case kSelectChildren:
            return parts_.selection.selectChildren();
        case kSelectParents:
            return parts_.selection.selectParents();
        case kSelectSameKind:
            return parts_.selection.selectSameKind();
        case kCopyValue:
            return parts_.properties.copyValues(false);
        case kCopyRow:
            return parts_.properties.copyValues(true);
        case kResetValue:
            return parts_.properties.resetValues();
        case kFold:
        case kUnfold:
            return parts_.properties.foldSection(command == kFold);
        case kFoldAll:
        case kUnfoldAll:
            return parts_.properties.foldAllSections(command == kFoldAll);
        default:
            return;
    }
}

// ---------------------------------------------------------------- keys

namespace {

struct Key {
    WPARAM key;
    bool control;
    bool shift;
    int command;
};

constexpr Key kTreeKeys[] = {
    {VK_DELETE, false, false, kDelete}, {'X', true, false, kCut},
    {'C', true, false, kCopy},          {'V', true, false, kPaste},
    {'D', true, false, kDuplicate},     {'C', true, true, kSelectChildren},
    {'P', true, true, kSelectParents},  {'K', true, true, kSelectSameKind},
};
constexpr Key kGridKeys[] = {{'C', true, true, kCopyRow}, {'R', true, false, kResetValue}};

int commandOf(std::span<const Key> keys, WPARAM key, bool control, bool shift) {
    for (const Key& known : keys)
        if (known.key == key && known.control == control && known.shift == shift)
            return known.command;
    return kNothing;
}

// Not every control opens its menu by these keys itself.
bool opensMenu(const MSG& message, bool shift) {
    return (message.message == WM_SYSKEYDOWN && message.wParam == VK_F10 && shift) ||
           (message.message == WM_KEYUP && message.wParam == VK_APPS);
}

}  // namespace

bool ContextMenus::onKey(const MSG& message) const {
    const bool control = ::GetKeyState(VK_CONTROL) < 0;
    const bool shift = ::GetKeyState(VK_SHIFT) < 0;
    const bool inTree = message.hwnd == parts_.tree.Handle();
    if (!inTree && message.hwnd != parts_.form.Item(IDC_GRID)) return false;
    if (opensMenu(message, shift))
        return parts_.form.Post(WM_CONTEXTMENU, reinterpret_cast<WPARAM>(message.hwnd), -1);
    if (message.message != WM_KEYDOWN) return false;
    const WPARAM key = message.wParam;
    int command = inTree ? commandOf(kTreeKeys, key, control, shift)
                         : commandOf(kGridKeys, key, control, shift);
    if (inTree && control && !shift && key >= '1' && key <= '0' + kMostLevels)
        command = kLevels + static_cast<int>(key - '0');
    return command != kNothing && parts_.form.Post(kCarryOut, static_cast<WPARAM>(command));
}

}  // namespace tessera
