#include "input.h"

#include <framework/cimagelist.h>
#include <framework/controls.h>
#include <framework/ctreectrl.h>
#include <framework/cwinapp.h>
#include <framework/cwnd.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

using framework::CEdit, framework::CImageList, framework::CTreeCtrl, framework::CWinApp,
    framework::CWnd, framework::GdiBitmap;

namespace {

constexpr wchar_t kClass[] = L"FrameworkTestWindow";
constexpr RECT kArea{100, 100, 400, 300};

class RecordingApp : public CWinApp {
public:
    void OnException(std::exception_ptr) override {
        ++exceptions;
        throw std::runtime_error("even the report fails");
    }
    int exceptions = 0;
};

RecordingApp g_app;

class TestWindow : public CWnd {
public:
    explicit TestWindow(bool* gone = nullptr) : gone_(gone) {}
    ~TestWindow() override {
        if (gone_) *gone_ = true;
    }

    bool Open(DWORD style = WS_OVERLAPPEDWINDOW) {
        RegisterWindowClass(kClass);
        return CreateEx(0, kClass, "Test 窗", style, kArea, nullptr);
    }

    bool refuseCreation = false;
    bool throwInCreate = false;
    bool throwInPaint = false;
    bool deleteOnCommand = false;
    bool deleteWhenGone = false;
    int paints = 0;
    SIZE size{};

protected:
    bool OnCreate(const CREATESTRUCTW&) override {
        if (throwInCreate) throw std::runtime_error("create");
        return !refuseCreation;
    }
    void OnSize(UINT, int width, int height) override { size = {width, height}; }
    void OnPaint() override {
        ++paints;
        if (throwInPaint) throw std::runtime_error("paint");
        CWnd::OnPaint();
    }
    bool OnCommand(int, UINT, HWND) override {
        if (deleteOnCommand) delete this;
        return true;
    }
    void OnWindowGone() override {
        if (deleteWhenGone) delete this;
    }

private:
    bool* gone_;
};

class ShoutingEdit : public CEdit {
public:
    int chars = 0;

protected:
    void OnChar(UINT, UINT, UINT) override {
        ++chars;
        Default();
    }
};

}  // namespace

TEST(Window, RoutesMessagesFromTheFirstToTheLast) {
    TestWindow window;
    ASSERT_TRUE(window.Open());
    EXPECT_EQ(CWnd::FromHandle(window.Handle()), &window);
    EXPECT_EQ(window.Text(), "Test 窗");
    EXPECT_EQ(window.Text(4), "Test");
    window.SetText("飞机\U0001F6E9");
    EXPECT_EQ(window.Text(3), "飞机") << "no half characters";
    EXPECT_EQ(window.Text(4), "飞机\U0001F6E9");
    window.MoveTo({10, 10, 210, 160});
    EXPECT_EQ(window.size.cx, window.ClientRect().right);
    EXPECT_EQ(window.size.cy, window.ClientRect().bottom);
    window.DestroyWindow();
    EXPECT_EQ(window.Handle(), nullptr);
    EXPECT_EQ(window.Text(), "");
    ASSERT_TRUE(window.Open()) << "an object can have another window afterwards";
}

TEST(Window, CreationCanBeRefused) {
    TestWindow refusing;
    refusing.refuseCreation = true;
    EXPECT_FALSE(refusing.Open());
    EXPECT_FALSE(refusing.HasWindow());

    TestWindow throwing;
    throwing.throwInCreate = true;
    const int before = g_app.exceptions;
    EXPECT_FALSE(throwing.Open());
    EXPECT_EQ(g_app.exceptions, before + 1);
    EXPECT_FALSE(throwing.HasWindow());
}

TEST(Window, AnExceptionStaysInsideAndAFailedPaintIsNotAskedForAgain) {
    TestWindow window;
    ASSERT_TRUE(window.Open(WS_OVERLAPPEDWINDOW | WS_VISIBLE));
    testinput::pump();
    window.throwInPaint = true;
    window.paints = 0;
    const int before = g_app.exceptions;
    window.Invalidate();
    testinput::pump();
    EXPECT_EQ(window.paints, 1);
    EXPECT_EQ(g_app.exceptions, before + 1);
    EXPECT_FALSE(::GetUpdateRect(window.Handle(), nullptr, FALSE));
}

TEST(Window, AnObjectMayDeleteItselfInAHandler) {
    bool gone = false;
    auto* inCommand = new TestWindow(&gone);
    ASSERT_TRUE(inCommand->Open());
    const HWND first = inCommand->Handle();
    inCommand->deleteOnCommand = true;
    ::SendMessageW(first, WM_COMMAND, 1, 0);
    EXPECT_TRUE(gone);
    EXPECT_FALSE(::IsWindow(first));

    gone = false;
    auto* atTheEnd = new TestWindow(&gone);
    ASSERT_TRUE(atTheEnd->Open());
    atTheEnd->deleteWhenGone = true;
    ::DestroyWindow(atTheEnd->Handle());
    EXPECT_TRUE(gone);
}

namespace {

WNDPROC g_behind = nullptr;
int g_inFront = 0;

LRESULT CALLBACK inFront(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    ++g_inFront;
    return ::CallWindowProcW(g_behind, window, message, wParam, lParam);
}

}  // namespace

TEST(Window, ListensToAForeignWindowAndLetsGoOfItUnharmed) {
    TestWindow parent;
    ASSERT_TRUE(parent.Open());
    const HWND edit = ::CreateWindowExW(0, L"EDIT", L"", WS_CHILD, 0, 0, 90, 20, parent.Handle(),
                                        nullptr, nullptr, nullptr);
    const auto original = ::GetWindowLongPtrW(edit, GWLP_WNDPROC);
    {
        ShoutingEdit listener;
        ASSERT_TRUE(listener.SubclassWindow(edit));
        CWnd second;
        EXPECT_FALSE(second.SubclassWindow(edit)) << "a window has one object";
        ::SendMessageW(edit, WM_CHAR, L'x', 0);
        EXPECT_EQ(listener.chars, 1);
        EXPECT_EQ(listener.Text(), "x") << "the edit itself got the key too";
    }
    EXPECT_EQ(::GetWindowLongPtrW(edit, GWLP_WNDPROC), original);

    // Someone else listens in front of the object when it lets go.
    {
        ShoutingEdit listener;
        ASSERT_TRUE(listener.SubclassWindow(edit));
        g_behind = reinterpret_cast<WNDPROC>(
            ::SetWindowLongPtrW(edit, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&inFront)));
    }
    ::SendMessageW(edit, WM_CHAR, L'y', 0);
    EXPECT_GT(g_inFront, 0);
    ShoutingEdit again;
    ASSERT_TRUE(again.SubclassWindow(edit));
    ::SendMessageW(edit, WM_CHAR, L'z', 0);
    EXPECT_EQ(again.chars, 1);
    EXPECT_EQ(again.Text(), "xyz");
    ::DestroyWindow(edit);
    EXPECT_FALSE(again.HasWindow());
}

TEST(Tree, KeepsTextsOfAnyLengthDataAndOrder) {
    TestWindow parent;
    ASSERT_TRUE(parent.Open());
    CTreeCtrl tree;
    ASSERT_TRUE(tree.Create(TVS_HASBUTTONS | TVS_HASLINES | WS_VISIBLE, {0, 0, 200, 150},
                            parent.Handle(), 5));
    const HTREEITEM root = tree.Insert("根", nullptr, TVI_LAST, 7);
    const std::string longText(3000, 'n');
    const HTREEITEM first = tree.Insert(longText, root, TVI_LAST, -1, 3, 4);
    const HTREEITEM second = tree.Insert("second", root);
    EXPECT_EQ(tree.Count(), 3);
    EXPECT_EQ(tree.ItemText(root), "根");
    EXPECT_EQ(tree.ItemText(first), longText);
    EXPECT_EQ(tree.ItemData(root), 7);
    EXPECT_EQ(tree.ItemData(first), -1);
    int image = 0;
    int selectedImage = 0;
    ASSERT_TRUE(tree.ItemImages(first, image, selectedImage));
    EXPECT_EQ(image, 3);
    EXPECT_EQ(selectedImage, 4);
    EXPECT_EQ(tree.Child(root), first);
    EXPECT_EQ(tree.NextSibling(first), second);
    EXPECT_EQ(tree.NextVisible(root), nullptr);
    ASSERT_TRUE(tree.Expand(root, TVE_EXPAND));
    EXPECT_EQ(tree.NextVisible(root), first);
    tree.SetItemState(second, TVIS_SELECTED, TVIS_SELECTED);
    EXPECT_EQ(tree.ItemState(second, TVIS_SELECTED), UINT{TVIS_SELECTED});
    RECT row{};
    ASSERT_TRUE(tree.ItemRect(second, row, true));
    UINT flags = 0;
    EXPECT_EQ(tree.HitTest({row.left + 2, (row.top + row.bottom) / 2}, &flags), second);
    EXPECT_EQ(flags & TVHT_ONITEMLABEL, UINT{TVHT_ONITEMLABEL});
    ASSERT_TRUE(tree.DeleteItem(root));
    EXPECT_EQ(tree.Count(), 0);
    EXPECT_EQ(tree.ItemText(nullptr), "");
}

TEST(ImageList, AddsMaskedImagesAndDeclaresAnOverlay) {
    CImageList list;
    EXPECT_FALSE(list.SetOverlayImage(0, 1));
    ASSERT_TRUE(list.Create(16, 15, ILC_COLOR24 | ILC_MASK, 2, 2));
    const HDC screen = ::GetDC(nullptr);
    const GdiBitmap bitmap(::CreateCompatibleBitmap(screen, 16, 15));
    ::ReleaseDC(nullptr, screen);
    EXPECT_EQ(list.Add(bitmap.get(), RGB(255, 255, 255)), 0);
    EXPECT_EQ(list.AddResource(12345, RGB(255, 255, 255)), -1);
    EXPECT_EQ(list.Count(), 1);
    EXPECT_TRUE(list.SetOverlayImage(0, 1));
    CImageList taken = std::move(list);
    EXPECT_EQ(taken.Count(), 1);
    EXPECT_EQ(list.Handle(), nullptr);  // NOLINT(bugprone-use-after-move)
}
