// commctrl.h needs windows.h before it.
#include <windows.h>

#include <commctrl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <resources/resource.h>
#include <algorithm>
#include <array>
#include <string>
#include <vector>

#include "builtfiles.h"
#include "dialog_template.h"

namespace {

using Control = DialogTemplate::Control;

constexpr int kDialogs[] = {IDD_HIERARCHY, IDD_PANEL, IDD_SWITCH, IDD_ABOUT};

DialogTemplate dialog(int id, WORD language = kChinese) {
    return parseDialog(resourceBytes(RT_DIALOG, MAKEINTRESOURCEW(id), language));
}

bool isGroupBox(const Control& control) {
    return lstrcmpiA(control.className.c_str(), "Button") == 0 &&
           (control.style & BS_TYPEMASK) == BS_GROUPBOX;
}

struct Expected {
    int id;
    const char* className;
    const char* caption;
};

void expectControls(const DialogTemplate& actual, std::span<const Expected> expected) {
    for (const Expected& wanted : expected) {
        const auto& [id, className, caption] = wanted;
        SCOPED_TRACE(id);
        const auto found = std::find_if(
            actual.controls.begin(), actual.controls.end(), [&wanted](const Control& control) {
                return control.id == wanted.id && control.caption == wanted.caption;
            });
        ASSERT_NE(found, actual.controls.end()) << caption;
        // The resource compiler writes capitals; the system does not tell them apart.
        EXPECT_STRCASEEQ(found->className.c_str(), className);
    }
}

TEST(Dialogs, BrowserFormHasItsControls) {
    constexpr Expected kExpected[] = {
        {1120, "Button", "刷新"},
        {1018, "Button", "Up"},
        {1017, "Button", "Down"},
        {1123, "Button", "Expand"},
        {1124, "Button", "Collapse"},
        {1119, "Button", "SelectGet"},
        {1015, "Button", "SelectSet"},
        {1010, "Button", "Find"},
        {1118, "Button", "Tool"},
        {1096, "Button", "全局"},
        {1135, "Button", "子树"},
        {1100, "Button", "创建"},
        {1101, "ComboBox", ""},
        {1011, "SysTreeView32", "Tree2"},
        {1093, "Edit", ""},
        {1095, "msctls_updown32", "Spin1"},
        {1104, "Edit", ""},
        {1012, "MFCGridCtrl", "Custom3"},
        {1132, "Button", "层次"},
        {1133, "Button", "节点属性"},
        {-1, "Static", "名称"},
        {-1, "Static", "注释"},
        {1129, "Static", ""},
        {1130, "Static", ""},
        {1131, "Static", ""},
        {1134, "Static", ""},
    };
    const DialogTemplate form = dialog(IDD_HIERARCHY);
    expectControls(form, kExpected);
    EXPECT_EQ(form.controls.size(), std::size(kExpected));
    EXPECT_EQ(form.width, 423);
    EXPECT_EQ(form.height, 281);
    constexpr DWORD kWanted =
        WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_MINIMIZEBOX | WS_MAXIMIZEBOX;
    EXPECT_EQ(form.style & (kWanted | WS_VISIBLE), kWanted);

    for (const int id : {1018, 1017, 1123, 1124, 1119, 1015, 1010, 1118}) {
        EXPECT_EQ(form.control(id).style & BS_TYPEMASK, DWORD{BS_OWNERDRAW}) << id;
        EXPECT_EQ((form.control(id).style & WS_DISABLED) != 0, id == 1118) << id;
    }
    for (const int id : {1096, 1135}) {
        EXPECT_EQ(form.control(id).style & BS_TYPEMASK, DWORD{BS_AUTOCHECKBOX}) << id;
    }
    for (const int id : {1129, 1130, 1131, 1134}) {
        EXPECT_EQ(form.control(id).style & SS_TYPEMASK, DWORD{SS_ETCHEDVERT}) << id;
    }
    // Sorting the kinds would create something else than what the user picks.
    EXPECT_EQ(form.control(1101).style & (CBS_SORT | 3), DWORD{CBS_DROPDOWNLIST});
    EXPECT_TRUE(form.control(1011).style & TVS_EDITLABELS);
    EXPECT_TRUE(form.control(1104).style & ES_MULTILINE);
}

// The form lays its children out anew on a resize by moving right and lower edges only. So nothing
// may stand below what grows in height, nor right of what grows in width.
class DialogsIn : public testing::TestWithParam<WORD> {};

TEST_P(DialogsIn, TheLanguageLeaveTheBrowserFormRoomToGrow) {
    const DialogTemplate form = dialog(IDD_HIERARCHY, GetParam());
    const Control& tree = form.control(IDC_TREE);
    const Control& treeFrame = form.control(IDC_TREE_GROUP);
    const Control& grid = form.control(IDC_GRID);
    const Control& gridFrame = form.control(IDC_PROPERTY_GROUP);
    for (const Control& control : form.controls) {
        SCOPED_TRACE(control.caption + " " + std::to_string(control.id));
        const int bottom = control.y + control.height;
        if (control.id == IDC_CREATE_KIND) continue;  // its height is that of the open list
        EXPECT_LE(bottom, treeFrame.y + treeFrame.height);
        if (control.y + control.height > grid.y) {
            EXPECT_THAT(control.id,
                        testing::AnyOf(IDC_TREE, IDC_TREE_GROUP, IDC_GRID, IDC_PROPERTY_GROUP));
        }
        if (control.y >= gridFrame.y && control.x >= gridFrame.x) {
            EXPECT_LE(control.x + control.width, gridFrame.x + gridFrame.width);
        }
    }
    EXPECT_EQ(treeFrame.y + treeFrame.height, gridFrame.y + gridFrame.height);
    EXPECT_EQ(tree.y + tree.height, grid.y + grid.height);
    EXPECT_LT(treeFrame.x + treeFrame.width, gridFrame.x);
}

TEST(Dialogs, UtilityPanelIsLaidOutAsTheHostExpects) {
    const struct {
        Expected control;
        int x, y, width, height;
    } kExpected[] = {
        {{1003, "Button", "修改层次/属性"}, 4, 6, 100, 14},
        {{-1, "Button", "细节级别"}, 4, 28, 100, 88},
        {{1004, "Button", "更详细的细节"}, 8, 40, 92, 14},
        {{1006, "Button", "最大细节"}, 8, 59, 92, 14},
        {{1005, "Button", "更少的细节"}, 8, 78, 92, 14},
        {{1007, "Button", "最小细节"}, 8, 97, 92, 14},
        {{-1, "Static", "Aviary"}, 9, 130, 92, 8},
        {{1, "Button", "关闭"}, 29, 170, 46, 13},
        {{1136, "Button", "关于"}, 79, 170, 25, 13},
    };
    const DialogTemplate panel = dialog(IDD_PANEL);
    EXPECT_EQ(panel.width, 108);
    EXPECT_EQ(panel.height, 194);
    EXPECT_TRUE(panel.style & WS_CHILD);
    for (const auto& expected : kExpected) {
        expectControls(panel, {&expected.control, 1});
        const auto found = std::find_if(
            panel.controls.begin(), panel.controls.end(),
            [&](const Control& control) { return control.caption == expected.control.caption; });
        ASSERT_NE(found, panel.controls.end());
        EXPECT_THAT((std::array{found->x, found->y, found->width, found->height}),
                    testing::ElementsAre(expected.x, expected.y, expected.width, expected.height))
            << expected.control.caption;
    }
    constexpr std::size_t kCreditLines = 2;
    EXPECT_EQ(panel.controls.size(), std::size(kExpected) + kCreditLines);
}

TEST(Dialogs, SwitchEditorHasItsControls) {
    constexpr Expected kExpected[] = {
        {1108, "Edit", ""},       {-1, "Static", "遮罩\n索引"},
        {1106, "Edit", ""},       {1107, "msctls_updown32", "Spin1"},
        {1112, "Button", "新建"}, {1113, "Button", "删除"},
        {1115, "Button", "设置"}, {1114, "Button", "清除"},
        {1116, "Button", "反转"}, {1134, "Button", "在视口中显示遮罩"},
    };
    const DialogTemplate editor = dialog(IDD_SWITCH);
    expectControls(editor, kExpected);
    EXPECT_EQ(editor.controls.size(), std::size(kExpected));
    EXPECT_EQ(editor.caption, "切换属性");
    EXPECT_EQ(editor.width, 195);
    EXPECT_EQ(editor.height, 73);
    constexpr DWORD kNumberOnly = ES_READONLY | ES_NUMBER;
    EXPECT_EQ(editor.control(1106).style & kNumberOnly, kNumberOnly);
    // The spinner steps through masks; it must not write a number of its own.
    EXPECT_FALSE(editor.control(1107).style & UDS_SETBUDDYINT);
}

TEST(Dialogs, AboutBoxNamesTheVersion) {
    constexpr Expected kExpected[] = {{IDC_ABOUT_PICTURE, "Button", "About"},
                                      {IDC_ABOUT_VERSION, "Static", "版本 2.0"},
                                      {IDC_ABOUT_BUILD, "Static", "Build 2. 0. 0. 2"},
                                      {IDOK, "Button", "确定"}};
    expectControls(dialog(IDD_ABOUT), kExpected);
}

// Who fills or finds controls does so by number and place among them, whatever the language.
TEST(Dialogs, HaveTheSameControlsInBothLanguages) {
    for (const int id : kDialogs) {
        SCOPED_TRACE(id);
        const DialogTemplate chinese = dialog(id, kChinese);
        const DialogTemplate english = dialog(id, kEnglish);
        EXPECT_EQ(english.style, chinese.style);
        ASSERT_EQ(english.controls.size(), chinese.controls.size());
        for (std::size_t i = 0; i < chinese.controls.size(); ++i) {
            SCOPED_TRACE(i);
            EXPECT_EQ(english.controls[i].id, chinese.controls[i].id);
            EXPECT_EQ(english.controls[i].className, chinese.controls[i].className);
            EXPECT_EQ(english.controls[i].style, chinese.controls[i].style);
        }
    }
}

TEST_P(DialogsIn, TheLanguageKeepTheirControlsInsideAndApart) {
    for (const int id : kDialogs) {
        SCOPED_TRACE(id);
        const DialogTemplate shown = dialog(id, GetParam());
        EXPECT_EQ(shown.font, "Tahoma");
        EXPECT_EQ(shown.pointSize, 8);
        std::vector<Control> controls;
        for (Control control : shown.controls) {
            constexpr int kClosedListHeight = 14;
            if (control.id == IDC_CREATE_KIND) control.height = kClosedListHeight;
            EXPECT_GE(std::min(control.x, control.y), 4) << control.caption;
            EXPECT_LE(control.x + control.width, shown.width - 4) << control.caption;
            EXPECT_LE(control.y + control.height, shown.height - 4) << control.caption;
            if (!isGroupBox(control)) controls.push_back(control);
        }
        for (std::size_t i = 0; i < controls.size(); ++i) {
            for (std::size_t j = i + 1; j < controls.size(); ++j) {
                const Control& a = controls[i];
                const Control& b = controls[j];
                const bool apart = a.x + a.width <= b.x || b.x + b.width <= a.x ||
                                   a.y + a.height <= b.y || b.y + b.height <= a.y;
                EXPECT_TRUE(apart)
                    << a.id << " '" << a.caption << "' and " << b.id << " '" << b.caption << "'";
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Both, DialogsIn, testing::Values(kChinese, kEnglish),
                         [](const auto& instance) {
                             return instance.param == kChinese ? "Chinese" : "English";
                         });

}  // namespace
