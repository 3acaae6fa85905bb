// The form when the host's language changes while it is open.
#include "../support/spokenlanguage.h"
#include "browserfixture.h"

#include <quillon/fltopcode.h>
#include <quillon/fltswitch.h>

#include <algorithm>

namespace {

/// What a user sees of a window and its controls, in their order: labels and places.
struct Look {
    std::vector<std::wstring> labels;
    std::vector<std::array<LONG, 4>> places;

    friend bool operator==(const Look&, const Look&) = default;
};

class BrowserLanguage : public BrowserTest {
protected:
    void SetUp() override {
        open();
        root = add(nullptr, "root", 0);
        group = add(root, "group", kFltGroup);
        lod = add(group, "lod", kFltLod);
        TreeView_Expand(tree(), root, TVE_EXPAND);
        TreeView_Expand(tree(), group, TVE_EXPAND);
        browser().setTitle("terrain");
        select({lod});
    }

    static bool isLabel(HWND control) {
        wchar_t kind[32];
        GetClassNameW(control, kind, 32);
        return lstrcmpiW(kind, L"Static") == 0 || lstrcmpiW(kind, L"Button") == 0;
    }

    static Look lookOf(HWND window) {
        RECT area;
        GetClientRect(window, &area);
        Look look{{text(window)}, {{area.right, area.bottom, 0, 0}}};
        for (HWND at = GetWindow(window, GW_CHILD); at; at = GetWindow(at, GW_HWNDNEXT)) {
            RECT place;
            GetWindowRect(at, &place);
            MapWindowPoints(nullptr, window, reinterpret_cast<POINT*>(&place), 2);
            look.places.push_back({place.left, place.top, place.right, place.bottom});
            if (isLabel(at)) look.labels.push_back(text(at));
        }
        return look;
    }

    static std::vector<std::wstring> kinds() {
        std::vector<std::wstring> all;
        const HWND list = control(IDC_CREATE_KIND);
        for (int i = 0; i < ComboBox_GetCount(list); ++i) {
            wchar_t name[64];
            ComboBox_GetLBText(list, i, name);
            all.emplace_back(name);
        }
        return all;
    }

    static std::wstring aboutCommand() {
        wchar_t entry[64] = L"";
        GetMenuStringW(GetSystemMenu(form(), FALSE), IDM_ABOUT, entry, 64, MF_BYCOMMAND);
        return entry;
    }

    /// The picture of the grid.
    static std::vector<std::uint32_t> gridPicture() {
        RECT area;
        GetClientRect(grid(), &area);
        BITMAPINFO info{};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = area.right;
        info.bmiHeader.biHeight = area.bottom;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        void* bits = nullptr;
        const HDC dc = CreateCompatibleDC(nullptr);
        const HBITMAP bitmap = CreateDIBSection(dc, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
        const HGDIOBJ before = SelectObject(dc, bitmap);
        SendMessageW(grid(), WM_PRINTCLIENT, reinterpret_cast<WPARAM>(dc), PRF_CLIENT);
        GdiFlush();
        const auto* const pixels = static_cast<const std::uint32_t*>(bits);
        std::vector<std::uint32_t> picture(pixels, pixels + area.right * area.bottom);
        SelectObject(dc, before);
        DeleteObject(bitmap);
        DeleteDC(dc);
        return picture;
    }

    BrowserItem root = nullptr, group = nullptr, lod = nullptr;
};

TEST_F(BrowserLanguage, IsThatOfAFormOpenedAnewInAllItsParts) {
    const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
    const Look before = lookOf(form());
    const auto pictureBefore = gridPicture();
    const auto kindsBefore = kinds();
    ComboBox_SetCurSel(control(IDC_CREATE_KIND), 3);
    Look followed;
    std::vector<std::wstring> kindsFollowed;
    {
        const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
        followed = lookOf(form());
        kindsFollowed = kinds();
        EXPECT_EQ(followed.labels.front(), L"Aviary Hierarchy (terrain)");
        EXPECT_EQ(text(control(IDC_NAME)), L"Level of Detail:lod");
        EXPECT_EQ(kindsFollowed.at(2), L"Level of Detail");
        EXPECT_EQ(ComboBox_GetCurSel(control(IDC_CREATE_KIND)), 3);
        EXPECT_EQ(aboutCommand(), L"&About Tessera...");
        EXPECT_NE(gridPicture(), pictureBefore);
    }
    EXPECT_EQ(lookOf(form()), before);
    EXPECT_EQ(kinds(), kindsBefore);
    EXPECT_EQ(gridPicture(), pictureBefore);
    EXPECT_EQ(aboutCommand(), L"关于 Tessera(&A)...");

    browser().destroy();
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    open();
    EXPECT_EQ(lookOf(form()), followed);
    EXPECT_EQ(kinds(), kindsFollowed);
}

TEST_F(BrowserLanguage, LeavesTheTreeTheSizeAndWhatWasChosen) {
    const HWND formBefore = form();
    const RECT windowBefore = [] {
        RECT area;
        GetWindowRect(form(), &area);
        return area;
    }();
    SetWindowPos(form(), nullptr, 0, 0, windowBefore.right - windowBefore.left + 60,
                 windowBefore.bottom - windowBefore.top + 40, SWP_NOMOVE | SWP_NOZORDER);
    const Look grown = lookOf(form());
    check(IDC_GLOBAL, true);
    SetFocus(grid());
    select({group, lod});
    SetFocus(control(IDC_COMMENT));
    client.take();
    {
        const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
        EXPECT_EQ(form(), formBefore);
        EXPECT_TRUE(isSelected(group) && isSelected(lod) && isExpanded(root) && isExpanded(group));
        EXPECT_EQ(IsDlgButtonChecked(form(), IDC_GLOBAL), UINT{BST_CHECKED});
        EXPECT_EQ(GetFocus(), control(IDC_COMMENT));
        EXPECT_TRUE(client.take().empty()) << "the scene has not changed";
        RECT frame, area;
        GetWindowRect(control(IDC_PROPERTY_GROUP), &frame);
        GetClientRect(form(), &area);
        MapWindowPoints(nullptr, form(), reinterpret_cast<POINT*>(&frame), 2);
        EXPECT_LT(frame.right, area.right);
        EXPECT_GT(frame.right, area.right - 20) << "the grid takes what the form has grown";
    }
    EXPECT_EQ(lookOf(form()), grown);
}

TEST_F(BrowserLanguage, IsThatOfTheSwitchEditorToo) {
    INode* const node = BrowserTest::node(kFltSwitch);
    ASSERT_TRUE(fltPutRecord(node, FltSwitch()));
    const BrowserItem item = add(root, "switch", node);
    client.onEvent = [](const Sent& sent) {
        if (sent.event == BrowserEvent::kCountSwitchChildren)
            *reinterpret_cast<std::uint32_t*>(sent.argument) = 3;
    };
    browser().selectNode(item);
    push(IDC_TOOL);
    ASSERT_TRUE(switchEditor());
    const Look before = lookOf(switchEditor());
    const std::wstring mask = text(GetDlgItem(switchEditor(), IDC_MASK));
    {
        const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
        EXPECT_EQ(text(switchEditor()), L"Switch Attributes");
        EXPECT_EQ(text(GetDlgItem(switchEditor(), IDC_MASK_INVERT)), L"Invert");
        EXPECT_EQ(text(GetDlgItem(switchEditor(), IDC_MASK)), mask);
        for (const std::wstring& label : lookOf(switchEditor()).labels)
            EXPECT_TRUE(std::ranges::all_of(label, [](wchar_t c) { return c < 0x80; }));
    }
    EXPECT_EQ(lookOf(switchEditor()), before);
}

// Nobody tells a closed form of changes, so its nodes may have gone.
TEST_F(BrowserLanguage, OfAClosedFormIsFoundWhenItIsShown) {
    SendMessageW(form(), WM_CLOSE, 0, 0);
    GetCOREInterface()->DeleteNode(reinterpret_cast<INode*>(browser().nodeOf(lod)));
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    browser().show(1);
    EXPECT_EQ(text(form()), L"Aviary Hierarchy (terrain)");
    EXPECT_EQ(text(control(IDC_REFRESH)), L"Refresh");
    EXPECT_EQ(text(control(IDC_NAME)), L"");
}

}  // namespace
