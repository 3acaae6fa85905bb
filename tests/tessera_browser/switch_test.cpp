// The switch mask editor.
#include "../support/beeps.h"
#include "../support/scenechanges.h"
#include "../support/seen.h"
#include "../support/spokenlanguage.h"
#include "browserfixture.h"

#include <quillon/fltopcode.h>
#include <quillon/fltswitch.h>

namespace {

using Words = std::vector<std::uint32_t>;

class BrowserSwitch : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        client.onEvent = [this](const Sent& sent) {
            if (sent.event == BrowserEvent::kCountSwitchChildren)
                *reinterpret_cast<std::uint32_t*>(sent.argument) = children;
        };
    }

    /// A switch with these masks, shown.
    INode* show(std::initializer_list<std::uint32_t> words, std::int32_t wordsPerMask = 1) {
        FltSwitch record;
        record.wordsPerMask = wordsPerMask;
        for (const std::uint32_t word : words) record.maskWords.append(word);
        INode* const made = node(96);
        EXPECT_TRUE(fltPutRecord(made, record));
        item = add(root, "switch", made);
        browser().selectNode(item);
        client.take();
        return made;
    }

    static HWND editor() { return switchEditor(); }
    static void press(int id) {
        SendDlgItemMessageW(editor(), id, BM_CLICK, 0, 0);
        testinput::pump();
    }
    /// As the platform tells it when the keyboard goes elsewhere.
    static void leaveMaskField() {
        SendMessageW(editor(), WM_COMMAND, MAKEWPARAM(IDC_MASK, EN_KILLFOCUS),
                     reinterpret_cast<LPARAM>(GetDlgItem(editor(), IDC_MASK)));
    }
    static void spin(int step) {
        NMUPDOWN notification{};
        notification.hdr = {GetDlgItem(editor(), IDC_MASK_SPIN), IDC_MASK_SPIN, UDN_DELTAPOS};
        notification.iDelta = step;
        SendMessageW(editor(), WM_NOTIFY, IDC_MASK_SPIN, reinterpret_cast<LPARAM>(&notification));
    }
    static std::wstring mask() { return text(GetDlgItem(editor(), IDC_MASK)); }
    static std::wstring index() { return text(GetDlgItem(editor(), IDC_MASK_INDEX)); }

    static Words stored(INode* node) {
        FltSwitch record;
        EXPECT_TRUE(fltGetRecord(node, record));
        Words words;
        for (std::int32_t i = 0; i < record.maskWords.count(); ++i)
            words.push_back(*record.maskWords.at(i));
        return words;
    }

    std::uint32_t children = 3;
    BrowserItem root;
    BrowserItem item = nullptr;
};

const std::vector<Sent> kViewportFollows{{BrowserEvent::kSwitchesChanged}, {BrowserEvent::kRedraw}};

TEST_F(BrowserSwitch, ShowsAndChangesTheCurrentMask) {
    INode* const node = show({5, 0});
    EXPECT_TRUE(isEnabled(IDC_TOOL));
    push(IDC_TOOL);
    ASSERT_TRUE(IsWindowVisible(editor()));
    EXPECT_EQ(client.take()[0].event, BrowserEvent::kCountSwitchChildren);
    EXPECT_EQ(mask(), L"101");
    EXPECT_EQ(index(), L"0");
    press(IDC_MASK_INVERT);
    EXPECT_EQ(mask(), L"010");
    EXPECT_EQ(stored(node), (Words{0xFFFFFFFA, 0}));
    client.take();  // the mask field was left as well
    SceneChanges changes;
    press(IDC_MASK_CLEAR);
    EXPECT_EQ(stored(node), (Words{0, 0}));
    EXPECT_EQ(changes.take(), 1);
    EXPECT_EQ(client.take(), kViewportFollows);
    press(IDC_MASK_SET);
    EXPECT_EQ(stored(node), (Words{0xFFFFFFFF, 0}));

    // The upper arrow goes on, the lower one back.
    spin(-1);
    EXPECT_EQ(index(), L"1");
    EXPECT_EQ(mask(), L"000");
    const Beeps beeps;
    spin(-1);
    EXPECT_EQ(index(), L"1") << "the last one";
    EXPECT_EQ(Beeps::take(), kRefusal);
    spin(0);
    EXPECT_EQ(Beeps::take(), kRefusal) << "no step goes on as well";
    spin(1);
    EXPECT_EQ(index(), L"0");
    EXPECT_TRUE(Beeps::take().empty());
    spin(1);
    EXPECT_EQ(index(), L"0");
    EXPECT_EQ(Beeps::take(), kRefusal);
}

TEST_F(BrowserSwitch, TellsAssistiveProgramsWhatItsFieldsAre) {
    show({5, 0});
    push(IDC_TOOL);
    ASSERT_TRUE(IsWindowVisible(editor()));
    const Seen shown(GetDlgItem(editor(), IDC_MASK));
    EXPECT_TRUE(shown.name().starts_with(L"遮罩：")) << "and not as the label of the index says";
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    EXPECT_TRUE(shown.name().starts_with(L"Mask: ")) << "it follows";
    EXPECT_EQ(Seen(GetDlgItem(editor(), IDC_MASK_SPIN)).name(), L"Next or previous mask");
    EXPECT_TRUE(nameless(editor()).empty());
    EXPECT_EQ(shown.role(), ROLE_SYSTEM_TEXT);
}

TEST_F(BrowserSwitch, AddsAndDeletesMasks) {
    INode* const node = show({1, 2});
    push(IDC_TOOL);
    press(IDC_MASK_NEW);
    EXPECT_EQ(index(), L"2");
    EXPECT_EQ(mask(), L"111");
    EXPECT_EQ(stored(node), (Words{1, 2, 0xFFFFFFFF}));
    press(IDC_MASK_DELETE);
    EXPECT_EQ(index(), L"1");
    EXPECT_EQ(mask(), L"010");
    spin(1);
    press(IDC_MASK_DELETE);
    EXPECT_EQ(index(), L"0");
    EXPECT_EQ(mask(), L"010") << "what was the second";
    const Beeps beeps;
    press(IDC_MASK_DELETE);
    EXPECT_EQ(stored(node), Words{2}) << "the last mask stays";
    EXPECT_EQ(Beeps::take(), kRefusal);
}

TEST_F(BrowserSwitch, TakesTypedMasks) {
    children = 34;
    INode* const node = show({0, 0, 7, 7}, 2);
    push(IDC_TOOL);
    const HWND field = GetDlgItem(editor(), IDC_MASK);
    SetForegroundWindow(editor());
    SetFocus(field);
    SendMessageW(field, EM_SETSEL, 0, -1);
    testinput::type(L"01x1");
    EXPECT_EQ(stored(node), (Words{0, 0, 7, 7})) << "not before it is left";
    testinput::key(VK_TAB);
    EXPECT_EQ(stored(node), (Words{10, 0, 7, 7}));
    EXPECT_EQ(GetForegroundWindow(), editor()) << "the keyboard stays";
    SetFocus(field);
    SetWindowTextW(field, (std::wstring(33, L'0') + L"1111").c_str());
    testinput::key(VK_RETURN);
    EXPECT_EQ(stored(node)[1], 0x1Eu) << "four characters from the 34th on";
    EXPECT_EQ(mask(), std::wstring(33, L'0') + L"1");
    EXPECT_TRUE(IsWindowVisible(editor()));
}

TEST_F(BrowserSwitch, MasksMayTakeSeveralWords) {
    constexpr std::uint32_t kAll = 0xFFFFFFFF;
    for (const std::uint32_t count : {33u, 64u}) {
        SCOPED_TRACE(count);
        children = count;
        const std::uint32_t last = 1u << (count - 33);
        INode* const node = show({5, 0, 1, last}, 2);
        push(IDC_TOOL);
        EXPECT_EQ(mask(), L"101" + std::wstring(count - 3, L'0'));
        spin(-1);
        EXPECT_EQ(mask(), L"1" + std::wstring(count - 2, L'0') + L"1");
        press(IDC_MASK_INVERT);
        EXPECT_EQ(stored(node), (Words{5, 0, kAll - 1, kAll - last})) << "of this mask alone";
        press(IDC_MASK_NEW);
        EXPECT_EQ(mask(), std::wstring(count, L'1'));
        press(IDC_MASK_CLEAR);
        SetWindowTextW(GetDlgItem(editor(), IDC_MASK),
                       (std::wstring(count - 1, L'0') + L"1").c_str());
        leaveMaskField();
        EXPECT_EQ(stored(node), (Words{5, 0, kAll - 1, kAll - last, 0, last}));
        spin(1);
        press(IDC_MASK_DELETE);
        EXPECT_EQ(index(), L"0");
        EXPECT_EQ(stored(node), (Words{5, 0, 0, last}));
    }
}

// What can be typed, and is read of the field, ends with 2048 characters; children beyond keep
// their bits.
TEST_F(BrowserSwitch, TakesAsLongAMaskAsIsRead) {
    children = 2080;
    INode* const node = show(std::initializer_list<std::uint32_t>(), 65);
    push(IDC_TOOL);
    EXPECT_EQ(mask(), std::wstring(2080, L'1'));
    const HWND field = GetDlgItem(editor(), IDC_MASK);
    SetWindowTextW(field, std::wstring(2080, L'0').c_str());
    leaveMaskField();
    Words wanted(65, 0);
    wanted[64] = 0xFFFFFFFF;
    EXPECT_EQ(stored(node), wanted);
    SendMessageW(field, EM_SETSEL, 0, -1);
    SendMessageW(field, EM_REPLACESEL, TRUE,
                 reinterpret_cast<LPARAM>((std::wstring(2047, L'0') + L"1111").c_str()));
    EXPECT_EQ(mask(), std::wstring(2047, L'0') + L"1");
    leaveMaskField();
    wanted[63] = 0x80000000;
    EXPECT_EQ(stored(node), wanted);
}

TEST_F(BrowserSwitch, ShowsAMaskThatIsThere) {
    for (const std::int32_t current : {-5, 2, 0x7FFFFFFF}) {
        FltSwitch record;
        record.currentMask = current;
        record.maskWords.append(3);
        record.maskWords.append(4);
        INode* const made = node(96);
        ASSERT_TRUE(fltPutRecord(made, record));
        browser().selectNode(add(root, "switch", made));
        push(IDC_TOOL);
        EXPECT_EQ(index(), L"0") << current;
        EXPECT_EQ(mask(), L"110") << current;
    }
}

TEST_F(BrowserSwitch, RefusesWhatNoRecordCanHold) {
    const std::wstring refusal = L"不能编辑： 遮罩超出切换记录的最大长度";
    FltSwitch record;
    record.maskWords.resize(FltSwitch::kMaxWrittenMaskWords);
    for (std::int32_t i = 0; i < FltSwitch::kMaxWrittenMaskWords; ++i) *record.maskWords.at(i) = 5;
    record.currentMask = 7;
    INode* const made = node(96);
    ASSERT_TRUE(fltPutRecord(made, record));
    browser().selectNode(add(root, "full", made));
    push(IDC_TOOL);
    const Words before = stored(made);
    SetFocus(GetDlgItem(editor(), IDC_MASK_NEW));
    client.take();
    press(IDC_MASK_NEW);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{refusal});
    EXPECT_EQ(index(), L"7");
    EXPECT_EQ(mask(), L"101");
    EXPECT_EQ(stored(made), before);
    EXPECT_TRUE(client.take().empty()) << "nothing to be told";
    EXPECT_TRUE(IsWindowEnabled(editor()));
    press(IDC_MASK_DELETE);
    press(IDC_MASK_NEW);
    EXPECT_TRUE(boxes.take().empty()) << "there is room again";
    EXPECT_EQ(stored(made).size(), before.size());

    children = 32 * FltSwitch::kMaxWrittenMaskWords + 1;
    INode* const crowded = node(96);
    ASSERT_TRUE(fltPutRecord(crowded, FltSwitch()));
    browser().selectNode(add(root, "crowded", crowded));
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{refusal});
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(editor(), IDC_MASK)));
}

TEST_F(BrowserSwitch, TheViewportFollowsOnlyWhenWanted) {
    INode* const node = show({5});
    push(IDC_TOOL);
    press(IDC_SHOW_MASK);
    client.take();
    press(IDC_MASK_CLEAR);
    EXPECT_EQ(stored(node), Words{0});
    EXPECT_TRUE(client.take().empty());
    press(IDC_SHOW_MASK);
    EXPECT_EQ(client.take(), kViewportFollows);
}

TEST_F(BrowserSwitch, IsRefusedWithoutChildren) {
    children = 0;
    INode* const node = show({5});
    push(IDC_TOOL);
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"不能编辑： 开关无子对象"});
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(stored(node), Words{5});
}

TEST_F(BrowserSwitch, LeavingTheMaskFieldAlwaysTells) {
    INode* const node = show({5});
    push(IDC_TOOL);
    client.take();
    leaveMaskField();
    EXPECT_EQ(client.take(), kViewportFollows);
    EXPECT_EQ(stored(node), Words{5});
    // The spinner takes the keyboard from nobody.
    show({1, 0});
    const HWND field = GetDlgItem(editor(), IDC_MASK);
    SetForegroundWindow(editor());
    SetFocus(field);
    SendMessageW(field, EM_SETSEL, 0, -1);
    testinput::type(L"011");
    spin(-1);
    EXPECT_EQ(mask(), L"000");
    spin(1);
    EXPECT_EQ(mask(), L"011");
}

TEST_F(BrowserSwitch, CanBeEditedAgainOnceItCanBeOpened) {
    std::uintptr_t asked = 0;
    const auto count = client.onEvent;
    client.onEvent = [&](const Sent& sent) {
        count(sent);
        if (sent.event != BrowserEvent::kCountSwitchChildren) return;
        if (asked) {
            EXPECT_EQ(sent.argument, asked) << "the form has one buffer";
        }
        asked = sent.argument;
    };
    INode* const first = show({5});
    push(IDC_TOOL);
    const auto canEdit = [] { return IsWindowEnabled(GetDlgItem(editor(), IDC_MASK_INVERT)); };
    EXPECT_TRUE(canEdit());
    children = 0;
    INode* const second = show({6});
    EXPECT_EQ(boxes.take(), std::vector<std::wstring>{L"不能编辑： 开关无子对象"});
    EXPECT_FALSE(canEdit()) << "it still shows the other switch";
    EXPECT_TRUE(isEnabled(IDC_TOOL));
    children = 3;
    push(IDC_TOOL);
    EXPECT_TRUE(canEdit());
    EXPECT_EQ(mask(), L"011");
    press(IDC_MASK_INVERT);
    EXPECT_EQ(stored(second), Words{0xFFFFFFF9});
    EXPECT_EQ(stored(first), Words{5});
    children = 0;
    push(IDC_TOOL);
    EXPECT_FALSE(canEdit()) << "the children have gone";
}

TEST_F(BrowserSwitch, FollowsTheCurrentNode) {
    INode* const first = show({5});
    const BrowserItem firstItem = item;
    push(IDC_TOOL);
    INode* const second = show({2, 6});
    EXPECT_EQ(mask(), L"010") << "an open editor shows the next switch";
    press(IDC_MASK_INVERT);
    EXPECT_EQ(stored(first), Words{5});
    EXPECT_EQ(stored(second), (Words{0xFFFFFFFD, 6}));

    browser().selectNode(add(root, "group", kFltGroup));
    EXPECT_FALSE(isEnabled(IDC_TOOL));
    EXPECT_FALSE(IsWindowEnabled(GetDlgItem(editor(), IDC_MASK_INVERT)));
    EXPECT_EQ(stored(second), (Words{0xFFFFFFFD, 6}));

    browser().selectNode(firstItem);
    EXPECT_TRUE(IsWindowEnabled(GetDlgItem(editor(), IDC_MASK_INVERT)));
    EXPECT_EQ(mask(), L"101");
    SendMessageW(editor(), WM_CLOSE, 0, 0);
    testinput::pump();
    EXPECT_FALSE(IsWindowVisible(editor()));
    push(IDC_TOOL);
    EXPECT_TRUE(IsWindowVisible(editor())) << "closed is only hidden";
    SendMessageW(form(), WM_CLOSE, 0, 0);
    testinput::pump();
    EXPECT_FALSE(IsWindowVisible(editor())) << "with the form";
}

TEST_F(BrowserSwitch, EscapeTakesATypedMaskBackBeforeItCloses) {
    children = 3;
    INode* const made = show({5});
    push(IDC_TOOL);
    ASSERT_TRUE(testinput::activate(editor()));
    const HWND field = GetDlgItem(editor(), IDC_MASK);
    SetFocus(field);
    SendMessageW(field, EM_SETSEL, 0, -1);
    testinput::type(L"01");
    testinput::key(VK_ESCAPE);
    EXPECT_EQ(mask(), L"101");
    EXPECT_TRUE(IsWindowVisible(editor()));
    testinput::key(VK_ESCAPE);
    EXPECT_FALSE(IsWindowVisible(editor()));
    EXPECT_EQ(stored(made), Words{5});
    EXPECT_TRUE(IsWindowVisible(form()));
}

// As whatever else is being typed: the node may have gone.
TEST_F(BrowserSwitch, ATypedMaskIsLostWhenTheSceneChanges) {
    INode* const made = show({5});
    push(IDC_TOOL);
    ASSERT_TRUE(testinput::activate(editor()));
    const HWND field = GetDlgItem(editor(), IDC_MASK);
    SetFocus(field);
    SendMessageW(field, EM_SETSEL, 0, -1);
    testinput::type(L"01");
    browser().sceneChanged();
    testinput::pump();
    EXPECT_EQ(stored(made), Words{5});
    browser().refresh();
    EXPECT_EQ(stored(made), Words{5});
}

TEST_F(BrowserSwitch, CopesWithDamagedRecords) {
    children = 40;
    FltSwitch record;
    record.currentMask = -5;
    record.maskWords.append(3);
    INode* const made = node(96);
    ASSERT_TRUE(fltPutRecord(made, record));
    browser().selectNode(add(root, "switch", made));
    push(IDC_TOOL);
    EXPECT_EQ(index(), L"0");
    EXPECT_EQ(mask().substr(0, 4), L"1100");
    EXPECT_EQ(mask().size(), 40u);
    for (const int id : {IDC_MASK_DELETE, IDC_MASK_INVERT, IDC_MASK_NEW, IDC_MASK_DELETE})
        press(id);
    EXPECT_EQ(mask().substr(0, 4), L"0011");
}

}  // namespace
