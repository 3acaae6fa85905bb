// The about box.
#pragma once

#include <framework/cbitmapbutton.h>
#include <framework/cdialog.h>

class CAboutDlg : public framework::CDialog {
public:
    /// `parent` is not owned and may be null.
    explicit CAboutDlg(HWND parent);

protected:
    bool OnInitDialog() override;

private:
    framework::CBitmapButton picture_;
};
