// The about box, by every way that leads to it.
#include "../support/modaldialog.h"
#include "panelfixture.h"

#include <tessera/browserexports.h>

namespace {

/// Waits for the about box, notes what it shows and closes it by a key.
class AboutBox final : public ModalDialog {
public:
    explicit AboutBox(WORD closingKey) : ModalDialog(IDC_ABOUT_BUILD), closingKey_(closingKey) {}

    std::wstring version_, build_;
    bool ownerDisabled_ = false;

private:
    void answer(HWND box) override {
        version_ = textOf(GetDlgItem(box, IDC_ABOUT_VERSION));
        build_ = textOf(GetDlgItem(box, IDC_ABOUT_BUILD));
        ownerDisabled_ = !IsWindowEnabled(GetWindow(box, GW_OWNER));
        PostMessageW(GetDlgItem(box, IDOK), WM_KEYDOWN, closingKey_, 0);
    }

    static std::wstring textOf(HWND window) {
        wchar_t text[64] = L"";
        GetWindowTextW(window, text, 64);
        return text;
    }

    WORD closingKey_;
};

class AboutTest : public PanelTest {};

TEST_F(AboutTest, OpensFromEverywhereAndClosesByEnterAndEscape) {
    window.press(IDC_BROWSER);
    const std::function<void()> ways[] = {
        [&] { window.press(IDC_ABOUT); },
        [&] { SendMessageW(form(), WM_SYSCOMMAND, IDM_ABOUT, 0); },
        [&] {
            auto* const description = dynamic_cast<ClassDesc2*>(utility);
            ASSERT_TRUE(description && description->HasAbout());
            description->ShowAbout();
        },
        [] { exported<void (*)()>("qofltAboutShow")(); },
    };
    int way = 0;
    for (const auto& open : ways) {
        SCOPED_TRACE(way++);
        for (const WORD key : {WORD{VK_RETURN}, WORD{VK_ESCAPE}}) {
            SetActiveWindow(form());
            const AboutBox box(key);
            open();
            EXPECT_EQ(box.version_, L"版本 2.0");
            EXPECT_EQ(box.build_, L"Build 2. 0. 0. 2");
            EXPECT_TRUE(box.ownerDisabled_);
            EXPECT_EQ(GetActiveWindow(), form()) << "where the user came from";
        }
    }
    wchar_t entry[64] = L"";
    GetMenuStringW(GetSystemMenu(form(), FALSE), IDM_ABOUT, entry, 64, MF_BYCOMMAND);
    EXPECT_STREQ(entry, L"关于 Tessera(&A)...");
}

}  // namespace
