// The folders in which files are looked for that the scene names.
#pragma once

#include <framework/cdialog.h>

#include <string>
#include <vector>

namespace workbench {

/// `DoModal` returns IDOK when the user wants the folders as they are listed then.
class SearchFoldersDialog : public framework::CDialog {
public:
    SearchFoldersDialog(HWND owner, std::vector<std::string> folders);

    /// In the order of searching, UTF-8.
    const std::vector<std::string>& folders() const { return folders_; }

protected:
    bool OnInitDialog() override;
    bool OnCommand(int id, UINT code, HWND control) override;
    void OnOK() override;

private:
    int chosen() const;
    void browse();
    void add();
    void remove();
    void move(int by);
    void show(int chosen);
    void enableButtons();

    std::vector<std::string> folders_;
};

}  // namespace workbench
