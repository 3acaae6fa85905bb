// The about box, by every way that leads to it.
#include "panelfixture.h"

#include <tessera/browserexports.h>

namespace {

/// Waits, while a modal dialog runs, for the about box; notes what it shows and closes it by a key.
class AboutBox {
public:
    explicit AboutBox(WORD closingKey) : closingKey_(closingKey) {
        current_ = this;
        timer_ = SetTimer(nullptr, 0, 20, look);
    }
    ~AboutBox() {
        KillTimer(nullptr, timer_);
        current_ = nullptr;
    }
    AboutBox(const AboutBox&) = delete;
    AboutBox& operator=(const AboutBox&) = delete;

    std::wstring version_, build_;
    bool ownerDisabled_ = false;

private:
    static BOOL CALLBACK find(HWND window, LPARAM found) {
        if (!GetDlgItem(window, IDC_ABOUT_BUILD) || !IsWindowVisible(window)) return TRUE;
        *reinterpret_cast<HWND*>(found) = window;
        return FALSE;
    }

    static void CALLBACK look(HWND, UINT, UINT_PTR, DWORD) {
        HWND box = nullptr;
        EnumThreadWindows(GetCurrentThreadId(), find, reinterpret_cast<LPARAM>(&box));
        if (!box) return;
        current_->version_ = textOf(GetDlgItem(box, IDC_ABOUT_VERSION));
        current_->build_ = textOf(GetDlgItem(box, IDC_ABOUT_BUILD));
        current_->ownerDisabled_ = !IsWindowEnabled(GetWindow(box, GW_OWNER));
        PostMessageW(GetDlgItem(box, IDOK), WM_KEYDOWN, current_->closingKey_, 0);
    }

    static std::wstring textOf(HWND window) {
        wchar_t text[64] = L"";
        GetWindowTextW(window, text, 64);
        return text;
    }

    static inline AboutBox* current_ = nullptr;
    WORD closingKey_;
    UINT_PTR timer_;
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
