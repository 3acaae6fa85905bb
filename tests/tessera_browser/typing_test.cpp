// What becomes of a text that is being typed when something else happens.
#include "../support/spokenlanguage.h"
#include "browserfixture.h"

#include <fltkilnutil/fltattr.h>
#include <quillon/fltopcode.h>
#include <quillon/fltswitch.h>

#include <functional>

namespace {

class BrowserTyping : public BrowserTest {
protected:
    struct Typing {
        const char* what;
        std::function<void()> begin;
        std::function<bool()> isTaken;
    };
    struct Leaving {
        const char* how;
        std::function<void()> leave;
    };

    /// Two nodes of a kind, both selected, the first one current.
    void showTwo(int kind) {
        open();
        browser().delNode(nullptr);
        const BrowserItem root = add(nullptr, "root", 0);
        for (int i = 0; i < 2; ++i) {
            nodes[i] = node(kind);
            if (kind == kFltSwitch) {
                EXPECT_TRUE(fltPutRecord(nodes[i], FltSwitch()));
            }
            items[i] = add(root, "node", nodes[i]);
        }
        TreeView_Expand(tree(), root, TVE_EXPAND);
        select({items[0], items[1]});
        client.take();
        client.lastText.clear();
    }

    std::string priority(int index) const {
        if (!fltAttrLoad(nodes[index], kFltRevision)) return "nothing";
        return fltAttrFindRow(FltNodeKind::Group, "FltGrpRelPriority")->value.text();
    }
    std::string comment(int index) const {
        std::string text;
        fltGetComment(nodes[index], text);
        return text;
    }
    std::uint32_t mask(int index) const {
        FltSwitch record;
        return fltGetRecord(nodes[index], record) && record.maskWords.count() == 1
                   ? *record.maskWords.at(0)
                   : 0;
    }

    /// In the form: a value of the grid (the priority comes first), the comment, the name.
    std::vector<Typing> typings() {
        const auto beginCell = [] {
            SetFocus(grid());
            testinput::key(VK_HOME, {VK_CONTROL});
            testinput::type(L"7");
        };
        const auto beginComment = [] {
            SetFocus(control(IDC_COMMENT));
            testinput::type(L"typed");
        };
        const auto beginName = [] {
            SetFocus(tree());
            testinput::key(VK_F2);
            testinput::type(L"typed");
        };
        return {{"cell", beginCell, [this] { return priority(0) == "7" && priority(1) == "0"; }},
                {"comment", beginComment,
                 [this] { return comment(0) == "typed" && comment(1).empty(); }},
                {"name", beginName, [this] { return client.lastText == "typed"; }}};
    }

    /// The keyboard stays where it is in all of them.
    std::vector<Leaving> leavings() {
        return {{"refresh", [] { browser().refresh(); }},
                {"another node", [this] { browser().selectNode(items[1]); }},
                {"showing", [] { browser().show(1); }},
                {"hiding", [] { browser().show(0); }},
                {"closing", [] { SendMessageW(form(), WM_CLOSE, 0, 0); }},
                {"another language", [] { const SpokenLanguage english(KILN_LANGUAGE_ENGLISH); }},
                {"refilling", [] { browser().delNode(nullptr); }}};
    }

    INode* nodes[2] = {};
    BrowserItem items[2] = {};
};

TEST_F(BrowserTyping, IsTakenWhateverComesNext) {
    std::vector<Leaving> all = leavings();
    all.push_back({"F5", [] { testinput::key(VK_F5); }});
    all.push_back({"F3", [] { testinput::key(VK_F3); }});
    all.push_back({"spinner", [] {
                       NMUPDOWN step{};
                       step.hdr = {control(IDC_ITEM_SPIN), IDC_ITEM_SPIN, UDN_DELTAPOS};
                       step.iDelta = 1;
                       SendMessageW(form(), WM_NOTIFY, IDC_ITEM_SPIN,
                                    reinterpret_cast<LPARAM>(&step));
                   }});
    for (const Typing& typing : typings()) {
        for (const Leaving& leaving : all) {
            SCOPED_TRACE(std::string(typing.what) + ", " + leaving.how);
            showTwo(2);
            std::vector<bool> takenInTime;
            client.onEvent = [&](const Sent& sent) {
                if (sent.event == BrowserEvent::kRebuild || sent.event == BrowserEvent::kClosed)
                    takenInTime.push_back(typing.isTaken());
            };
            typing.begin();
            EXPECT_FALSE(typing.isTaken());
            leaving.leave();
            EXPECT_TRUE(typing.isTaken());
            for (const bool inTime : takenInTime)
                EXPECT_TRUE(inTime) << "before the client is told";
            client.onEvent = nullptr;
            testinput::pump();
        }
    }
}

TEST_F(BrowserTyping, AMaskIsTakenWhateverComesNext) {
    for (const Leaving& leaving : leavings()) {
        SCOPED_TRACE(leaving.how);
        showTwo(96);
        client.onEvent = [](const Sent& sent) {
            if (sent.event == BrowserEvent::kCountSwitchChildren)
                *reinterpret_cast<std::uint32_t*>(sent.argument) = 3;
        };
        push(IDC_TOOL);
        ASSERT_TRUE(testinput::activate(switchEditor()));
        const HWND field = GetDlgItem(switchEditor(), IDC_MASK);
        SetFocus(field);
        SendMessageW(field, EM_SETSEL, 0, -1);
        testinput::type(L"01");
        leaving.leave();
        EXPECT_EQ(mask(0), 2u);
        EXPECT_NE(mask(1), 2u);
        client.onEvent = nullptr;
        testinput::pump();
    }
}

TEST_F(BrowserTyping, EscapeTakesItBackAndNeverClosesTheForm) {
    for (const Typing& typing : typings()) {
        SCOPED_TRACE(typing.what);
        showTwo(2);
        fltPutComment(nodes[0], "old");
        browser().selectNode(items[1]);
        browser().selectNode(items[0]);
        typing.begin();
        testinput::key(VK_ESCAPE);
        EXPECT_TRUE(IsWindowVisible(form()));
        EXPECT_EQ(text(control(IDC_COMMENT)), L"old");
        EXPECT_EQ(label(items[0]), L"node");
        browser().selectNode(items[1]);
        EXPECT_FALSE(typing.isTaken());
        EXPECT_EQ(comment(0), "old");
        EXPECT_EQ(priority(0), "0");
    }
    client.take();
    for (const int id : {IDC_TREE, IDC_GRID, IDC_COMMENT, IDC_REFRESH, IDC_SUBTREE}) {
        SetFocus(control(id));
        testinput::key(VK_ESCAPE);
        EXPECT_TRUE(IsWindowVisible(form())) << id << ": nothing is being typed";
    }
    EXPECT_TRUE(client.take().empty());
}

// Whether the nodes are still there nobody knows any more.
TEST_F(BrowserTyping, IsLostWhenTheSceneChanges) {
    for (const Typing& typing : typings()) {
        SCOPED_TRACE(typing.what);
        showTwo(2);
        typing.begin();
        browser().sceneChanged();
        testinput::pump();
        EXPECT_FALSE(typing.isTaken());
        browser().refresh();
        EXPECT_FALSE(typing.isTaken());
        testinput::pump();
    }
}

TEST_F(BrowserTyping, IsLostWithItsItem) {
    for (const Typing& typing : typings()) {
        SCOPED_TRACE(typing.what);
        showTwo(2);
        typing.begin();
        browser().delNode(items[0]);
        testinput::pump();
        EXPECT_FALSE(typing.isTaken());
    }
}

}  // namespace
