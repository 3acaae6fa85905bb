// Asks which part of the scene a file is to hold.
#pragma once

#include <framework/cdialog.h>
#include <kiln/host/core.h>

#include <vector>

namespace workbench {

/// `DoModal` returns IDOK when the user has chosen.
class PartDialog : public framework::CDialog {
public:
    /// Starts at the part of that position.
    PartDialog(HWND owner, std::vector<kiln::FilePart> parts, std::size_t chosen);

    /// What the user has chosen.
    const kiln::FilePart& chosen() const { return parts_[chosen_]; }

protected:
    bool OnInitDialog() override;
    void OnOK() override;
    bool OnCommand(int id, UINT code, HWND control) override;

private:
    std::vector<kiln::FilePart> parts_;
    std::size_t chosen_;
};

}  // namespace workbench
