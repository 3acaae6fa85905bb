#include "searchfoldersdialog.h"

#include "../app/commands.h"

#include <base/utf16.h>
#include <kiln/searchfolders.h>
#include <workbench/texts.h>

#include <shlobj.h>

#include <algorithm>
#include <utility>

namespace workbench {

SearchFoldersDialog::SearchFoldersDialog(HWND owner, std::vector<std::string> folders)
    : CDialog(IDD_SEARCH_FOLDERS, owner), folders_(std::move(folders)) {}

bool SearchFoldersDialog::OnInitDialog() {
    show(folders_.empty() ? -1 : 0);
    return true;
}

int SearchFoldersDialog::chosen() const {
    return static_cast<int>(::SendMessageW(Item(IDC_SEARCH_LIST), LB_GETCURSEL, 0, 0));
}

void SearchFoldersDialog::show(int chosen) {
    const HWND list = Item(IDC_SEARCH_LIST);
    ::SendMessageW(list, LB_RESETCONTENT, 0, 0);
    for (const std::string& folder : folders_)
        ::SendMessageW(list, LB_ADDSTRING, 0,
                       reinterpret_cast<LPARAM>(base::toWide(folder).c_str()));
    ::SendMessageW(list, LB_SETCURSEL, static_cast<WPARAM>(chosen), 0);
    enableButtons();
}

// A button that is disabled must not keep the keyboard.
void SearchFoldersDialog::enableButtons() {
    const int at = chosen(), count = static_cast<int>(folders_.size());
    const bool fits = count < KILN_SEARCH_DIR_COUNT;
    const std::pair<int, bool> states[] = {
        {IDC_SEARCH_ADD, fits && !ItemText(IDC_SEARCH_FOLDER).empty()},
        {IDC_SEARCH_REMOVE, at >= 0},
        {IDC_SEARCH_UP, at > 0},
        {IDC_SEARCH_DOWN, at >= 0 && at + 1 < count}};
    for (const auto& [id, on] : states) {
        if (!on && ::GetFocus() == Item(id)) ::SetFocus(Item(IDC_SEARCH_LIST));
        EnableItem(id, on);
    }
}

void SearchFoldersDialog::browse() {
    std::wstring title = base::toWide(textOf(TextId::kChooseFolder));
    BROWSEINFOW ask{};
    ask.hwndOwner = Handle();
    ask.lpszTitle = title.c_str();
    ask.ulFlags = BIF_RETURNONLYFSDIRS;
    const PIDLIST_ABSOLUTE folder = ::SHBrowseForFolderW(&ask);
    if (!folder) return;
    wchar_t path[MAX_PATH] = L"";
    if (::SHGetPathFromIDListW(folder, path)) ::SetDlgItemTextW(Handle(), IDC_SEARCH_FOLDER, path);
    ::ILFree(folder);
    ::SetFocus(Item(IDC_SEARCH_ADD));
}

// Behind the others; one that is there is chosen.
void SearchFoldersDialog::add() {
    const std::string folder = ItemText(IDC_SEARCH_FOLDER);
    if (folder.empty() || folder.find('|') != std::string::npos) return;
    const auto known = std::ranges::find(folders_, folder);
    const auto place = static_cast<int>(known - folders_.begin());
    if (known == folders_.end()) folders_.push_back(folder);
    ::SetDlgItemTextW(Handle(), IDC_SEARCH_FOLDER, L"");
    show(place);
    ::SetFocus(Item(IDC_SEARCH_FOLDER));
}

void SearchFoldersDialog::remove() {
    const int at = chosen();
    if (at < 0) return;
    folders_.erase(folders_.begin() + at);
    show(std::min(at, static_cast<int>(folders_.size()) - 1));
}

void SearchFoldersDialog::move(int by) {
    const int at = chosen(), to = at + by;
    if (at < 0 || to < 0 || to >= static_cast<int>(folders_.size())) return;
    std::swap(folders_[static_cast<std::size_t>(at)], folders_[static_cast<std::size_t>(to)]);
    show(to);
}

// Enter takes a folder that was typed into the list.
void SearchFoldersDialog::OnOK() {
    if (::GetFocus() == Item(IDC_SEARCH_FOLDER) && !ItemText(IDC_SEARCH_FOLDER).empty())
        return add();
    CDialog::OnOK();
}

bool SearchFoldersDialog::OnCommand(int id, UINT code, HWND control) {
    switch (id) {
        case IDC_SEARCH_BROWSE:
            browse();
            return true;
        case IDC_SEARCH_ADD:
            add();
            return true;
        case IDC_SEARCH_REMOVE:
            remove();
            return true;
        case IDC_SEARCH_UP:
            move(-1);
            return true;
        case IDC_SEARCH_DOWN:
            move(1);
            return true;
        case IDC_SEARCH_LIST:
        case IDC_SEARCH_FOLDER:
            enableButtons();
            return true;
        default:
            return CDialog::OnCommand(id, code, control);
    }
}

}  // namespace workbench
