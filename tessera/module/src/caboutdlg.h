// The about box.
#pragma once

#include <framework/cbitmapbutton.h>
#include <framework/cdialog.h>

class CAboutDlg : public CDialog {
public:
    /// `parent` is not owned and may be null.
    explicit CAboutDlg(HWND parent);

protected:
    bool OnInitDialog() override;

private:
    CBitmapButton picture_;
};
