#include "menubar.h"

#include "../ui/viewport.h"
#include "commands.h"
#include "referencecommands.h"
#include "scriptfiles.h"

#include <base/resources.h>
#include <base/utf16.h>
#include <framework/module.h>
#include <workbench/historytexts.h>
#include <workbench/savedviews.h>
#include <workbench/texts.h>

using framework::moduleInstance, framework::resourceLanguage;

namespace workbench {

void MenuBar::attach() {
    const HMENU before = menu_;
    menu_ = ::LoadMenuIndirectW(
        base::findResource(moduleInstance(), RT_MENU, IDR_MAIN_MENU, resourceLanguage()));
    ::SetMenu(window_.Handle(), menu_);
    if (before) ::DestroyMenu(before);
}

void MenuBar::refresh(std::span<const std::string> recent, bool historyShown, bool picksWholes,
                      bool snaps) {
    enableEntries(menu_);
    nameSteps();
    checkEntries();
    check(CMD_EDIT_HISTORY, historyShown);
    check(CMD_EDIT_PICK_OBJECTS, picksWholes);
    check(CMD_EDIT_SNAP, snaps);
    listRecent(recent);
}

void MenuBar::showForView(POINT screen) {
    const HMENU menu = ::LoadMenuIndirectW(
        base::findResource(moduleInstance(), RT_MENU, IDR_VIEW_MENU, resourceLanguage()));
    enableEntries(menu);
    ::TrackPopupMenu(::GetSubMenu(menu, 0), TPM_RIGHTBUTTON, screen.x, screen.y, 0,
                     window_.Handle(), nullptr);
    ::DestroyMenu(menu);
}

void MenuBar::check(UINT command, bool on) {
    ::CheckMenuItem(menu_, command, MF_BYCOMMAND | (on ? MF_CHECKED : MF_UNCHECKED));
}

void MenuBar::enableEntries(HMENU menu) {
    const auto enable = [menu](UINT command, bool on) {
        ::EnableMenuItem(menu, command, MF_BYCOMMAND | (on ? MF_ENABLED : MF_GRAYED));
    };
    Interface& host = core_.hostInterface();
    const bool selected = host.GetSelNodeCount() > 0, any = host.GetNodeCount() > 0;
    for (const UINT command :
         {CMD_EDIT_SELECT_NONE, CMD_EDIT_DELETE, CMD_EDIT_HIDE, CMD_EDIT_ISOLATE, CMD_EDIT_GROUP,
          CMD_EDIT_UNGROUP, CMD_VIEW_SELECTED})
        enable(command, selected);
    enable(CMD_EDIT_SELECT_ALL, any);
    enable(CMD_EDIT_SELECT_INVERT, any);
    const bool refers = references_.hasReference();
    enable(CMD_REFERENCE_OPEN, refers);
    enable(CMD_REFERENCE_LOCAL, refers);
    enable(CMD_REFERENCE_COLLAPSE, references_.canCollapse());
    enable(CMD_FILE_IMPORT, !core_.importKinds().empty());
    enable(CMD_SCRIPT_RUN_AGAIN, scripts_.hasRun());
    const bool exports = any && !core_.exportKinds().empty();
    enable(CMD_FILE_EXPORT, exports);
    enable(CMD_FILE_EXPORT_SELECTED, exports && selected);
}

void MenuBar::nameSteps() {
    const kiln::History& history = core_.history();
    showStep(CMD_EDIT_UNDO, undoEntry(history), history.canUndo());
    showStep(CMD_EDIT_REDO, redoEntry(history), history.canRedo());
}

void MenuBar::showStep(UINT command, const std::string& text, bool on) {
    const UINT state = on ? MF_ENABLED : MF_GRAYED;
    ::ModifyMenuW(menu_, command, MF_BYCOMMAND | MF_STRING | state, command,
                  base::toWide(text).c_str());
}

void MenuBar::checkEntries() {
    ::CheckMenuRadioItem(menu_, CMD_VIEW_PERSPECTIVE, CMD_VIEW_BOTTOM,
                         CMD_VIEW_PERSPECTIVE + static_cast<UINT>(viewport_.camera().view()),
                         MF_BYCOMMAND);
    ::CheckMenuRadioItem(menu_, CMD_VIEW_SHADED, CMD_VIEW_WIREFRAME,
                         CMD_VIEW_SHADED + static_cast<UINT>(viewport_.options().mode),
                         MF_BYCOMMAND);
    ::CheckMenuRadioItem(
        menu_, CMD_VIEW_CHINESE, CMD_VIEW_ENGLISH,
        resourceLanguage() == base::Language::kEnglish ? CMD_VIEW_ENGLISH : CMD_VIEW_CHINESE,
        MF_BYCOMMAND);
    ::CheckMenuRadioItem(menu_, CMD_VIEW_ANY_TIME, CMD_VIEW_NIGHT,
                         CMD_VIEW_ANY_TIME + static_cast<UINT>(viewport_.options().time),
                         MF_BYCOMMAND);
    ::CheckMenuRadioItem(menu_, CMD_EDIT_HANDLES_NONE, CMD_EDIT_HANDLES_SCALE,
                         CMD_EDIT_HANDLES_NONE + static_cast<UINT>(viewport_.handleMode()),
                         MF_BYCOMMAND);
    for (std::size_t place = 0; place < SavedViews::kPlaces; ++place)
        ::EnableMenuItem(menu_, CMD_VIEW_RECALL + static_cast<UINT>(place),
                         MF_BYCOMMAND | (views_.at(place) ? MF_ENABLED : MF_GRAYED));
    check(CMD_VIEW_LEVELS_BY_EYE, viewport_.options().levelsByEye);
    check(CMD_VIEW_GRID, viewport_.options().grid);
    check(CMD_VIEW_FRAME_RATE, viewport_.showsFrameRate());
}

// The digit before a path is its key.
void MenuBar::listRecent(std::span<const std::string> recent) {
    constexpr int kFileMenu = 0, kRecentMenu = 2;
    const HMENU menu = ::GetSubMenu(::GetSubMenu(menu_, kFileMenu), kRecentMenu);
    while (::GetMenuItemCount(menu) > 0) ::DeleteMenu(menu, 0, MF_BYPOSITION);
    UINT command = CMD_FILE_RECENT;
    for (const std::string& path : recent) {
        std::string text("&");
        text.append(std::to_string(command - CMD_FILE_RECENT + 1)).append("  ");
        for (const char c : path) text.append(c == '&' ? 2 : 1, c);
        ::AppendMenuW(menu, MF_STRING, command++, base::toWide(text).c_str());
    }
    if (recent.empty())
        ::AppendMenuW(menu, MF_STRING | MF_GRAYED, CMD_FILE_RECENT_NONE,
                      base::toWide(textOf(TextId::kNoRecentFiles)).c_str());
}

void MenuBar::listAboutBoxes(std::span<ClassDesc2* const> utilities) {
    const HMENU help = ::GetSubMenu(menu_, ::GetMenuItemCount(menu_) - 1);
    constexpr int kOwnEntries = 3;  // the program's about box, the guide and the keys
    while (::GetMenuItemCount(help) > kOwnEntries) ::DeleteMenu(help, kOwnEntries, MF_BYPOSITION);
    UINT command = CMD_HELP_ABOUT_UTILITY;
    for (ClassDesc2* const utility : utilities) {
        const std::wstring text = base::toWide(textOf(TextId::kAbout, {utility->ClassName()}));
        ::AppendMenuW(help, MF_STRING, command++, text.c_str());
    }
}

}  // namespace workbench
