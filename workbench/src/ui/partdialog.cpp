#include "partdialog.h"

#include "../app/commands.h"

#include <base/utf16.h>
#include <workbench/texts.h>

#include <utility>

namespace workbench {

PartDialog::PartDialog(HWND owner, std::vector<kiln::FilePart> parts, std::size_t chosen)
    : CDialog(IDD_EXPORT_PART, owner), parts_(std::move(parts)), chosen_(chosen) {}

bool PartDialog::OnInitDialog() {
    const HWND list = ::GetDlgItem(Handle(), IDC_EXPORT_PARTS);
    for (const kiln::FilePart& part : parts_) {
        const std::wstring line = base::toWide(
            part.fileName.empty() ? part.name
                                  : textOf(TextId::kPartOfFile, {part.name, part.fileName}));
        ::SendMessageW(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(line.c_str()));
    }
    ::SendMessageW(list, LB_SETCURSEL, chosen_, 0);
    ::SetFocus(list);
    return false;
}

void PartDialog::OnOK() {
    const LRESULT selected = ::SendDlgItemMessageW(Handle(), IDC_EXPORT_PARTS, LB_GETCURSEL, 0, 0);
    if (selected != LB_ERR) chosen_ = static_cast<std::size_t>(selected);
    CDialog::OnOK();
}

bool PartDialog::OnCommand(int id, UINT code, HWND control) {
    if (id == IDC_EXPORT_PARTS && code == LBN_DBLCLK) {
        OnOK();
        return true;
    }
    return CDialog::OnCommand(id, code, control);
}

}  // namespace workbench
