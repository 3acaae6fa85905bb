#include "framework_test.h"
#include "input.h"

#include <framework/cdialog.h>
#include <framework/controls.h>
#include <framework/module.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

using framework::CDialog, framework::CEdit, framework::CWnd, framework::DataExchange,
    framework::setLanguageSource;

using testinput::key;

namespace {

class ValuesDialog : public CDialog {
public:
    ValuesDialog() : CDialog(IDD_VALUES) {}

    std::string name = "组";
    int count = 12;
    bool flag = true;
    std::string typedCount = "34";
    WORD finish = IDOK;
    bool failInInit = false;
    std::string shownName, shownCount;
    bool shownFlag = false;

protected:
    void DoDataExchange(DataExchange& exchange) override {
        exchange.Text(IDC_NAME, name);
        exchange.Integer(IDC_COUNT, count);
        exchange.Check(IDC_FLAG, flag);
    }
    bool OnInitDialog() override {
        if (failInInit) throw std::runtime_error("init");
        CDialog::OnInitDialog();
        shownName = ItemText(IDC_NAME);
        shownCount = ItemText(IDC_COUNT);
        shownFlag = IsItemChecked(IDC_FLAG);
        SetItemText(IDC_NAME, "对象");
        SetItemText(IDC_COUNT, typedCount);
        CheckItem(IDC_FLAG, false);
        Post(WM_COMMAND, finish);
        return true;
    }
};

class Form : public CDialog {
public:
    std::vector<int> commands;
    std::vector<int> tipRequests;
    bool failInInit = false;

protected:
    bool OnInitDialog() override {
        if (failInInit) throw std::runtime_error("init");
        return EnableToolTips();
    }
    bool OnCommand(int id, UINT code, HWND) override {
        if (code == BN_CLICKED) commands.push_back(id);
        return false;
    }
    bool OnNotify(int, NMHDR& header, LRESULT&) override {
        if (header.code != TTN_NEEDTEXTW) return false;
        tipRequests.push_back(ToolTipControlId(header));
        ::lstrcpyW(reinterpret_cast<NMTTDISPINFOW&>(header).szText, L"tip");
        return true;
    }
};

/// A control of a class of ours, connected to its object only once somebody listens to its window.
class LateControl : public CWnd {
public:
    static constexpr wchar_t kClass[] = L"FrameworkLateControl";
    bool destroyed = false;

protected:
    void OnDestroy() override {
        destroyed = true;
        Default();
    }
};

WNDPROC listenedTo = nullptr;

LRESULT CALLBACK listen(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    return ::CallWindowProcW(listenedTo, window, message, wParam, lParam);
}

class FormWithLateControl : public Form {
public:
    LateControl control;
    HWND window = nullptr;

protected:
    bool OnInitDialog() override {
        CWnd::RegisterWindowClass(LateControl::kClass);
        window = ::CreateWindowExW(0, LateControl::kClass, L"", WS_CHILD | WS_VISIBLE, 0, 0, 20, 20,
                                   Handle(), nullptr, ::GetModuleHandleW(nullptr), nullptr);
        listenedTo = reinterpret_cast<WNDPROC>(
            ::SetWindowLongPtrW(window, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&listen)));
        return Form::OnInitDialog() && control.SubclassWindow(window);
    }
};

class ShownForm : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(form.Create(IDD_FORM));
        form.Show();
        ASSERT_TRUE(testinput::activate(form.Handle()));
        ::SetFocus(form.Item(IDC_NAME));
    }
    int focusedId() const { return ::GetDlgCtrlID(::GetFocus()); }

    Form form;
};

}  // namespace

TEST(ModalDialog, MovesValuesInAndOutOnOkOnly) {
    ValuesDialog accepted;
    EXPECT_EQ(accepted.DoModal(), IDOK);
    EXPECT_EQ(accepted.shownName, "组");
    EXPECT_EQ(accepted.shownCount, "12");
    EXPECT_TRUE(accepted.shownFlag);
    EXPECT_EQ(accepted.name, "对象");
    EXPECT_EQ(accepted.count, 34);
    EXPECT_FALSE(accepted.flag);
    EXPECT_FALSE(accepted.HasWindow());

    ValuesDialog cancelled;
    cancelled.finish = IDCANCEL;
    EXPECT_EQ(cancelled.DoModal(), IDCANCEL);
    EXPECT_EQ(cancelled.name, "组");

    ValuesDialog noNumber;
    noNumber.typedCount = "3x";
    EXPECT_EQ(noNumber.DoModal(), IDOK);
    EXPECT_EQ(noNumber.count, 12);
}

TEST(ModalDialog, IsMadeInTheLanguageOfTheSource) {
    class TitledDialog : public ValuesDialog {
    public:
        std::string title;

    protected:
        bool OnInitDialog() override {
            title = Text();
            return ValuesDialog::OnInitDialog();
        }
    } dialog;
    dialog.DoModal();
    EXPECT_EQ(dialog.title, "Values");
    setLanguageSource([]() noexcept { return base::Language::kEnglish; });
    dialog.DoModal();
    setLanguageSource(nullptr);
    EXPECT_EQ(dialog.title, "Values in English");
}

TEST(ModalDialog, ThatCannotStartGivesMinusOne) {
    ValuesDialog dialog;
    dialog.failInInit = true;
    EXPECT_EQ(dialog.DoModal(), -1);
    CDialog missing(4711);
    EXPECT_EQ(missing.DoModal(), -1);
}

TEST(ModelessDialog, ThatCannotStartLeavesNothingBehind) {
    Form form;
    form.failInInit = true;
    EXPECT_FALSE(form.Create(IDD_FORM));
    EXPECT_FALSE(form.HasWindow());
    form.failInInit = false;
    EXPECT_FALSE(form.Create(4711));
    EXPECT_TRUE(form.Create(IDD_FORM));
    EXPECT_FALSE(form.Create(IDD_FORM)) << "it is there already";
}

TEST(ModelessDialog, HasItsOwnersIcons) {
    CWnd owner;
    ASSERT_TRUE(owner.CreateEx(0, L"STATIC", "", WS_POPUP, {0, 0, 100, 100}, nullptr));
    const auto icon = reinterpret_cast<LPARAM>(::LoadIconW(nullptr, MAKEINTRESOURCEW(32516)));
    owner.Send(WM_SETICON, ICON_SMALL, icon);
    Form form;
    ASSERT_TRUE(form.Create(IDD_FORM, owner.Handle()));
    EXPECT_EQ(form.Send(WM_GETICON, ICON_SMALL), icon);
    EXPECT_EQ(form.Send(WM_GETICON, ICON_BIG), owner.Send(WM_GETICON, ICON_BIG));
}

TEST_F(ShownForm, IsNavigatedByKeyboardInALoopThatKnowsNothingOfIt) {
    key(VK_TAB);
    EXPECT_EQ(focusedId(), IDC_FLAG);
    key(VK_TAB, {VK_SHIFT});
    EXPECT_EQ(focusedId(), IDC_NAME);
    testinput::type(L"值");
    EXPECT_EQ(form.ItemText(IDC_NAME), "值");
    key(L'F', {VK_MENU});
    EXPECT_TRUE(form.IsItemChecked(IDC_FLAG));
    EXPECT_EQ(focusedId(), IDC_FLAG);
    form.commands.clear();
    key(VK_RETURN);
    EXPECT_EQ(form.commands, std::vector<int>{IDC_APPLY});
    key(VK_ESCAPE);
    EXPECT_FALSE(form.IsVisible());
    EXPECT_TRUE(form.HasWindow()) << "a modeless dialog is hidden, not destroyed";
}

// Also where a click or the program has moved the keyboard there, which makes no default button.
TEST_F(ShownForm, EnterPressesTheButtonThatHasTheKeyboard) {
    for (const int id : {IDC_OTHER_PICTURE, IDC_APPLY, IDC_PICTURE}) {
        ::SetFocus(form.Item(id));
        form.commands.clear();
        key(VK_RETURN);
        EXPECT_EQ(form.commands, std::vector<int>{id});
    }
}

TEST_F(ShownForm, LeavesTheKeysOfOtherWindowsAlone) {
    CEdit other;
    ASSERT_TRUE(other.CreateEx(0, L"EDIT", "", WS_POPUP | WS_VISIBLE | ES_MULTILINE,
                               {500, 500, 600, 560}, form.Handle()));
    ASSERT_TRUE(testinput::activate(other.Handle()));
    other.SetFocus();
    key(VK_TAB);
    EXPECT_EQ(other.Text(), "\t");
}

TEST_F(ShownForm, IsHiddenByItsCloseBox) {
    ::SendMessageW(form.Handle(), WM_CLOSE, 0, 0);
    testinput::pump();
    EXPECT_TRUE(form.HasWindow());
    EXPECT_FALSE(form.IsVisible());
}

TEST_F(ShownForm, AsksForTheTipOfTheControlUnderTheMouse) {
    ASSERT_TRUE(testinput::hover(form.Item(IDC_APPLY), {10, 5}));
    ASSERT_TRUE(testinput::hover(form.Item(IDC_APPLY), {14, 8}));
    ASSERT_TRUE(testinput::pumpUntil([&] { return !form.tipRequests.empty(); }));
    EXPECT_EQ(form.tipRequests.front(), IDC_APPLY);
}

TEST_F(ShownForm, ShowsNoTipWhileAButtonIsHeld) {
    const HWND control = form.Item(IDC_PICTURE);
    ASSERT_TRUE(testinput::hover(control, {10, 5}));
    ASSERT_TRUE(testinput::pumpUntil([&] { return !form.tipRequests.empty(); }));
    ::PostMessageW(control, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(10, 5));
    testinput::pump();
    form.tipRequests.clear();
    // Away from the control and back, as something is dragged.
    ::PostMessageW(form.Handle(), WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(1, 1));
    ::PostMessageW(control, WM_MOUSEMOVE, MK_LBUTTON, MAKELPARAM(11, 5));
    EXPECT_FALSE(testinput::pumpUntil([&] { return !form.tipRequests.empty(); }, 900));
    ::PostMessageW(control, WM_LBUTTONUP, 0, MAKELPARAM(11, 5));
    testinput::pump();
}

TEST_F(ShownForm, TextStandsInTheMiddleOfAnEditFieldOfAnyHeight) {
    const HWND name = form.Item(IDC_NAME);
    constexpr LONG kHeight = 41, kBorder = 3;
    ::SetWindowTextW(name, L"HHHH");
    ::SetWindowPos(name, nullptr, 0, 0, 120, kHeight, SWP_NOMOVE | SWP_NOZORDER);
    ::SetFocus(form.Item(IDC_APPLY));
    testinput::pump();
    POINT corner{};
    RECT window;
    ::GetWindowRect(name, &window);
    corner = {window.left, window.top};
    ::ScreenToClient(form.Handle(), &corner);
    const auto colorAt = [&](LONG x, LONG y) {
        return testinput::pixel(form.Handle(), {corner.x + x, corner.y + y});
    };
    LONG first = -1, last = -1;
    for (LONG y = kBorder; y < kHeight - kBorder; ++y)
        for (LONG x = kBorder; x < 60; ++x)
            if (GetRValue(colorAt(x, y)) < 128) {
                if (first < 0) first = y;
                last = y;
            }
    ASSERT_GE(first, 0);
    EXPECT_NEAR(first, kHeight - 1 - last, 3);
    // What is above the text belongs to the field: it has its color and takes its clicks.
    EXPECT_EQ(colorAt(100, kBorder + 1), colorAt(100, kHeight / 2));
    ::EnableWindow(name, FALSE);
    testinput::pump();
    EXPECT_EQ(colorAt(100, kBorder + 1), ::GetSysColor(COLOR_BTNFACE));
    ::EnableWindow(name, TRUE);
    testinput::click(form.Handle(), {corner.x + 20, corner.y + kBorder + 1});
    EXPECT_EQ(focusedId(), IDC_NAME);
}

// The listener's procedure and ours must not each take the other for what was there before it.
TEST(ModelessDialog, EndsWithAControlOfOurClassThatAnotherListenedToFirst) {
    FormWithLateControl form;
    ASSERT_TRUE(form.Create(IDD_FORM));
    ASSERT_TRUE(form.window);
    EXPECT_EQ(CWnd::FromHandle(form.window), &form.control);
    form.DestroyWindow();
    EXPECT_TRUE(form.control.destroyed);
    EXPECT_FALSE(::IsWindow(form.window));
    EXPECT_FALSE(form.control.HasWindow());
}
