// The form as a window: creation, handshake, title, layout, closing.
#include "../support/overwrittenmemory.h"
#include "../support/ownlog.h"
#include "../support/seen.h"
#include "browserfixture.h"

#include <quillon/fltswitch.h>

#include <commoncontrols.h>

#include <algorithm>
#include <functional>

namespace {

RECT areaInForm(HWND form, HWND control) {
    RECT area{};
    GetWindowRect(control, &area);
    MapWindowPoints(nullptr, form, reinterpret_cast<POINT*>(&area), 2);
    return area;
}

class BrowserForm : public BrowserTest {
protected:
    /// Every control lies in the form's client area, and each in the frame of its side.
    static void expectWhole() {
        RECT client{};
        GetClientRect(form(), &client);
        const auto contains = [](const RECT& outer, const RECT& inner) {
            RECT both{};
            UnionRect(&both, &outer, &inner);
            return EqualRect(&both, &outer) && !IsRectEmpty(&inner);
        };
        for (HWND child = GetWindow(form(), GW_CHILD); child; child = GetWindow(child, GW_HWNDNEXT))
            EXPECT_TRUE(contains(client, areaInForm(form(), child))) << GetDlgCtrlID(child);
        const RECT side = areaInForm(form(), control(IDC_PROPERTY_GROUP));
        for (const int id : {IDC_NAME, IDC_ITEM_SPIN, IDC_COMMENT, IDC_GRID})
            EXPECT_TRUE(contains(side, areaInForm(form(), control(id)))) << id;
        EXPECT_TRUE(
            contains(areaInForm(form(), control(IDC_TREE_GROUP)), areaInForm(form(), tree())));
        EXPECT_LE(areaInForm(form(), control(IDC_NAME)).right,
                  areaInForm(form(), control(IDC_ITEM_SPIN)).left);
    }

    /// Pulls the splitter with the mouse; returns how much wider the tree has become.
    static int pullSplitter(int distance) {
        const RECT left = areaInForm(form(), control(IDC_TREE_GROUP));
        const RECT right = areaInForm(form(), control(IDC_PROPERTY_GROUP));
        const POINT at{(left.right + right.left) / 2, (left.top + left.bottom) / 2};
        const int before = static_cast<int>(sizeOf(tree()).cx);
        testinput::drag(form(), at, {at.x + distance, at.y});
        return static_cast<int>(sizeOf(tree()).cx) - before;
    }
    /// Where the line between the grid's columns is in its heading.
    static int dividerAt() {
        RECT client{};
        GetClientRect(grid(), &client);
        for (int x = 10; x < client.right - 10; ++x)
            if (testinput::pixel(grid(), {x, 2}) == GetSysColor(COLOR_BTNSHADOW)) return x;
        return -1;
    }
    static SIZE sizeOf(HWND window) {
        RECT area{};
        GetWindowRect(window, &area);
        return {area.right - area.left, area.bottom - area.top};
    }
    static RECT place() {
        RECT area{};
        GetWindowRect(form(), &area);
        return area;
    }
};

TEST_F(BrowserForm, IsCreatedOnlyForAClientThatAnswers) {
    client.allowsForm = false;
    EXPECT_EQ(browser().create(nullptr, Client::callback, 0, &client), tessera::kBrowserRefused);
    EXPECT_EQ(browser().create(nullptr, nullptr, 0, nullptr), tessera::kBrowserRefused);
    EXPECT_FALSE(browser().show(1));
    client.allowsForm = true;
    const auto noWindow = reinterpret_cast<HWND>(std::uintptr_t{0xDEAD});
    EXPECT_EQ(browser().create(noWindow, Client::callback, 0, &client),
              tessera::kBrowserDialogFailed);
    EXPECT_FALSE(browser().show(1));
    EXPECT_EQ(form(), nullptr);

    EXPECT_EQ(browser().create(nullptr, Client::callback, 0, &client), tessera::kBrowserDone);
    EXPECT_FALSE(IsWindowVisible(form())) << "the client shows it";
    EXPECT_EQ(label(TreeView_GetRoot(tree())), L"Scene Root");
    EXPECT_EQ(browser().nodeOf(TreeView_GetRoot(tree())), 0u);
}

TEST_F(BrowserForm, TheLastIconIsTheListsFirstOverlay) {
    open(false);
    const auto icons =
        reinterpret_cast<HIMAGELIST>(SendMessageW(tree(), TVM_GETIMAGELIST, TVSIL_NORMAL, 0));
    ASSERT_EQ(ImageList_GetImageCount(icons), 19);
    // No import library has these two.
    constexpr IID kImageList{
        0x46EB5926, 0x582E, 0x4017, {0x9F, 0xDF, 0xE8, 0x99, 0x8D, 0xAA, 0x09, 0x50}};
    const auto query =
        reinterpret_cast<HRESULT(WINAPI*)(HIMAGELIST, REFIID, void**)>(reinterpret_cast<void*>(
            GetProcAddress(GetModuleHandleW(L"comctl32"), "HIMAGELIST_QueryInterface")));
    ASSERT_NE(query, nullptr);
    IImageList* list = nullptr;
    ASSERT_EQ(query(icons, kImageList, reinterpret_cast<void**>(&list)), S_OK);
    // Wine takes the image and gives the overlay, where Windows takes the overlay.
    int found = -1;
    const bool answered = list->GetOverlayImage(1, &found) == S_OK && found == 18;
    EXPECT_TRUE(answered || (list->GetOverlayImage(18, &found) == S_OK && found == 1));
    list->Release();
}

TEST_F(BrowserForm, ASecondCreationRebindsTheClient) {
    open(false);
    const HWND first = form();
    Client other;
    EXPECT_EQ(browser().create(nullptr, Client::callback, 0, &other), tessera::kBrowserDone);
    EXPECT_EQ(form(), first);
    client.take();
    browser().refresh();
    EXPECT_TRUE(client.take().empty());
    EXPECT_EQ(other.take(), (std::vector<Sent>{{BrowserEvent::kRebuild}}));
}

TEST_F(BrowserForm, ShowsItsTitle) {
    browser().setTitle("early.flt");
    open(false);
    EXPECT_EQ(text(form()), L"Aviary 层次 (early.flt)");
    browser().setTitle("terrain");
    EXPECT_EQ(text(form()), L"Aviary 层次 (terrain)");
    browser().setTitle("跑道.flt");
    EXPECT_EQ(text(form()), L"Aviary 层次 (跑道.flt)");
    browser().setTitle("");
    EXPECT_EQ(text(form()), L"Aviary 层次");
    browser().setTitle(std::string(100'000, 'x').c_str());
    EXPECT_EQ(text(form()).substr(0, 14), L"Aviary 层次 (xxx");
}

TEST_F(BrowserForm, TracesItsTitleAndItsRefreshes) {
    const OwnLog log;
    browser().setTitle("early.flt");
    EXPECT_EQ(log.take(), "title :ZuFltHierForm NULL\n");
    browser().refresh();
    open(false);
    EXPECT_EQ(log.take(), "") << "there was no form, and making one is no news";
    browser().setTitle("");
    EXPECT_EQ(log.take(), "title :Aviary 层次\n");
    browser().setTitle("100%s 跑道.flt");
    EXPECT_EQ(log.take(), "title :Aviary 层次 (100%s 跑道.flt)\n");
    browser().refresh();
    push(IDC_REFRESH);
    const std::string line = "OnRefresh Aviary 层次 (100%s 跑道.flt)\n";
    EXPECT_EQ(log.take(), line + line);
    browser().setTitle(std::string(600, 'x').c_str());
    log.take();
    browser().refresh();
    const std::string start = "Aviary 层次 (";
    constexpr std::size_t kStartCharacters = 11, kMost = 512;
    EXPECT_EQ(log.take(), "OnRefresh " + start + std::string(kMost - kStartCharacters, 'x') + "\n");
}

TEST_F(BrowserForm, OffersTheCreatableKinds) {
    open(false);
    std::wstring names;
    for (int i = 0; i < ComboBox_GetCount(control(IDC_CREATE_KIND)); ++i) {
        wchar_t name[64] = L"";
        SendDlgItemMessageW(form(), IDC_CREATE_KIND, CB_GETLBTEXT, static_cast<WPARAM>(i),
                            reinterpret_cast<LPARAM>(name));
        names += name + std::wstring(L";");
    }
    EXPECT_EQ(names, L"组;对象(LOD);细节级别;切换;自由度(DOF);外部参照;Bsp;剪辑区域;灯光点;");
    EXPECT_EQ(ComboBox_GetCurSel(control(IDC_CREATE_KIND)), 0);
}

TEST_F(BrowserForm, ASceneChangeLeavesOnlyRefresh) {
    open();
    BrowserItem added = nullptr;
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kRebuild) return;
        browser().delNode(nullptr);
        added = add(nullptr, "root", 0);
        add(added, "child");
    };
    INode* const node = BrowserTest::node(2);
    fltPutComment(node, "of its own");
    const BrowserItem stale = add(nullptr, "stale", node);
    const long ofNone = Seen(grid()).children();
    browser().selectNode(stale);
    EXPECT_GT(Seen(grid()).children(), ofNone);
    EXPECT_EQ(text(control(IDC_COMMENT)), L"of its own");
    browser().sceneChanged();
    for (const int id : {IDC_TREE, IDC_UP, IDC_DOWN, IDC_SELECT_SET, IDC_SELECT_GET, IDC_EXPAND,
                         IDC_COLLAPSE, IDC_FIND, IDC_CREATE})
        EXPECT_FALSE(isEnabled(id)) << id;
    EXPECT_TRUE(isEnabled(IDC_REFRESH));
    EXPECT_EQ(text(control(IDC_NAME)), L"");
    EXPECT_EQ(text(control(IDC_COMMENT)), L"");
    EXPECT_EQ(Seen(grid()).children(), ofNone) << "no row of a node that may have gone";
    EXPECT_EQ(label(stale), L"stale") << "the tree stays until it is refreshed";

    push(IDC_REFRESH);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kRebuild}}));
    for (const int id : {IDC_TREE, IDC_UP, IDC_FIND, IDC_CREATE}) EXPECT_TRUE(isEnabled(id)) << id;
    EXPECT_EQ(TreeView_GetRoot(tree()), added);
    EXPECT_EQ(TreeView_GetCount(tree()), 2u);
}

class BrowserFollowing : public BrowserTest {
protected:
    void SetUp() override {
        owner = CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 900, 600,
                                300, 200, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(browser().create(owner, Client::callback, 0, &client), tessera::kBrowserDone);
        client.onEvent = [this](const Sent& sent) {
            if (sent.event != BrowserEvent::kRebuild) return;
            ++rebuilt;
            fill();
        };
        fill();
        browser().show(1);
        ASSERT_TRUE(testinput::activate(form()));
    }
    void TearDown() override {
        browser().destroy();
        DestroyWindow(owner);
    }
    void fill() {
        browser().delNode(nullptr);
        root = add(nullptr, "root", rootNode);
        group = add(root, "group", groupNode);
        inside = add(group, "inside", insideNode);
        while (furtherNodes.size() < 60) furtherNodes.push_back(node(2));
        for (INode* const further : furtherNodes) add(root, "further", further);
    }
    static bool follows(int milliseconds = 5000) {
        return testinput::pumpUntil([] { return isEnabled(IDC_UP); }, milliseconds);
    }

    HWND owner = nullptr;
    INode* const rootNode = node(2);
    INode* const groupNode = node(2);
    INode* const insideNode = node(2);
    std::vector<INode*> furtherNodes;
    BrowserItem root = nullptr, group = nullptr, inside = nullptr;
    int rebuilt = 0;
};

TEST_F(BrowserFollowing, ComesOnceAndKeepsBranchesPlaceNodeAndKeyboard) {
    browser().selectNode(inside);
    TreeView_Expand(tree(), root, TVE_EXPAND);
    SetFocus(tree());
    for (int i = 0; i < 5; ++i) {
        browser().sceneChanged();
        testinput::pump();
    }
    EXPECT_FALSE(isEnabled(IDC_UP));
    EXPECT_EQ(rebuilt, 0) << "not while the scene still changes";
    EXPECT_TRUE(follows());
    EXPECT_TRUE(isExpanded(root) && isExpanded(group));
    EXPECT_EQ(TreeView_GetFirstVisible(tree()), root);
    EXPECT_EQ(caret(), inside);
    EXPECT_NE(text(control(IDC_NAME)).find(L":inside"), std::wstring::npos);
    EXPECT_EQ(GetFocus(), tree());
    testinput::pumpUntil([] { return false; }, 400);
    EXPECT_EQ(rebuilt, 1);
    // And the next time, with the node far out of sight.
    SendMessageW(tree(), WM_VSCROLL, SB_BOTTOM, 0);
    const int scrolled = GetScrollPos(tree(), SB_VERT);
    EXPECT_GT(scrolled, 0);
    browser().sceneChanged();
    EXPECT_TRUE(follows());
    EXPECT_EQ(rebuilt, 2);
    EXPECT_EQ(caret(), inside);
    EXPECT_EQ(GetScrollPos(tree(), SB_VERT), scrolled);
}

TEST_F(BrowserFollowing, GivesTheCommentTheKeyboardBack) {
    browser().selectNode(inside);
    SetFocus(control(IDC_COMMENT));
    browser().sceneChanged();
    EXPECT_EQ(GetFocus(), control(IDC_REFRESH)) << "not with a field that is disabled";
    EXPECT_TRUE(follows());
    EXPECT_EQ(GetFocus(), control(IDC_COMMENT));
}

TEST_F(BrowserFollowing, LeavesTheKeyboardWithTheHostAndWaitsForIt) {
    browser().selectNode(inside);
    ASSERT_TRUE(testinput::activate(owner));
    SetFocus(owner);
    EnableWindow(owner, FALSE);  // as a progress dialog does
    browser().sceneChanged();
    EXPECT_FALSE(follows(500));
    EnableWindow(owner, TRUE);
    EnableWindow(form(), FALSE);
    EXPECT_FALSE(follows(300)) << "it asks something itself";
    EnableWindow(form(), TRUE);
    SetCapture(owner);
    EXPECT_FALSE(follows(300)) << "the mouse is still held";
    ReleaseCapture();
    ASSERT_TRUE(testinput::activate(owner));
    SetFocus(owner);
    EXPECT_TRUE(follows());
    EXPECT_EQ(rebuilt, 1);
    EXPECT_EQ(GetFocus(), owner);
    EXPECT_EQ(GetForegroundWindow(), owner);

    browser().sceneChanged();
    browser().show(0);
    testinput::pumpUntil([] { return false; }, 400);
    EXPECT_EQ(rebuilt, 1) << "nobody sees it";
}

TEST_F(BrowserFollowing, ADisabledTreeLooksDisabled) {
    const auto darkest = [this] {
        RECT area{};
        TreeView_GetItemRect(tree(), root, &area, TRUE);
        int found = 255;
        for (LONG y = area.top; y < area.bottom; ++y)
            for (LONG x = area.left; x < area.right; ++x)
                found = std::min<int>(found, GetGValue(testinput::pixel(tree(), {x, y})));
        return found;
    };
    browser().selectNode(inside);
    testinput::pump();
    const int enabled = darkest();
    EnableWindow(owner, FALSE);
    browser().sceneChanged();
    testinput::pump();
    EXPECT_GT(darkest(), enabled + 40);
    EnableWindow(owner, TRUE);
}

TEST_F(BrowserForm, ATreeOfNodesThatMayHaveGoneIsRebuiltBeforeItIsShown) {
    open();
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kRebuild) return;
        EXPECT_FALSE(IsWindowVisible(form()));
        browser().delNode(nullptr);
        add(nullptr, "fresh");
    };
    const auto leave = {+[] { browser().sceneChanged(); },
                        +[] { SendMessageW(form(), WM_CLOSE, 0, 0); }};
    for (const auto& outdate : leave) {
        add(nullptr, "stale");
        outdate();
        browser().show(0);
        client.take();
        EXPECT_TRUE(browser().show(1));
        EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kRebuild}}));
        EXPECT_EQ(label(TreeView_GetRoot(tree())), L"fresh");
        EXPECT_TRUE(isEnabled(IDC_FIND));
    }
    browser().show(0);
    browser().show(1);
    EXPECT_TRUE(client.take().empty()) << "nothing has changed since";
}

TEST_F(BrowserForm, IsFilledUnderTheWaitCursorAndDrawnOnce) {
    ASSERT_EQ(browser().create(nullptr, Client::callback, 0, &client), tessera::kBrowserDone);
    SetCursor(LoadCursorW(nullptr, IDC_ARROW));
    const HCURSOR arrow = GetCursor();
    const HCURSOR waiting = LoadCursorW(nullptr, IDC_WAIT);
    const auto isDrawn = [] { return (GetWindowLongW(tree(), GWL_STYLE) & WS_VISIBLE) != 0; };
    const auto fill = [&] {
        browser().delNode(nullptr);
        const BrowserItem root = add(nullptr, "root", 0);
        add(root, "child");
        EXPECT_EQ(GetCursor(), waiting);
        EXPECT_FALSE(isDrawn());
    };
    fill();
    EXPECT_TRUE(browser().show(1));
    EXPECT_EQ(GetCursor(), arrow);
    EXPECT_TRUE(isDrawn());
    // Also for a client that does not show it, or fills while it is shown.
    testinput::pump();
    SetCursor(arrow);
    fill();
    testinput::pump();
    EXPECT_NE(GetCursor(), waiting);
    EXPECT_TRUE(isDrawn());
}

TEST_F(BrowserForm, ComesBackFromEveryStateToItsPlace) {
    open();
    const SIZE size = sizeOf(form());
    for (const int command : {SW_MAXIMIZE, SW_MINIMIZE}) {
        ShowWindow(form(), command);
        testinput::pump();
        browser().resetPos();
        EXPECT_FALSE(IsZoomed(form()) || IsIconic(form()));
        RECT area{};
        GetWindowRect(form(), &area);
        EXPECT_EQ(area.left, 0);
        EXPECT_EQ(area.top, 0);
        EXPECT_TRUE(command == SW_MAXIMIZE || sizeOf(form()).cx == size.cx);
        MoveWindow(form(), 30, 40, size.cx, size.cy, TRUE);
    }
    ShowWindow(form(), SW_MINIMIZE);
    browser().show(0);
    browser().resetPos();
    EXPECT_FALSE(IsWindowVisible(form()));
}

TEST_F(BrowserForm, IsMadeAnewAfterItsOwnerIsGone) {
    const HWND owner = CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW, 0, 0, 50, 50,
                                       nullptr, nullptr, nullptr, nullptr);
    ASSERT_EQ(browser().create(owner, Client::callback, 0, &client), 0);
    ASSERT_NE(form(), nullptr);
    DestroyWindow(owner);
    EXPECT_FALSE(browser().show(1)) << "there is none to be shown";
    EXPECT_EQ(browser().create(nullptr, Client::callback, 0, &client), 0);
    ASSERT_NE(form(), nullptr);
    EXPECT_TRUE(browser().show(1));
    EXPECT_TRUE(IsWindowVisible(form()));
}

namespace {

/// Counts the items that tree controls tell their parent they have deleted.
class DeletedItems {
public:
    explicit DeletedItems(HWND form) {
        count = 0;
        former_ = reinterpret_cast<WNDPROC>(
            SetWindowLongPtrW(form, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&procedure)));
    }
    static inline int count = 0;

private:
    static LRESULT CALLBACK procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
        if (message == WM_NOTIFY) {
            const UINT code = reinterpret_cast<const NMHDR*>(lParam)->code;
            count += code == TVN_DELETEITEMW || code == TVN_DELETEITEMA;
        }
        return CallWindowProcW(former_, window, message, wParam, lParam);
    }

    static inline WNDPROC former_ = nullptr;
};

}  // namespace

// Deleting the items of a large tree takes Wine's control a minute.
TEST_F(BrowserForm, ATreeThatIsEmptiedAndFilledAgainKeepsItsItems) {
    open();
    INode* const scene = node(0);
    std::vector<INode*> nodes;
    for (int i = 0; i < 20; ++i) nodes.push_back(node(2));
    BrowserItem root = nullptr;
    std::vector<BrowserItem> items;
    const auto fill = [&] {
        items.clear();
        browser().delNode(nullptr);
        root = add(nullptr, "Scene Root", scene);
        for (INode* const made : nodes) items.push_back(add(root, "node", made));
    };
    fill();
    testinput::pump();
    const std::vector<BrowserItem> before = items;
    const DeletedItems deleted(form());
    SendMessageW(form(), WM_CLOSE, 0, 0);
    fill();  // as the panel's button does
    EXPECT_TRUE(browser().show(1));
    EXPECT_EQ(items, before);
    EXPECT_EQ(deleted.count, 0);
    EXPECT_EQ(TreeView_GetCount(tree()), 21u);
    nodes.resize(5);
    fill();
    testinput::pump();
    EXPECT_EQ(deleted.count, 15) << "what was not added again";
    EXPECT_EQ(TreeView_GetCount(tree()), 6u);
}

// Another control takes its place.
TEST_F(BrowserForm, ALargeTreeGivesWayToAnotherSceneAtOnce) {
    constexpr int kMany = 66'000;
    open();
    INode* const root = node(0);
    INode* nodes[] = {node(2), node(4)};
    int shown = 0;
    int count = kMany;
    BrowserItem last = nullptr;
    client.onEvent = [&](const Sent& sent) {
        if (sent.event != BrowserEvent::kRebuild) return;
        browser().delNode(nullptr);
        const BrowserItem top = add(nullptr, "Scene Root", root);
        for (int i = 0; i < count; ++i) last = add(top, "node", nodes[shown]);
    };
    push(IDC_REFRESH);
    const HWND before = tree();
    push(IDC_REFRESH);
    ASSERT_EQ(tree(), before) << "the same scene keeps its items";

    const auto looks = [&] {
        std::vector<LRESULT> now;
        for (const UINT message : {WM_GETFONT, TVM_GETIMAGELIST, TVM_GETITEMHEIGHT, TVM_GETBKCOLOR})
            now.push_back(SendMessageW(tree(), message, 0, 0));
        for (const int index : {GWL_STYLE, GWL_EXSTYLE})
            now.push_back(GetWindowLongW(tree(), index));
        RECT place{};
        GetWindowRect(tree(), &place);
        now.insert(now.end(), {place.left, place.top, place.right, place.bottom});
        now.push_back(reinterpret_cast<LRESULT>(GetNextDlgTabItem(form(), tree(), FALSE)));
        return now;
    };
    SetFocus(tree());
    const std::vector<LRESULT> looked = looks();
    const LONG below = sizeOf(tree()).cy - sizeOf(grid()).cy;
    const DeletedItems deleted(form());
    shown = 1;
    count = 10;
    push(IDC_REFRESH);
    ASSERT_NE(tree(), before);
    EXPECT_EQ(looks(), looked);
    EXPECT_EQ(GetFocus(), tree());
    EXPECT_EQ(TreeView_GetCount(tree()), 11u);
    EXPECT_FALSE(IsWindowVisible(before));
    EXPECT_EQ(browser().nodeOf(last), reinterpret_cast<NodeHandle>(nodes[1]));
    browser().selectNode(last);
    EXPECT_EQ(caret(), last);
    EXPECT_NE(text(control(IDC_NAME)), L"") << "the form hears the new control";
    SetWindowPos(form(), nullptr, 0, 0, 900, 700, SWP_NOMOVE);
    EXPECT_EQ(sizeOf(tree()).cy - sizeOf(grid()).cy, below) << "and lays it out";
    EXPECT_TRUE(nameless(form()).empty()) << "and names it";

    // The former one is emptied little by little.
    const auto left = [&] { return TreeView_GetCount(before); };
    const UINT first = left();
    EXPECT_GT(first, 0u);
    EXPECT_TRUE(testinput::pumpUntil([&] { return left() < first; }));
    EXPECT_GT(left(), 0u);
    const int soFar = deleted.count;
    browser().destroy();
    EXPECT_FALSE(IsWindow(before));
    EXPECT_EQ(deleted.count, soFar + 11) << "what is left goes with the process";
}

TEST_F(BrowserForm, ThatGoesWithItsOwnerLeavesTheItemsToTheProcess) {
    for (const bool withOwner : {true, false}) {
        const HWND owner = CreateWindowExW(0, L"STATIC", L"owner", WS_OVERLAPPEDWINDOW, 0, 0, 50,
                                           50, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(browser().create(owner, Client::callback, 0, &client), 0);
        const BrowserItem root = add(nullptr, "root");
        for (int i = 0; i < 20; ++i) add(root, "node");
        testinput::pump();
        const DeletedItems deleted(form());
        if (!withOwner) browser().destroy();
        DestroyWindow(owner);
        EXPECT_EQ(deleted.count > 0, !withOwner);
        browser().destroy();
    }
}

TEST_F(BrowserForm, SharesItsGrowthOut) {
    open();
    struct Expectation {
        int id;
        int wide;
        int high;
    };
    const Expectation expected[] = {
        {IDC_COMMENT, 1, 0},        {IDC_GRID, 1, 1}, {IDC_TREE, 0, 1},   {IDC_TREE_GROUP, 0, 1},
        {IDC_PROPERTY_GROUP, 1, 1}, {IDC_NAME, 0, 0}, {IDC_REFRESH, 0, 0}};
    std::vector<SIZE> before;
    for (const Expectation& control : expected) before.push_back(sizeOf(this->control(control.id)));
    const SIZE whole = sizeOf(form());
    const auto expectGrown = [&](int growX, int growY) {
        for (std::size_t i = 0; i < std::size(expected); ++i) {
            const SIZE now = sizeOf(control(expected[i].id));
            EXPECT_EQ(now.cx, before[i].cx + expected[i].wide * growX) << expected[i].id;
            EXPECT_EQ(now.cy, before[i].cy + expected[i].high * growY) << expected[i].id;
        }
    };
    SetWindowPos(form(), nullptr, 0, 0, whole.cx + 90, whole.cy + 40, SWP_NOMOVE);
    expectGrown(90, 40);
    // Minimising changes nothing, so that restoring finds everything in its place.
    ShowWindow(form(), SW_MINIMIZE);
    testinput::pump();
    ShowWindow(form(), SW_RESTORE);
    testinput::pump();
    expectGrown(90, 40);
    SetWindowPos(form(), nullptr, 300, 200, whole.cx, whole.cy, 0);
    expectGrown(0, 0);

    browser().resetPos();
    RECT area{};
    GetWindowRect(form(), &area);
    EXPECT_EQ(area.left, 0);
    EXPECT_EQ(area.top, 0);
    EXPECT_EQ(area.right, whole.cx);
    EXPECT_EQ(area.bottom, whole.cy);
    // However small it is dragged, everything stays whole.
    SetWindowPos(form(), nullptr, 0, 0, 10, 10, SWP_NOMOVE);
    EXPECT_GT(sizeOf(grid()).cy, 50);
    expectWhole();
}

TEST_F(BrowserForm, ASplitterDividesItsWidth) {
    open();
    const SIZE whole = sizeOf(form());
    const int gridBefore = static_cast<int>(sizeOf(grid()).cx);
    EXPECT_EQ(pullSplitter(60), 60);
    EXPECT_EQ(sizeOf(grid()).cx, gridBefore - 60);
    expectWhole();
    EXPECT_EQ(pullSplitter(-90), -90);
    expectWhole();
    // It stops where a side would become too narrow, and the mouse has to come back to it.
    EXPECT_GT(pullSplitter(-2000), -200);
    expectWhole();
    EXPECT_LT(pullSplitter(2000), 600);
    expectWhole();
    const int widest = static_cast<int>(sizeOf(tree()).cx);
    SetWindowPos(form(), nullptr, 0, 0, whole.cx + 300, whole.cy, SWP_NOMOVE);
    EXPECT_EQ(sizeOf(tree()).cx, widest) << "what the form gains goes to the property side";
    EXPECT_EQ(pullSplitter(250), 250);
    expectWhole();
    SetWindowPos(form(), nullptr, 0, 0, whole.cx, whole.cy, SWP_NOMOVE);
    EXPECT_EQ(sizeOf(tree()).cx, widest) << "and what it loses, the tree does where it must";
    expectWhole();
}

TEST_F(BrowserForm, TheKeyboardMovesTheSplitterAndTheColumns) {
    open();
    browser().selectNode(add(add(nullptr, "root", 0), "group", kFltGroup));
    const auto treeWidth = [] { return static_cast<int>(sizeOf(tree()).cx); };
    const int width = treeWidth();
    const int divider = dividerAt();
    for (const int id : {IDC_TREE, IDC_GRID, IDC_COMMENT}) {
        SetFocus(control(id));
        const int before = treeWidth();
        testinput::key(VK_RIGHT, {VK_MENU});
        EXPECT_EQ(treeWidth(), before + 8) << id;
        EXPECT_EQ(GetFocus(), control(id));
        expectWhole();
    }
    for (int i = 0; i < 40; ++i) testinput::key(VK_LEFT, {VK_MENU});
    EXPECT_GT(treeWidth(), 40) << "it stops as with the mouse";
    testinput::key(VK_RIGHT, {VK_MENU});
    expectWhole();
    testinput::key(VK_HOME, {VK_MENU});
    EXPECT_EQ(treeWidth(), width);

    for (int i = 0; i < 3; ++i) testinput::key(VK_RIGHT, {VK_MENU, VK_SHIFT});
    const int wider = dividerAt();
    EXPECT_GT(wider, divider + 6);
    EXPECT_EQ(treeWidth(), width);
    for (int i = 0; i < 60; ++i) testinput::key(VK_LEFT, {VK_MENU, VK_SHIFT});
    RECT area{};
    GetClientRect(grid(), &area);
    EXPECT_GE(dividerAt(), area.right / 12) << "neither column vanishes";
    EXPECT_LT(dividerAt(), divider);
    for (int i = 0; i < 60; ++i) testinput::key(VK_RIGHT, {VK_MENU, VK_SHIFT});
    EXPECT_LE(dividerAt(), area.right * 11 / 12);
    EXPECT_GT(dividerAt(), divider);
}

TEST_F(BrowserForm, OpensWhereItWasLeftInThatScaling) {
    open();
    const RECT first = place();
    browser().destroy();
    open();
    const RECT again = place();
    EXPECT_TRUE(EqualRect(&again, &first)) << "nothing was changed";
    SetWindowPos(form(), nullptr, 40, 50, sizeOf(form()).cx + 100, sizeOf(form()).cy + 30, 0);
    pullSplitter(70);
    const int divider = dividerAt();
    testinput::drag(grid(), {divider, 5}, {divider - 40, 5});
    const int moved = dividerAt();
    EXPECT_EQ(moved, divider - 40);
    const RECT left = place();
    const LONG treeWidth = sizeOf(tree()).cx;
    SendMessageW(form(), WM_CLOSE, 0, 0);
    browser().destroy();
    open();
    const RECT restored = place();
    EXPECT_TRUE(EqualRect(&restored, &left));
    EXPECT_EQ(sizeOf(tree()).cx, treeWidth);
    EXPECT_NEAR(dividerAt(), moved, 1);
    expectWhole();
}

TEST_F(BrowserForm, CaptionsAndValuesShareAWideFormUnlessTheUserHasSharedItOut) {
    open();
    const auto captionPercent = [] {
        RECT area{};
        GetClientRect(grid(), &area);
        return 100 * dividerAt() / static_cast<int>(area.right);
    };
    const auto widen = [](int by) {
        SetWindowPos(form(), nullptr, 0, 0, sizeOf(form()).cx + by, sizeOf(form()).cy, SWP_NOMOVE);
    };
    const int first = captionPercent();
    ASSERT_GT(first, 50);
    widen(80);
    EXPECT_NEAR(captionPercent(), first, 1) << "it is not wide yet";
    widen(420);
    EXPECT_NEAR(captionPercent(), 45, 1);
    widen(-420);
    EXPECT_NEAR(captionPercent(), first, 1);
    widen(420);
    EXPECT_NEAR(captionPercent(), 45, 1);
    browser().destroy();
    open();
    EXPECT_NEAR(captionPercent(), 45, 1) << "nor is what was remembered the user's";
    widen(-500);
    EXPECT_NEAR(captionPercent(), first, 1);
    const int divider = dividerAt();
    testinput::drag(grid(), {divider, 5}, {divider - 100, 5});
    const int chosen = captionPercent();
    EXPECT_LT(chosen, first - 10);
    widen(500);
    EXPECT_NEAR(captionPercent(), chosen, 1);
}

// Whatever somebody or something has written there.
TEST_F(BrowserForm, IgnoresAPlaceThatIsNone) {
    open();
    const RECT usual = place();
    const LONG usualTree = sizeOf(tree()).cx;
    SetWindowPos(form(), nullptr, 40, 50, 0, 0, SWP_NOSIZE);
    browser().destroy();
    HKEY key = nullptr;
    ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, L"Software\\Tessera\\Browser", 0,
                            KEY_READ | KEY_WRITE, &key),
              ERROR_SUCCESS);
    wchar_t name[64] = L"";
    DWORD length = std::size(name);
    ASSERT_EQ(RegEnumValueW(key, 0, name, &length, nullptr, nullptr, nullptr, nullptr),
              ERROR_SUCCESS);
    for (const wchar_t* text :
         {L"", L"1 2 3", L"40 50 700 500 0 450 ", L"40 50 700 500 0 450 1", L"700 50 40 500 0 450",
          L"40 50 700 500 x 450", L"40 50 700 500 0 1000", L"40 50 700 99999999999 0 450"}) {
        RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text),
                       static_cast<DWORD>((wcslen(text) + 1) * sizeof *text));
        open();
        const RECT now = place();
        EXPECT_TRUE(EqualRect(&now, &usual)) << text;
        browser().destroy();
    }
    // Off every screen, too small and all tree: it comes where it can be used.
    const std::wstring odd = L"-9000 -9000 -8990 -8990 90000 999";
    RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(odd.c_str()),
                   static_cast<DWORD>((odd.size() + 1) * sizeof(wchar_t)));
    open();
    EXPECT_GE(place().left, 0);
    EXPECT_GE(place().top, 0);
    EXPECT_GE(sizeOf(form()).cx, usual.right - usual.left);
    EXPECT_GT(sizeOf(tree()).cx, usualTree);
    expectWhole();
    RegCloseKey(key);
}

TEST_F(BrowserForm, OpensBesideTheDialogThatHasTheKeyboard) {
    const int width = GetSystemMetrics(SM_CXSCREEN), height = GetSystemMetrics(SM_CYSCREEN);
    const HWND host = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_VISIBLE, 0, 0, width,
                                      height, nullptr, nullptr, nullptr, nullptr);
    const auto opensBeside = [&](const RECT& used) {
        const HWND page = CreateWindowExW(
            WS_EX_CONTROLPARENT, L"STATIC", L"", WS_CHILD | WS_VISIBLE, used.left, used.top,
            used.right - used.left, used.bottom - used.top, host, nullptr, nullptr, nullptr);
        const HWND button = CreateWindowExW(0, L"BUTTON", L"", WS_CHILD | WS_VISIBLE, 0, 0, 80, 20,
                                            page, nullptr, nullptr, nullptr);
        EXPECT_TRUE(testinput::activate(host));
        EXPECT_EQ(browser().create(host, Client::callback, 0, &client), tessera::kBrowserDone);
        SetFocus(button);
        browser().show(1);
        const RECT opened = place();
        browser().destroy();
        DestroyWindow(page);
        return opened;
    };
    const RECT usual = opensBeside({});
    constexpr int kOver = 10;
    ASSERT_GE(
        std::min({static_cast<int>(usual.left), static_cast<int>(usual.top),
                  width - static_cast<int>(usual.right), height - static_cast<int>(usual.bottom)}),
        2 * kOver);
    const RECT elsewhere = opensBeside({0, 0, 5, 5});
    EXPECT_TRUE(EqualRect(&elsewhere, &usual)) << "it is not in the way";
    for (const RECT& used :
         {RECT{usual.right - kOver, 0, width, height}, RECT{0, 0, usual.left + kOver, height},
          RECT{0, usual.bottom - kOver, width, height}, RECT{0, 0, width, usual.top + kOver}}) {
        const RECT opened = opensBeside(used), screen{0, 0, width, height};
        RECT common{};
        EXPECT_FALSE(IntersectRect(&common, &opened, &used)) << used.left << ' ' << used.top;
        EXPECT_TRUE(IntersectRect(&common, &opened, &screen) && EqualRect(&common, &opened));
    }
    DestroyWindow(host);
}

TEST_F(BrowserForm, LinesItsControlsUp) {
    open();
    const auto area = [](int id) {
        RECT found{};
        GetWindowRect(control(id), &found);
        return found;
    };
    EXPECT_EQ(area(IDC_ITEM_SPIN).left, area(IDC_NAME).right);
    EXPECT_EQ(area(IDC_ITEM_SPIN).right, area(IDC_COMMENT).right);
    const RECT button = area(IDC_CREATE);
    const RECT list = area(IDC_CREATE_KIND);
    EXPECT_NEAR(list.top + list.bottom, button.top + button.bottom, 2);
}

TEST_F(BrowserForm, ClosingHidesItAndTellsTheClient) {
    for (const auto& [message, command] :
         {std::pair<UINT, WPARAM>{WM_SYSCOMMAND, SC_CLOSE}, std::pair<UINT, WPARAM>{WM_CLOSE, 0}}) {
        open();
        SendMessageW(form(), message, command, 0);
        testinput::pump();
        EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kClosed}}));
        EXPECT_FALSE(IsWindowVisible(form()));
        EXPECT_TRUE(browser().show(1)) << "it is only hidden";
        EXPECT_TRUE(browser().show(0));
    }
    client.take();
    testinput::pump();
    EXPECT_TRUE(client.take().empty()) << "hiding by the client is no closing";
}

TEST_F(BrowserForm, TellsWhenTheUserComesToIt) {
    open();
    client.notesActivation = true;
    const HWND other = CreateWindowExW(0, L"STATIC", L"other", WS_OVERLAPPEDWINDOW | WS_VISIBLE,
                                       900, 600, 200, 100, nullptr, nullptr, nullptr, nullptr);
    ASSERT_TRUE(testinput::activate(other));
    EXPECT_TRUE(client.take().empty());
    ASSERT_TRUE(testinput::activate(form()));
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kActivated}}));
    DestroyWindow(other);
}

TEST_F(BrowserForm, NamesItsControlsInToolTips) {
    open(false);
    const OwnLog log;
    NMTTDISPINFOW wide{};
    wide.hdr = {nullptr, reinterpret_cast<UINT_PTR>(control(IDC_UP)), TTN_NEEDTEXTW};
    wide.uFlags = TTF_IDISHWND;
    SendMessageW(form(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&wide));
    EXPECT_STREQ(wide.szText, L"Control ID = 1018");
    NMTTDISPINFOA narrow{};
    narrow.hdr = {nullptr, reinterpret_cast<UINT_PTR>(tree()), TTN_NEEDTEXTA};
    narrow.uFlags = TTF_IDISHWND;
    SendMessageW(form(), WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&narrow));
    EXPECT_STREQ(narrow.szText, "Control ID = 1011");
    EXPECT_EQ(log.take(), "TTN\nTTN\n");
}

// A client may end the form from within whatever it is told, and nobody uses it any more then.
TEST_F(BrowserForm, MayBeDestroyedByAnyEvent) {
    BrowserItem switches[2] = {};
    const auto key = [](WORD pressed) {
        SetFocus(tree());
        testinput::key(pressed);
    };
    const auto openEditor = [&] {
        browser().selectNode(switches[0]);
        push(IDC_TOOL);
    };
    const auto nextWithOpenEditor = [&] {
        openEditor();
        TreeView_SetItemState(tree(), switches[1], TVIS_SELECTED, TVIS_SELECTED);
        testinput::activate(form());
        key(VK_F3);
    };
    const auto rename = [&] {
        key(VK_F2);
        testinput::type(L"b");
        testinput::key(VK_RETURN);
    };
    struct Way {
        BrowserEvent event;
        std::function<void()> act;
    };
    const Way ways[] = {
        {BrowserEvent::kRebuild, [] { push(IDC_REFRESH); }},
        {BrowserEvent::kRebuild, [&] { key(VK_F5); }},
        {BrowserEvent::kMoveUp, [] { push(IDC_UP); }},
        {BrowserEvent::kSelectInHost, [] { push(IDC_SELECT_SET); }},
        {BrowserEvent::kCountSelected, [] { push(IDC_SELECT_GET); }},
        {BrowserEvent::kCreate, [] { push(IDC_CREATE); }},
        {BrowserEvent::kClosed, [] { SendMessageW(form(), WM_SYSCOMMAND, SC_CLOSE, 0); }},
        {BrowserEvent::kRename, rename},
        {BrowserEvent::kCountSwitchChildren, nextWithOpenEditor},
        {BrowserEvent::kSwitchesChanged, openEditor},
    };
    open();
    const OverwrittenMemory memory;
    ASSERT_TRUE(memory.isThere());
    for (const Way& way : ways) {
        const auto index = &way - ways;
        open();
        const BrowserItem root = add(nullptr, "a");
        for (BrowserItem& item : switches) {
            INode* const made = node(96);
            ASSERT_TRUE(fltPutRecord(made, FltSwitch()));
            item = add(root, "switch", made);
        }
        select({root});
        client.onEvent = [&](const Sent& sent) {
            const bool counts = sent.event == BrowserEvent::kCountSwitchChildren;
            if (counts) *reinterpret_cast<std::uint32_t*>(sent.argument) = 3;
            if (sent.event == way.event && (!counts || sent.first == switches[1]))
                browser().destroy();
        };
        way.act();
        client.onEvent = nullptr;
        EXPECT_EQ(form(), nullptr) << index;
        EXPECT_FALSE(browser().show(1)) << index;
        testinput::pump();
        EXPECT_EQ(memory.violations(), 0) << index;
    }
}

}  // namespace
