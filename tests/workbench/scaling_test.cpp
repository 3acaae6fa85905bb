// The program and the built module on a display of 150 %.
#include "workbenchfixture.h"

#include <base/utf16.h>
#include <resources/resource.h>

#include <commctrl.h>

namespace {

constexpr wchar_t kDesktop[] = L"Control Panel\\Desktop";
constexpr wchar_t kResolution[] = L"LogPixels";

/// Programs that start while it lives find the display so.
class DisplayScaling {
public:
    explicit DisplayScaling(DWORD dpi) {
        DWORD size = sizeof former_;
        had_ = ::RegGetValueW(HKEY_CURRENT_USER, kDesktop, kResolution, RRF_RT_REG_DWORD, nullptr,
                              &former_, &size) == ERROR_SUCCESS;
        set(dpi);
    }
    ~DisplayScaling() {
        if (had_)
            set(former_);
        else
            ::RegDeleteKeyValueW(HKEY_CURRENT_USER, kDesktop, kResolution);
    }
    DisplayScaling(const DisplayScaling&) = delete;
    DisplayScaling& operator=(const DisplayScaling&) = delete;

private:
    static void set(DWORD dpi) {
        ::RegSetKeyValueW(HKEY_CURRENT_USER, kDesktop, kResolution, REG_DWORD, &dpi, sizeof dpi);
    }

    DWORD former_ = 0;
    bool had_ = false;
};

TEST_F(WorkbenchTest, TheTreesIconsGrowWithTheDisplay) {
    const auto rowHeight = [this](DWORD dpi) {
        const DisplayScaling scaling(dpi);
        start(base::toWide(STAGED_PLUGINS));
        const HWND form = openBrowserForm();
        const LRESULT height =
            ::SendMessageW(::GetDlgItem(form, IDC_TREE), TVM_GETITEMHEIGHT, 0, 0);
        ::PostMessageW(window_, WM_CLOSE, 0, 0);
        EXPECT_EQ(exitCode(), 0u);
        return height;
    };
    // An icon of 23 pixels and at least one between two of them; the text needs less.
    EXPECT_GE(rowHeight(144), 24);
}

}  // namespace
