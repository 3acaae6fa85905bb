// The form as a window: creation, handshake, title, layout, closing.
#include "../support/overwrittenmemory.h"
#include "../support/ownlog.h"
#include "browserfixture.h"

#include <quillon/fltswitch.h>

#include <commoncontrols.h>

#include <functional>

namespace {

class BrowserForm : public BrowserTest {};

SIZE sizeOf(HWND window) {
    RECT area{};
    GetWindowRect(window, &area);
    return {area.right - area.left, area.bottom - area.top};
}

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
    const BrowserItem stale = add(nullptr, "stale");
    browser().selectNode(stale);
    browser().sceneChanged();
    for (const int id : {IDC_TREE, IDC_UP, IDC_DOWN, IDC_SELECT_SET, IDC_SELECT_GET, IDC_EXPAND,
                         IDC_COLLAPSE, IDC_FIND, IDC_CREATE})
        EXPECT_FALSE(isEnabled(id)) << id;
    EXPECT_TRUE(isEnabled(IDC_REFRESH));
    EXPECT_EQ(text(control(IDC_NAME)), L"");
    EXPECT_EQ(label(stale), L"stale") << "the tree stays until it is refreshed";

    push(IDC_REFRESH);
    EXPECT_EQ(client.take(), (std::vector<Sent>{{BrowserEvent::kRebuild}}));
    for (const int id : {IDC_TREE, IDC_UP, IDC_FIND, IDC_CREATE}) EXPECT_TRUE(isEnabled(id)) << id;
    EXPECT_EQ(TreeView_GetRoot(tree()), added);
    EXPECT_EQ(TreeView_GetCount(tree()), 2u);
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
    // However small it is dragged, nothing gets lost.
    SetWindowPos(form(), nullptr, 0, 0, 10, 10, SWP_NOMOVE);
    EXPECT_GT(sizeOf(grid()).cx, 50);
    EXPECT_GT(sizeOf(grid()).cy, 50);
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
    for (const bool byKey : {false, true}) {
        open();
        if (byKey) {
            SetFocus(tree());
            testinput::key(VK_ESCAPE);
        } else {
            SendMessageW(form(), WM_SYSCOMMAND, SC_CLOSE, 0);
            testinput::pump();
        }
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
        {BrowserEvent::kClosed, [&] { key(VK_ESCAPE); }},
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
