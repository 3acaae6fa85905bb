// The list of the program's keys.
#pragma once

#include <framework/cdialog.h>

namespace workbench {

/// Lists the entries of a menu that have keys, so that no key is ever missing.
class KeysDialog : public framework::CDialog {
public:
    KeysDialog(HWND owner, HMENU menu);

protected:
    bool OnInitDialog() override;

private:
    void addEntries(HMENU menu, const std::wstring& above);
    void add(const std::wstring& key, const std::wstring& what);

    HMENU menu_;
};

}  // namespace workbench
