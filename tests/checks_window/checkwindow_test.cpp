// The window of the checks in the built plug-in, over a scene with faults.
#include "../../checks/plugin/resource.h"
#include "../support/messageboxes.h"
#include "../support/pluginwindowtest.h"

#include <quillon/fltlod.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <memory>
#include <set>

using testing::ElementsAre, testing::HasSubstr, testing::StartsWith;

namespace {

class CheckWindowTest : public PluginWindowTest {
protected:
    CheckWindowTest() : PluginWindowTest(IDC_FINDINGS) {
        // Two groups without children, and levels of detail that are reversed.
        first_ = scene_.add(scene_.database, FltGroup());
        second_ = scene_.add(scene_.database, FltGroup());
        FltLod reversed;
        reversed.switchInDistance = 100;
        reversed.switchOutDistance = 200;
        lod_ = scene_.add(scene_.database, reversed);
        scene_.addFace(scene_.add(lod_, FltObject()), square());
        core_.history().clear();
    }

    /// Presses the button of the page, and waits for the check.
    void open() {
        ASSERT_NO_FATAL_FAILURE(openBy(IDC_CHECK_SCENE));
        ASSERT_TRUE(isChecked());
    }
    bool isRunning() const { return IsWindowEnabled(control(IDC_STOP)) != FALSE; }
    /// Waits for the end of the check that is running.
    bool isChecked() const {
        return testinput::pumpUntil([&] { return !isRunning(); }, 20000);
    }

    std::string status() const { return textOf(control(IDC_STATUS)); }

    std::vector<std::string> codes() const { return column(1); }

    /// Gives a row the focus, as a click does.
    void focus(int row) const {
        RECT area{LVIR_LABEL, 0, 0, 0};
        SendMessageW(list(), LVM_GETITEMRECT, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&area));
        testinput::click(list(), {area.left + 10, (area.top + area.bottom) / 2});
    }
    /// Presses a key in the list and handles messages one by one until `condition` holds: while a
    /// check runs on a busy machine, there may always be another one.
    bool press(WORD key, const std::function<bool()>& condition) const {
        PostMessageW(list(), WM_KEYDOWN, key, 1);
        for (int i = 0; i < 1000 && !condition(); ++i) {
            MSG message;
            if (GetMessageW(&message, nullptr, 0, 0) <= 0) break;
            DispatchMessageW(&message);
        }
        return condition();
    }
    int rowOf(const std::string& code) const {
        const std::vector<std::string> all = codes();
        return static_cast<int>(std::ranges::find(all, code) - all.begin());
    }

    INode* first_;
    INode* second_;
    INode* lod_;
};

constexpr const char *kEmpty = "GROUP_EMPTY", *kReversed = "LOD_REVERSED";

TEST_F(CheckWindowTest, ListsSortsFiltersAndGroupsWhatItFinds) {
    open();
    EXPECT_THAT(codes(), ElementsAre(kReversed, kEmpty, kEmpty)) << "errors first";
    EXPECT_EQ(cell(0, 0), "Error");
    EXPECT_EQ(cell(0, 2), lod_->GetName());
    EXPECT_EQ(cell(0, 3), "the switch-in distance 100 is less than the switch-out distance 200");
    EXPECT_EQ(cell(0, 4), "on request");
    EXPECT_EQ(status(), "Errors: 1, warnings: 0, hints: 2");
    EXPECT_EQ(textOf(GetDlgItem(host_.page_, IDC_CHECK_COUNTS)), status());

    clickHeading(1);
    EXPECT_THAT(codes(), ElementsAre(kEmpty, kEmpty, kReversed)) << "by code";
    clickHeading(1);
    EXPECT_THAT(codes(), ElementsAre(kReversed, kEmpty, kEmpty)) << "the other way round";

    // As one types, in the sentences, the names of nodes and the codes.
    testinput::key('F', {VK_CONTROL});
    EXPECT_EQ(GetFocus(), control(IDC_FILTER));
    testinput::type(L"CHILDREN ");
    EXPECT_THAT(codes(), ElementsAre(kEmpty, kEmpty));
    EXPECT_THAT(status(), HasSubstr("2 of 3 shown"));
    testinput::type(base::toWide(second_->GetName()));
    EXPECT_THAT(column(2), ElementsAre(second_->GetName()));
    testinput::type(L"x");
    EXPECT_EQ(rows(), 0);
    SetWindowTextW(control(IDC_FILTER), L"");

    push(IDC_HINTS);
    EXPECT_THAT(codes(), ElementsAre(kReversed));
    push(IDC_HINTS);

    push(IDC_GROUPED);
    EXPECT_THAT(codes(), ElementsAre(kReversed, kReversed, kEmpty, kEmpty, kEmpty));
    EXPECT_EQ(cell(2, 2), "findings: 2");
    focus(3);
    testinput::key(VK_LEFT);
    EXPECT_THAT(codes(), ElementsAre(kReversed, kReversed, kEmpty)) << "folded";
    focus(2);
    testinput::key(VK_RIGHT);
    EXPECT_EQ(rows(), 5);
    push(IDC_GROUPED);

    // The list of rules names those that found something.
    EXPECT_EQ(SendMessageW(control(IDC_RULE), CB_GETCOUNT, 0, 0), 3);
    SetFocus(control(IDC_RULE));
    testinput::key(VK_DOWN);
    EXPECT_EQ(textOf(control(IDC_RULE)), "GROUP_EMPTY (2)");
    EXPECT_THAT(codes(), ElementsAre(kEmpty, kEmpty));
}

TEST_F(CheckWindowTest, GoesToTheNodeInTheHost) {
    open();
    EXPECT_EQ(GetFocus(), list());
    testinput::key(VK_DOWN);
    const int before = host_.zooms_;
    testinput::key(VK_RETURN);
    ASSERT_EQ(scene_.host.GetSelNodeCount(), 1);
    EXPECT_EQ(scene_.host.GetSelNode(0)->GetName(), cell(1, 2));
    EXPECT_EQ(host_.zooms_, before + 1);
    EXPECT_EQ(GetFocus(), list()) << "the next one is a key away";
    RECT area{LVIR_LABEL, 0, 0, 0};
    SendMessageW(list(), LVM_GETITEMRECT, 0, reinterpret_cast<LPARAM>(&area));
    testinput::click(list(), {area.left + 10, (area.top + area.bottom) / 2}, 2);
    ASSERT_EQ(scene_.host.GetSelNodeCount(), 1);
    EXPECT_EQ(scene_.host.GetSelNode(0), lod_);
    testinput::key('A', {VK_CONTROL});
    testinput::key(VK_RETURN);
    EXPECT_EQ(scene_.host.GetSelNodeCount(), 3);
}

TEST_F(CheckWindowTest, MendsAsOneStepAndFollowsUndoing) {
    open();
    const int nodes = scene_.host.GetNodeCount();
    focus(rowOf(kEmpty));
    push(IDC_MEND_ALL);
    EXPECT_EQ(scene_.host.GetNodeCount(), nodes - 2);
    EXPECT_THAT(codes(), ElementsAre(kReversed)) << "what is mended disappears at once";
    EXPECT_EQ(status(), "Mended: 2");
    ASSERT_EQ(core_.history().stepCount(), 1u);
    core_.history().undo();
    EXPECT_EQ(scene_.host.GetNodeCount(), nodes);
    EXPECT_TRUE(testinput::pumpUntil([&] { return rows() == 3; })) << "it follows the scene";

    // One of them: the next finding is the one at hand.
    ASSERT_TRUE(isChecked());
    focus(rowOf(kEmpty));
    push(IDC_MEND);
    EXPECT_EQ(scene_.host.GetNodeCount(), nodes - 1);
    EXPECT_THAT(codes(), ElementsAre(kReversed, kEmpty));
    EXPECT_EQ(SendMessageW(list(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED), 1);
}

TEST_F(CheckWindowTest, SaysWhatCannotBeMended) {
    open();
    // It is no longer empty when it is to be mended.
    scene_.add(first_, FltObject());
    push(IDC_FOLLOW);
    focus(rowOf(kEmpty));
    push(IDC_MEND_ALL);
    EXPECT_EQ(status(), "Mended: 1; could not be mended: 1");
    EXPECT_THAT(codes(), ElementsAre(kReversed, kEmpty));
}

TEST_F(CheckWindowTest, ForgetsFindingsWithTheirNodesAndChecksAgainWhenQuiet) {
    open();
    push(IDC_FOLLOW);  // off
    scene_.host.DeleteNode(first_);
    scene_.add(scene_.database, FltGroup());
    EXPECT_TRUE(testinput::pumpUntil([&] { return rows() == 2; }));
    testinput::pumpUntil([&] { return isRunning(); }, 1000);
    EXPECT_EQ(rows(), 2) << "the new one is not looked for";
    push(IDC_FOLLOW);
    EXPECT_TRUE(testinput::pumpUntil([&] { return rows() == 3; }));

    // Closed, it does not check again, and the page does not go on telling old counts.
    ASSERT_TRUE(testinput::pumpUntil([&] {
        testinput::key(VK_ESCAPE);
        return !IsWindowVisible(window());
    }));
    core_.newScene();
    EXPECT_TRUE(testinput::pumpUntil([&] {
        return rows() == 0 && textOf(GetDlgItem(host_.page_, IDC_CHECK_COUNTS)) ==
                                  "The scene has changed since the check";
    })) << textOf(GetDlgItem(host_.page_, IDC_CHECK_COUNTS));
}

TEST_F(CheckWindowTest, StaysAliveWhileItRunsAndStopsOnEscape) {
    for (int i = 0; i < 30000; ++i) scene_.addFace(scene_.object, square(10, 20.0 * i));
    open();
    SetFocus(list());
    const auto running = [&] { return isRunning(); };
    ASSERT_TRUE(press(VK_F5, running));
    // Other windows get their messages between the slices.
    int messages = 0;
    const UINT_PTR timer = SetTimer(host_.main_, 9, 10, nullptr);
    MSG message;
    while (isRunning() && GetMessageW(&message, nullptr, 0, 0) > 0) {
        messages += message.hwnd == host_.main_ && message.message == WM_TIMER;
        DispatchMessageW(&message);
    }
    KillTimer(host_.main_, timer);
    EXPECT_GE(messages, 2);

    const int before = rows();
    ASSERT_TRUE(press(VK_F5, running));
    ASSERT_TRUE(press(VK_ESCAPE, [&] { return !isRunning(); }));
    EXPECT_EQ(status(), "The check was stopped");
    EXPECT_TRUE(IsWindowVisible(window()));
    EXPECT_EQ(rows(), before) << "what was found before stays";

    // Nodes that a check stands among may go.
    ASSERT_TRUE(press(VK_F5, [&] {
        return isRunning() && SendMessageW(control(IDC_PROGRESS), PBM_GETPOS, 0, 0) > 0;
    }));
    scene_.host.DeleteNode(scene_.group);
    for (int i = 0; i < 2; ++i) scene_.add(scene_.database, FltGroup());
    EXPECT_TRUE(testinput::pumpUntil([&] { return rows() == 5 && !isRunning(); }))
        << "it begins anew, and finds the new groups";
    // The first one may still stop a check that is about to follow the last change.
    EXPECT_TRUE(testinput::pumpUntil([&] {
        testinput::key(VK_ESCAPE);
        return !IsWindowVisible(window());
    })) << "without a check it closes";
}

TEST_F(CheckWindowTest, TakesWhatAQueryFindsAsTheSelection) {
    open();
    SetFocus(control(IDC_QUERY));
    testinput::type(L"kind = group or");
    testinput::key(VK_RETURN);
    EXPECT_EQ(status(), "The query cannot be read at character 16");
    EXPECT_EQ(scene_.host.GetSelNodeCount(), 0);
    testinput::type(L" kind = lod");
    const int before = host_.zooms_;
    testinput::key(VK_RETURN);
    EXPECT_EQ(status(), "Nodes selected: 4");
    EXPECT_EQ(scene_.host.GetSelNodeCount(), 4);
    EXPECT_EQ(host_.zooms_, before + 1);
    SetWindowTextW(control(IDC_QUERY), L"nowhere");
    push(IDC_SELECT_FOUND);
    EXPECT_EQ(status(), "No node was found");
    EXPECT_EQ(scene_.host.GetSelNodeCount(), 4) << "the selection stays";
}

TEST_F(CheckWindowTest, ListsWhatAQueryFindsUntilTheFindingsComeBack) {
    open();
    const std::vector<std::string> findings = codes();
    SetWindowTextW(control(IDC_QUERY), L"kind = group or kind = lod");
    push(IDC_FIND);
    EXPECT_EQ(status(), "Nodes found: 4; F5 goes back to the findings");
    EXPECT_EQ(GetFocus(), list());
    EXPECT_THAT(codes(), ElementsAre("GROUP", "GROUP", "GROUP", "LOD"));
    EXPECT_EQ(cell(3, 2), lod_->GetName());
    EXPECT_EQ(cell(3, 3), scene_.database->GetName());
    EXPECT_FALSE(IsWindowEnabled(control(IDC_MEND)));
    EXPECT_FALSE(IsWindowEnabled(control(IDC_SAVE)));
    // They are filtered by words alone, sorted, and selected as findings are.
    push(IDC_HINTS);
    EXPECT_EQ(rows(), 4);
    push(IDC_HINTS);
    SetFocus(list());
    testinput::key(VK_END);
    testinput::key(VK_RETURN);
    EXPECT_EQ(scene_.host.GetSelNodeCount(), 1);
    EXPECT_TRUE(lod_->Selected());
    // A node that goes leaves the list; a check that begins anew meanwhile does not replace it.
    scene_.host.DeleteNode(second_);
    ASSERT_TRUE(testinput::pumpUntil([&] { return rows() == 3; }, 20000));
    testinput::pumpUntil([&] { return isRunning(); }, 1000);  // it may have ended by now
    ASSERT_TRUE(isChecked());
    EXPECT_THAT(codes(), ElementsAre("GROUP", "GROUP", "LOD"));
    SetWindowTextW(control(IDC_QUERY), L"nowhere");
    push(IDC_FIND);
    EXPECT_EQ(status(), "No node was found");
    EXPECT_EQ(rows(), 3);
    SetFocus(list());
    testinput::key(VK_F5);
    ASSERT_TRUE(isChecked());
    EXPECT_EQ(rows(), static_cast<int>(findings.size()) - 1);
    EXPECT_EQ(codes().front(), kReversed);
}

TEST_F(CheckWindowTest, OpensWhereTheUserLeftIt) {
    open();
    SetWindowPos(window(), nullptr, 30, 40, 900, 640, SWP_NOZORDER | SWP_NOACTIVATE);
    core_.closeUtility();
    DestroyWindow(window());
    testinput::pump();
    open();
    RECT place;
    GetWindowRect(window(), &place);
    EXPECT_THAT((std::array{place.left, place.top, place.right, place.bottom}),
                ElementsAre(30, 40, 930, 680));
    RECT rows;
    GetWindowRect(list(), &rows);
    EXPECT_GT(rows.bottom, place.bottom - 200) << "the controls follow";
    // A place that no screen shows is none.
    SetWindowPos(window(), nullptr, 90000, 40, 900, 640, SWP_NOZORDER | SWP_NOACTIVATE);
    core_.closeUtility();
    DestroyWindow(window());
    open();
    GetWindowRect(window(), &place);
    EXPECT_LT(place.left, 10000);
}

TEST_F(CheckWindowTest, CarriesActionsOnGeometryOut) {
    ASSERT_TRUE(core_.openUtility(kiln::classesOf(UTILITY_CLASS_ID).back()).ok());
    const auto press = [&](int id) {
        SendMessageW(GetDlgItem(host_.page_, id), BM_CLICK, 0, 0);
        return textOf(GetDlgItem(host_.page_, IDC_OUTCOME));
    };
    EXPECT_EQ(press(IDC_FLIP), "No node is selected");
    EXPECT_EQ(core_.history().stepCount(), 0u);
    scene_.host.SelectNode(scene_.database, true);
    EXPECT_EQ(press(IDC_FLIP), "Nodes changed: 2");
    EXPECT_EQ(press(IDC_NORMALS), "Nodes changed: 2");
    SetDlgItemTextW(host_.page_, IDC_NORMALS_ANGLE, L"steep");
    EXPECT_EQ(press(IDC_NORMALS), "The angle must be from 0 to 180 degrees");
    EXPECT_EQ(GetFocus(), GetDlgItem(host_.page_, IDC_NORMALS_ANGLE));
    EXPECT_EQ(press(IDC_WELD), "Nodes changed: 0");
    SetDlgItemTextW(host_.page_, IDC_WELD_DISTANCE, L"-1");
    EXPECT_EQ(press(IDC_WELD), "The distance must be a number from 0 on");
    EXPECT_EQ(press(IDC_TRIANGULATE), "Nodes changed: 2");
    EXPECT_EQ(press(IDC_DROP_DEGENERATE), "Nodes changed: 0");
    EXPECT_EQ(press(IDC_FIT_BOUNDS), "Nodes changed: 1");
    SendDlgItemMessageW(host_.page_, IDC_UNITS, CB_SETCURSEL, 2, 0);
    EXPECT_THAT(press(IDC_CHANGE_UNITS), StartsWith("Nodes changed: "));
    FltHeader header;
    ASSERT_TRUE(fltGetRecord(scene_.database, header));
    EXPECT_EQ(header.vertexCoordinateUnits, 4);
    // An action that changes nothing is no step.
    EXPECT_EQ(core_.history().stepCount(), 5u);
    EXPECT_EQ(core_.history().stepName(4), "Change Units");
}

TEST_F(CheckWindowTest, CopiesTheSelectedRows) {
    open();
    focus(0);
    testinput::key('C', {VK_CONTROL});
    ASSERT_TRUE(OpenClipboard(window()));
    const HANDLE memory = GetClipboardData(CF_UNICODETEXT);
    const std::string text =
        memory ? base::toUtf8(static_cast<const wchar_t*>(GlobalLock(memory))) : "";
    if (memory) GlobalUnlock(memory);
    CloseClipboard();
    EXPECT_EQ(text,
              std::string("Error\tLOD_REVERSED\t") + lod_->GetName() + "\t" + cell(0, 3) + "\r\n");
}

TEST_F(CheckWindowTest, IsReachableByKeyboardInBothLanguages) {
    open();
    for (const WORD language : {KILN_LANGUAGE_CHINESE, KILN_LANGUAGE_ENGLISH}) {
        kiln::Core::setLanguage(language);
        testinput::pump();
        std::set<wchar_t> keys;
        for (HWND child = GetWindow(window(), GW_CHILD); child;
             child = GetWindow(child, GW_HWNDNEXT)) {
            wchar_t text[64] = L"";
            GetWindowTextW(child, text, 64);
            const wchar_t* const mark = wcschr(text, L'&');
            if (mark) {
                EXPECT_TRUE(keys.insert(mark[1]).second) << base::toUtf8(text);
            }
        }
        EXPECT_EQ(keys.size(), 19u);
    }
    EXPECT_EQ(textOf(control(IDC_RUN)), "&Check");
    EXPECT_EQ(cell(0, 0), "Error");
    // Once around: all that is enabled.
    std::set<HWND> reached;
    SetFocus(list());
    for (int i = 0; i < 30; ++i) {
        reached.insert(GetFocus());
        testinput::key(VK_TAB);
    }
    for (const int id : {IDC_TARGET, IDC_OWN_FILE, IDC_RUN, IDC_ERRORS, IDC_RULE, IDC_FILTER,
                         IDC_FINDINGS, IDC_FOLLOW, IDC_GO_TO, IDC_MEND, IDC_SAVE})
        EXPECT_TRUE(reached.contains(control(id))) << id;
}

TEST_F(CheckWindowTest, ShowsManyFindingsAsItShowsFew) {
    constexpr int kGroups = 20000;
    for (int i = 0; i < kGroups; ++i) scene_.add(scene_.database, FltGroup());
    open();
    EXPECT_EQ(rows(), kGroups + 3);
    SetFocus(list());
    testinput::key(VK_END);
    EXPECT_EQ(cell(kGroups + 2, 1), kEmpty);
    const int before = core_.hostInterface().GetNodeCount();
    core_.history().clear();
    push(IDC_MEND_ALL);
    EXPECT_EQ(core_.hostInterface().GetNodeCount(), before - kGroups - 2);
    EXPECT_THAT(codes(), ElementsAre(kReversed));
    EXPECT_EQ(core_.history().stepCount(), 1u);
}

}  // namespace
