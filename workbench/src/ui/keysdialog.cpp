#include "keysdialog.h"

#include "../app/commands.h"

#include <framework/controls.h>

#include <commctrl.h>

using framework::widthOf;

namespace workbench {
namespace {

/// What a menu entry says, without the mark of its access key.
std::wstring textOf(HMENU menu, int position) {
    wchar_t text[256] = L"";
    ::GetMenuStringW(menu, static_cast<UINT>(position), text, 256, MF_BYPOSITION);
    std::wstring plain;
    for (const wchar_t* at = text; *at; ++at) {
        if (at[0] == L'(' && at[1] == L'&' && at[2] && at[3] == L')')
            at += 3;  // as behind Chinese words
        else if (*at != L'&' || *++at)
            plain += *at;
    }
    return plain;
}

}  // namespace

KeysDialog::KeysDialog(HWND owner, HMENU menu) : CDialog(IDD_KEYS, owner), menu_(menu) {}

bool KeysDialog::OnInitDialog() {
    const HWND list = Item(IDC_KEYS_LIST);
    ::SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    RECT area;
    ::GetClientRect(list, &area);
    LVCOLUMNW column{};
    column.mask = LVCF_WIDTH;
    column.cx = Scaled(110);
    ::SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    column.cx = widthOf(area) - Scaled(110) - ::GetSystemMetrics(SM_CXVSCROLL);
    ::SendMessageW(list, LVM_INSERTCOLUMNW, 1, reinterpret_cast<LPARAM>(&column));
    addEntries(menu_, L"");
    return true;
}

void KeysDialog::addEntries(HMENU menu, const std::wstring& above) {
    for (int i = 0; i < ::GetMenuItemCount(menu); ++i) {
        const std::wstring text = textOf(menu, i);
        const std::size_t tab = text.find(L'\t');
        if (const HMENU below = ::GetSubMenu(menu, i))
            addEntries(below, above + text + L" \u203A ");
        else if (tab != text.npos)
            add(text.substr(tab + 1), above + text.substr(0, tab));
    }
}

void KeysDialog::add(const std::wstring& key, const std::wstring& what) {
    const HWND list = Item(IDC_KEYS_LIST);
    std::wstring texts[] = {key, what};
    LVITEMW item{};
    item.mask = LVIF_TEXT;
    item.iItem = static_cast<int>(::SendMessageW(list, LVM_GETITEMCOUNT, 0, 0));
    item.pszText = texts[0].data();
    ::SendMessageW(list, LVM_INSERTITEMW, 0, reinterpret_cast<LPARAM>(&item));
    item.iSubItem = 1;
    item.pszText = texts[1].data();
    ::SendMessageW(list, LVM_SETITEMW, 0, reinterpret_cast<LPARAM>(&item));
}

}  // namespace workbench
