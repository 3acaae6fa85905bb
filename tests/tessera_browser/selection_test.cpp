// Selecting and dragging with the mouse and the arrow keys.
#include "browserfixture.h"

#include <quillon/fltinstance.h>
#include <quillon/fltopcode.h>
#include <algorithm>
#include <string_view>

namespace {

/// Writes down the keys but Shift that the tree tells the form of.
class TreeKeys {
public:
    explicit TreeKeys(HWND form) : form_(form) {
        keys_.clear();
        former_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(form, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure)));
    }
    ~TreeKeys() { SetWindowLongPtrW(form_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(former_)); }
    TreeKeys(const TreeKeys&) = delete;
    TreeKeys& operator=(const TreeKeys&) = delete;

    static std::vector<WORD> take() { return std::exchange(keys_, {}); }

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NOTIFY) {
            const auto& told = *reinterpret_cast<const NMTVKEYDOWN*>(lParam);
            // The control itself tells of Shift.
            if (told.hdr.code == static_cast<UINT>(-412) && wParam == IDC_TREE &&
                told.wVKey != VK_SHIFT)
                keys_.push_back(told.wVKey);
        }
        return CallWindowProcW(former_, window, message, wParam, lParam);
    }

    static inline WNDPROC former_ = nullptr;
    static inline std::vector<WORD> keys_;
    HWND form_;
};

class BrowserSelection : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        for (const char* name : {"node a", "node b", "node c", "node d", "node e", "node f"})
            items.push_back(add(root, name));
        inside = add(items[2], "inside");
        TreeView_Expand(tree(), root, TVE_EXPAND);
        SetFocus(tree());
        client.take();
    }

    void click(int item, std::initializer_list<WORD> modifiers = {}) {
        testinput::click(tree(), middle(items[static_cast<std::size_t>(item)]), 1, modifiers);
    }

    /// The letters of the selected items.
    std::string selected() const {
        std::string letters;
        for (std::size_t i = 0; i < items.size(); ++i)
            if (isSelected(items[i])) letters += static_cast<char>('a' + i);
        return letters;
    }

    /// Mouse messages without a mouse, for exact distances.
    static void mouse(UINT message, POINT at) {
        const WPARAM keys = message == WM_LBUTTONUP ? 0 : MK_LBUTTON;
        SendMessageW(tree(), message, keys, MAKELPARAM(at.x, at.y));
    }
    static void dragTo(POINT from, POINT to) {
        mouse(WM_LBUTTONDOWN, from);
        mouse(WM_MOUSEMOVE, to);
        mouse(WM_MOUSEMOVE, {to.x + 1, to.y});
        mouse(WM_LBUTTONUP, to);
        testinput::pump();
    }
    void drag(BrowserItem from, BrowserItem to) {
        browser().selectNode(root);
        middle(to);
        dragTo(middle(from, true), middle(to));
    }

    BrowserItem root;
    std::vector<BrowserItem> items;
    BrowserItem inside;
};

TEST_F(BrowserSelection, AClickSelectsOneItemAndCtrlTogglesIt) {
    click(0);
    EXPECT_EQ(selected(), "a");
    click(2, {VK_CONTROL});
    click(4, {VK_CONTROL});
    EXPECT_EQ(selected(), "ace");
    EXPECT_EQ(caret(), items[4]);
    click(4, {VK_CONTROL});
    EXPECT_EQ(selected(), "ac") << "the others stay";
    EXPECT_EQ(TreeView_GetEditControl(tree()), nullptr) << "that was no click to rename";
    click(2, {VK_CONTROL});
    EXPECT_EQ(selected(), "a");
    click(5);
    EXPECT_EQ(selected(), "f");
}

TEST_F(BrowserSelection, ShiftSelectsARangeOfVisibleItems) {
    TreeView_SetItemState(tree(), inside, TVIS_SELECTED, TVIS_SELECTED);
    click(5, {VK_CONTROL});
    click(1);
    TreeView_SetItemState(tree(), inside, TVIS_SELECTED, TVIS_SELECTED);
    click(4, {VK_SHIFT});
    EXPECT_EQ(selected(), "bcde");
    EXPECT_TRUE(isSelected(inside)) << "what is not visible keeps its mark";
    EXPECT_EQ(caret(), items[4]);
    click(0, {VK_SHIFT});
    EXPECT_EQ(selected(), "ab") << "from the same anchor, upwards";
}

// Only clicks set the anchor: a plain one always, one with Ctrl where there is none yet.
TEST_F(BrowserSelection, TheAnchorIsThatOfTheLastPlainClick) {
    click(1, {VK_CONTROL});
    click(3, {VK_SHIFT});
    EXPECT_EQ(selected(), "bcd");
    click(4, {VK_CONTROL});
    click(5, {VK_SHIFT});
    EXPECT_EQ(selected(), "bcdef") << "not from the item toggled last";
    click(0);
    testinput::key(VK_DOWN);
    testinput::key(VK_DOWN);
    EXPECT_EQ(selected(), "c");
    click(4, {VK_SHIFT});
    EXPECT_EQ(selected(), "abcde") << "the arrows leave it";
}

TEST_F(BrowserSelection, PressingASelectedItemWaitsForTheButton) {
    click(1);
    click(3, {VK_CONTROL});
    const POINT at = middle(items[1]);
    mouse(WM_LBUTTONDOWN, at);
    EXPECT_EQ(selected(), "bd");
    mouse(WM_LBUTTONUP, at);
    EXPECT_EQ(selected(), "b");

    // Two selected items are not dragged.
    click(3, {VK_CONTROL});
    dragTo(middle(items[1]), middle(items[5]));
    EXPECT_TRUE(client.take().empty());
    EXPECT_EQ(selected(), "b");
    // An unselected one is selected at once.
    mouse(WM_LBUTTONDOWN, middle(items[4]));
    EXPECT_EQ(selected(), "e");
    mouse(WM_LBUTTONUP, middle(items[4]));
}

TEST_F(BrowserSelection, ArrowsMoveAndShiftArrowsExtend) {
    click(1);
    testinput::key(VK_DOWN, {VK_SHIFT});
    testinput::key(VK_DOWN, {VK_SHIFT});
    EXPECT_EQ(selected(), "bcd");
    EXPECT_EQ(caret(), items[3]);
    EXPECT_FALSE(isEnabled(IDC_CREATE));
    testinput::key(VK_UP, {VK_SHIFT});
    EXPECT_EQ(selected(), "bc") << "going back shrinks it";
    testinput::key(VK_DOWN);
    EXPECT_EQ(selected(), "d");
    EXPECT_TRUE(isEnabled(IDC_CREATE));
    EXPECT_NE(text(control(IDC_NAME)).find(L":node d"), std::wstring::npos);
    testinput::key(VK_END);
    testinput::key(VK_DOWN);
    EXPECT_EQ(selected(), "f") << "the last item stays selected";
}

TEST_F(BrowserSelection, TheFormHearsOfShiftAndArrows) {
    click(0);
    const TreeKeys keys(form());
    testinput::key(VK_DOWN, {VK_SHIFT});
    testinput::key(VK_UP, {VK_SHIFT});
    EXPECT_EQ(TreeKeys::take(), (std::vector<WORD>{VK_DOWN, VK_UP}));
    browser().selectNode(root);
    TreeKeys::take();
    testinput::key(VK_UP, {VK_SHIFT});
    EXPECT_EQ(TreeKeys::take(), std::vector<WORD>{VK_UP}) << "where there is no further item too";
    EXPECT_EQ(caret(), root);
}

TEST_F(BrowserSelection, ARightClickMovesTheCaretUnlessSeveralAreSelected) {
    const auto rightClick = [&](int item) {
        const POINT at = middle(items[static_cast<std::size_t>(item)]);
        // The control waits for the button to come up.
        PostMessageW(tree(), WM_RBUTTONUP, 0, MAKELPARAM(at.x, at.y));
        SendMessageW(tree(), WM_RBUTTONDOWN, MK_RBUTTON, MAKELPARAM(at.x, at.y));
        testinput::pump();
    };
    click(0);
    rightClick(3);
    EXPECT_EQ(caret(), items[3]);
    EXPECT_EQ(selected(), "d");
    click(1, {VK_CONTROL});
    rightClick(5);
    EXPECT_EQ(selected(), "bd");
}

TEST_F(BrowserSelection, ADragBeginsAfterNinePixels) {
    struct Move {
        LONG x, y;
        bool drags;
    };
    for (const Move& move : {Move{8, 8, false}, Move{-8, -8, false}, Move{9, 0, true},
                             Move{-9, 0, true}, Move{0, 9, true}}) {
        browser().selectNode(root);
        const POINT from = middle(items[3], true);
        const POINT to{from.x + move.x, from.y + move.y};
        mouse(WM_LBUTTONDOWN, from);
        mouse(WM_MOUSEMOVE, to);  // begins it
        mouse(WM_MOUSEMOVE, to);  // and finds what it is over
        mouse(WM_LBUTTONUP, to);
        testinput::pump();
        // Dropped on itself it is refused with a message, on its neighbour it is attached.
        const bool refused = !boxes.take().empty();
        const bool attached = !client.take().empty();
        EXPECT_EQ(refused || attached, move.drags) << move.x << ", " << move.y;
    }
}

TEST_F(BrowserSelection, ADropAsksTheClientToAttach) {
    drag(items[0], items[4]);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kAttach, items[0], items[4]}}));
    EXPECT_EQ(TreeView_GetDropHilight(tree()), nullptr);
    EXPECT_NE(GetCapture(), tree());

    // Beyond every item the last one that it passed is the target.
    browser().selectNode(root);
    const POINT from = middle(items[1], true);
    const POINT over = middle(items[5]);
    RECT area{};
    GetClientRect(tree(), &area);
    mouse(WM_LBUTTONDOWN, from);
    mouse(WM_MOUSEMOVE, over);
    mouse(WM_MOUSEMOVE, over);
    mouse(WM_MOUSEMOVE, {over.x, area.bottom - 40});
    EXPECT_EQ(TreeView_GetDropHilight(tree()), items[5]);
    mouse(WM_LBUTTONUP, {over.x, area.bottom - 40});
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kAttach, items[1], items[5]}}));
}

TEST_F(BrowserSelection, ADragCanBeGivenUp) {
    for (const bool byKey : {true, false}) {
        browser().selectNode(root);
        const POINT from = middle(items[1], true);
        mouse(WM_LBUTTONDOWN, from);
        mouse(WM_MOUSEMOVE, {from.x + 20, from.y});
        mouse(WM_MOUSEMOVE, middle(items[3]));
        EXPECT_EQ(TreeView_GetDropHilight(tree()), items[3]);
        if (byKey)
            testinput::key(VK_ESCAPE);
        else
            ReleaseCapture();
        EXPECT_EQ(TreeView_GetDropHilight(tree()), nullptr);
        mouse(WM_LBUTTONUP, middle(items[3]));
        EXPECT_TRUE(client.take().empty());
        EXPECT_TRUE(IsWindowVisible(form()));
    }
}

TEST_F(BrowserSelection, ADragScrollsTheTreeNearItsEdges) {
    for (int i = 0; i < 200; ++i) items.push_back(add(root, "further"));
    RECT area{};
    GetClientRect(tree(), &area);
    const auto firstShown = [] { return TreeView_GetFirstVisible(tree()); };
    const auto position = [&](HTREEITEM item) {
        return item == root ? -1 : std::find(items.begin(), items.end(), item) - items.begin();
    };
    browser().selectNode(root);
    const POINT from = middle(items[0], true);
    mouse(WM_LBUTTONDOWN, from);
    mouse(WM_MOUSEMOVE, {from.x + 20, from.y});
    ASSERT_TRUE(testinput::hover(tree(), {40, area.bottom - 4}));
    // Several steps may pass between two looks at it.
    EXPECT_TRUE(testinput::pumpUntil([&] { return position(firstShown()) >= 9; }));
    EXPECT_GT(position(TreeView_GetDropHilight(tree())), position(firstShown()))
        << "what comes under the mouse becomes the target";
    ASSERT_TRUE(testinput::hover(tree(), {40, 4}));
    EXPECT_TRUE(testinput::pumpUntil([&] { return firstShown() == root; }));
    // In the middle it rests.
    ASSERT_TRUE(testinput::hover(tree(), {40, area.bottom / 2}));
    EXPECT_FALSE(testinput::pumpUntil([&] { return firstShown() != root; }, 300));
    mouse(WM_LBUTTONUP, {40, area.bottom / 2});
    ASSERT_TRUE(testinput::hover(tree(), {40, area.bottom - 4}));
    EXPECT_FALSE(testinput::pumpUntil([&] { return firstShown() != root; }, 300)) << "it is over";
}

TEST_F(BrowserSelection, ADroppedNodeStaysSelectedAtItsNewPlace) {
    const NodeHandle node = browser().nodeOf(items[0]);
    BrowserItem added = nullptr;
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kAttach) return;
        browser().delNode(sent.first);
        added = browser().addNode(sent.second, "node a", node);
    };
    drag(items[0], items[4]);
    ASSERT_NE(added, nullptr);
    EXPECT_EQ(caret(), added);
    EXPECT_TRUE(isSelected(added));
    EXPECT_TRUE(isExpanded(items[4]));
    EXPECT_NE(text(control(IDC_NAME)).find(L":node a"), std::wstring::npos);
}

TEST_F(BrowserSelection, IllegalDropsAreRefusedWithAMessage) {
    const std::vector<std::wstring> belowChild{L"非法附加 - 父对象在子对象下方。"};
    const std::vector<std::wstring> toFace{L"非法附加 - 面对象可能只有作为子对象时才能有面.."};
    const BrowserItem face = add(root, "face", kFltFace);
    const BrowserItem otherFace = add(root, "other face", kFltFace);
    const BrowserItem plain = add(root, "plain", 0);
    const BrowserItem deepest = add(inside, "deepest");
    TreeView_Expand(tree(), items[2], TVE_EXPAND);
    TreeView_Expand(tree(), inside, TVE_EXPAND);

    drag(items[2], deepest);
    EXPECT_EQ(boxes.take(), belowChild) << "onto its own grandchild";
    drag(items[0], face);
    EXPECT_EQ(boxes.take(), toFace);
    drag(plain, face);
    EXPECT_EQ(boxes.take(), toFace);
    EXPECT_TRUE(client.take().empty());
    drag(otherFace, face);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kAttach, otherFace, face}}));
    drag(items[0], plain);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kAttach, items[0], plain}}));
    EXPECT_TRUE(boxes.take().empty());
}

// A reference shows its definition, so neither it nor what holds it can go into that.
TEST_F(BrowserSelection, NothingIsDroppedIntoWhatItShows) {
    const auto refused = [&](INode* held, INode* into) {
        const BrowserItem from = add(root, "from", held);
        const BrowserItem to = add(root, "to", into);
        drag(from, to);
        const bool sent = !client.take().empty();
        const bool told =
            boxes.take() == std::vector<std::wstring>{L"非法附加 - 父对象在子对象下方。"};
        EXPECT_NE(sent, told);
        return told;
    };
    INode* const definition = node(62);
    INode* const below = node(2);
    INode* const group = node(2);
    INode* const reference = node(61);
    ASSERT_TRUE(fltPutRecord(definition, FltInstanceDef()));
    ASSERT_TRUE(fltPutRecord(reference, FltInstanceRef()));
    definition->AttachChild(below, false);
    group->AttachChild(reference, false);
    for (INode* const held : {reference, group})
        for (INode* const into : {definition, below}) EXPECT_TRUE(refused(held, into));
    EXPECT_FALSE(refused(definition, group)) << "beside the reference it is in its place";
    EXPECT_FALSE(refused(node(2), below));
}

TEST_F(BrowserSelection, ADropTargetIsFramedAndAForbiddenOneShowsASign) {
    const auto pixelOf = [&](BrowserItem item, LONG inset) {
        RECT area{};
        TreeView_GetItemRect(tree(), item, &area, TRUE);
        return testinput::pixel(tree(), {area.left + inset, area.top + inset});
    };
    const HCURSOR no = LoadCursorW(nullptr, IDC_NO);
    const BrowserItem face = add(root, "face", kFltFace);
    browser().selectNode(root);
    middle(face);
    const POINT from = middle(items[0], true);
    mouse(WM_LBUTTONDOWN, from);
    mouse(WM_MOUSEMOVE, {from.x + 20, from.y});
    mouse(WM_MOUSEMOVE, middle(items[3]));
    EXPECT_EQ(pixelOf(items[3], 0), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(pixelOf(items[3], 1), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_NE(pixelOf(items[3], 3), GetSysColor(COLOR_HIGHLIGHT))
        << "only what is selected is filled";
    EXPECT_NE(GetCursor(), no);
    mouse(WM_MOUSEMOVE, middle(face));
    EXPECT_NE(pixelOf(face, 0), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(GetCursor(), no);
    mouse(WM_MOUSEMOVE, middle(items[4]));
    EXPECT_NE(GetCursor(), no);
    mouse(WM_MOUSEMOVE, middle(face));
    ReleaseCapture();
    EXPECT_NE(GetCursor(), no) << "it is over";
}

TEST_F(BrowserSelection, APictureOfWhatIsDraggedGoesWithTheMouse) {
    const POINT from = middle(items[0], true);
    RECT area{};
    GetClientRect(tree(), &area);
    const POINT empty{area.right - 60, area.bottom - 60};
    const auto besideThePointer = [&](LONG x, LONG y) {
        return testinput::pixel(tree(), {empty.x + x, empty.y + y});
    };
    browser().selectNode(root);
    mouse(WM_LBUTTONDOWN, from);
    mouse(WM_MOUSEMOVE, {from.x + 20, from.y});
    mouse(WM_MOUSEMOVE, empty);
    // The platform lets a little of what is below shine through.
    const COLORREF frame = besideThePointer(12, 10);
    EXPECT_GT(GetBValue(frame), GetRValue(frame) + 64);
    EXPECT_GT(GetRValue(besideThePointer(13, 11)), 0xf0);
    EXPECT_EQ(besideThePointer(5, 5), 0xe1e1e1u) << "what is under the pointer can be seen";
    bool hasText = false;
    for (LONG x = 36; x < 60; ++x)
        for (LONG y = 10; y < 30; ++y) hasText |= GetRValue(besideThePointer(x, y)) < 64;
    EXPECT_TRUE(hasText);
    mouse(WM_LBUTTONUP, empty);
    testinput::pump();
    EXPECT_EQ(besideThePointer(13, 11), 0xe1e1e1u);
}

// What is selected can be told by its color, with and without the focus.
TEST_F(BrowserSelection, SelectedItemsAreColored) {
    click(1);
    click(3, {VK_CONTROL});
    click(4, {VK_CONTROL});
    click(4, {VK_CONTROL});
    const auto background = [&](int item) {
        RECT area{};
        TreeView_GetItemRect(tree(), items[static_cast<std::size_t>(item)], &area, TRUE);
        return testinput::pixel(tree(), {area.left + 1, area.top + 1});
    };
    EXPECT_EQ(background(1), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(background(3), GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_EQ(background(2), 0xe1e1e1u);
    EXPECT_NE(background(4), GetSysColor(COLOR_HIGHLIGHT)) << "the caret alone is no selection";
    SetFocus(control(IDC_REFRESH));
    testinput::pump();
    const COLORREF pale = background(3);
    EXPECT_EQ(background(1), pale);
    EXPECT_NE(pale, 0xe1e1e1u);
    EXPECT_NE(pale, GetSysColor(COLOR_HIGHLIGHT));
    EXPECT_GT(GetBValue(pale), GetRValue(pale)) << "a color, as gray is what cannot be changed";
    EXPECT_EQ(background(2), 0xe1e1e1u);
    // What is selected can still be read in a tree that is disabled.
    browser().sceneChanged();
    RECT area{};
    TreeView_GetItemRect(tree(), items[3], &area, TRUE);
    const int y = (area.top + area.bottom) / 2;
    bool legible = false;
    for (int x = area.left; x < area.right; ++x)
        legible = legible || testinput::pixel(tree(), {x, y}) == GetSysColor(COLOR_GRAYTEXT);
    EXPECT_TRUE(legible);
    EXPECT_NE(background(3), GetSysColor(COLOR_GRAYTEXT));
}

}  // namespace
