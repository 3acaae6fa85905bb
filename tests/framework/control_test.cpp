#include "framework_test.h"
#include "input.h"

#include <framework/cbitmapbutton.h>
#include <framework/cdialog.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

using framework::CBitmapButton, framework::CDialog, framework::WindowDc;

namespace {

constexpr COLORREF kUp = RGB(200, 0, 0);
constexpr COLORREF kDown = RGB(0, 160, 0);
constexpr COLORREF kFocus = RGB(0, 0, 220);
constexpr COLORREF kDisabled = RGB(130, 130, 130);

class PictureForm : public CDialog {
public:
    CBitmapButton all;
    CBitmapButton one;
    std::vector<int> clicks;
    int drawn = 0;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        if (message == WM_DRAWITEM) ++drawn;
        return CDialog::WindowProc(message, wParam, lParam);
    }
    bool OnInitDialog() override {
        return all.AutoLoad(IDC_PICTURE, Handle()) && one.AutoLoad(IDC_OTHER_PICTURE, Handle());
    }
    bool OnCommand(int id, UINT code, HWND) override {
        if (code == BN_CLICKED) clicks.push_back(id);
        return false;
    }
};

class PictureButton : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(form.Create(IDD_FORM));
        form.Show();
        ASSERT_TRUE(testinput::activate(form.Handle()));
        ::SetFocus(form.Item(IDC_NAME));
        testinput::hover(form.Handle(), {2, 2});
        centre = {form.all.ClientRect().right / 2, form.all.ClientRect().bottom / 2};
    }

    // How the button draws itself for a state, pixel by pixel.
    static std::vector<COLORREF> look(const CBitmapButton& button) {
        button.Invalidate();
        testinput::pump();
        const RECT area = button.ClientRect();
        std::vector<COLORREF> pixels;
        const WindowDc dc(button.Handle());
        for (int y = 0; y < area.bottom; ++y)
            for (int x = 0; x < area.right; ++x) pixels.push_back(::GetPixel(dc.get(), x, y));
        return pixels;
    }

    PictureForm form;
    POINT centre{};
};

}  // namespace

TEST_F(PictureButton, ShowsThePictureOfItsState) {
    const HWND button = form.all.Handle();
    EXPECT_EQ(testinput::pixel(button, centre), kUp);
    form.all.SetFocus();
    testinput::pump();
    EXPECT_EQ(testinput::pixel(button, centre), kFocus);
    form.all.Send(BM_SETSTATE, TRUE);
    EXPECT_EQ(testinput::pixel(button, centre), kDown);
    form.all.Send(BM_SETSTATE, FALSE);
    ::SetFocus(form.Item(IDC_NAME));
    form.all.Enable(false);
    EXPECT_EQ(testinput::pixel(button, centre), kDisabled);
}

TEST_F(PictureButton, ComesAndGoesWithoutDrawingEachTime) {
    form.all.Update();
    form.drawn = 0;
    for (const bool enabled : {false, true, false}) form.all.Enable(enabled);
    EXPECT_EQ(form.drawn, 0);
    form.all.Update();
    EXPECT_EQ(form.drawn, 1);
}

TEST_F(PictureButton, WithOnePictureStillTellsItsStatesApart) {
    const auto up = look(form.one);
    form.one.SetFocus();
    const auto focused = look(form.one);
    form.one.Send(BM_SETSTATE, TRUE);
    const auto pressed = look(form.one);
    form.one.Send(BM_SETSTATE, FALSE);
    ::SetFocus(form.Item(IDC_NAME));
    form.one.Enable(false);
    const auto disabled = look(form.one);
    EXPECT_NE(up, focused);
    EXPECT_NE(focused, pressed);
    EXPECT_NE(up, disabled);
    EXPECT_EQ(std::ranges::count(up, RGB(255, 0, 255)), 0) << "magenta is see-through";
    EXPECT_GT(std::ranges::count(up, kUp), 50);
    EXPECT_EQ(std::ranges::count(disabled, kUp), 0) << "a disabled picture is greyed";
}

TEST_F(PictureButton, IsPressedByMouseAndKeyboard) {
    testinput::click(form.all.Handle(), centre, 3);
    EXPECT_EQ(form.clicks, (std::vector<int>{IDC_PICTURE, IDC_PICTURE, IDC_PICTURE}))
        << "quick clicks all count";
    form.clicks.clear();
    testinput::key(VK_TAB);
    EXPECT_EQ(::GetFocus(), form.one.Handle());
    testinput::key(VK_RETURN);
    testinput::key(VK_SPACE);
    EXPECT_EQ(form.clicks, (std::vector<int>{IDC_OTHER_PICTURE, IDC_OTHER_PICTURE}));
    EXPECT_EQ(testinput::pixel(form.one.Handle(), centre), kUp) << "it is still drawn by picture";
}
