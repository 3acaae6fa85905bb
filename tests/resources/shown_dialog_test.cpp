// Real windows, in both languages and at each display scaling: the templates must be ones that the
// system accepts, and their texts must have room in the font that it picks for Tahoma.
#include <windows.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <base/utf16.h>
#include <grid/cgridctrl.h>
#include <resources/resource.h>
#include <cwctype>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "../../workbench/src/app/commands.h"
#include "builtfiles.h"
#include "dialog_template.h"

namespace {

constexpr int kScalings[] = {100, 125, 150, 200};
constexpr WORD kLanguages[] = {kChinese, kEnglish};

std::wstring classOf(HWND window) {
    wchar_t name[32];
    GetClassNameW(window, name, 32);
    return name;
}

bool isClass(HWND window, const wchar_t* name) {
    return lstrcmpiW(classOf(window).c_str(), name) == 0;
}

LONG_PTR buttonType(HWND window) {
    return isClass(window, L"Button") ? GetWindowLongPtrW(window, GWL_STYLE) & BS_TYPEMASK : -1;
}

RECT placeOf(HWND control) {
    RECT place;
    GetWindowRect(control, &place);
    MapWindowPoints(nullptr, GetParent(control), reinterpret_cast<POINT*>(&place), 2);
    return place;
}

class Dialog {
public:
    Dialog(HMODULE file, int id, WORD language, int percent) : percent_(percent) {
        const INITCOMMONCONTROLSEX classes{
            sizeof classes, ICC_TREEVIEW_CLASSES | ICC_UPDOWN_CLASS | ICC_PROGRESS_CLASS};
        InitCommonControlsEx(&classes);
        for (const wchar_t* const name : {L"MFCGridCtrl", L"FltSwatches"}) {
            WNDCLASSW own{};
            own.style = CS_GLOBALCLASS;  // the dialog belongs to another module
            own.lpfnWndProc = DefWindowProcW;
            own.hInstance = GetModuleHandleW(nullptr);
            own.lpszClassName = name;
            RegisterClassW(&own);
        }
        owner_ = CreateWindowW(L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 400, 400, nullptr,
                               nullptr, nullptr, nullptr);
        const auto bytes =
            scaledDialog(resourceBytes(file, RT_DIALOG, MAKEINTRESOURCEW(id), language), percent);
        window_ = CreateDialogIndirectParamW(
            file, reinterpret_cast<const DLGTEMPLATE*>(bytes.data()), owner_,
            [](HWND, UINT, WPARAM, LPARAM) -> INT_PTR { return FALSE; }, 0);
        if (window_ == nullptr) throw std::runtime_error("the system takes no such dialog");
        for (HWND child = GetWindow(window_, GW_CHILD); child != nullptr;
             child = GetWindow(child, GW_HWNDNEXT))
            controls_.push_back(child);
        dc_ = GetDC(window_);
        SelectObject(dc_, font());
    }
    ~Dialog() {
        ReleaseDC(window_, dc_);
        DestroyWindow(window_);
        DestroyWindow(owner_);
    }
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;

    HWND window() const { return window_; }
    const std::vector<HWND>& controls() const { return controls_; }
    HFONT font() const { return reinterpret_cast<HFONT>(SendMessageW(window_, WM_GETFONT, 0, 0)); }
    // Pixels for those at 100 %: what the system draws beside a text grows with the scaling.
    int scaled(int pixels) const { return pixels * percent_ / 100; }

    SIZE extent(const std::wstring& text) const { return extent(text, 0, 0); }
    /// In lines that are broken at `width`.
    SIZE brokenExtent(const std::wstring& text, LONG width) const {
        return extent(text, width, DT_WORDBREAK);
    }

private:
    SIZE extent(const std::wstring& text, LONG width, UINT flags) const {
        RECT needed{0, 0, width, 0};
        DrawTextW(dc_, text.data(), static_cast<int>(text.size()), &needed, DT_CALCRECT | flags);
        return {needed.right, needed.bottom};
    }

    int percent_;
    HWND owner_;
    HWND window_;
    HDC dc_;
    std::vector<HWND> controls_;
};

// The text of a button or label; empty for what shows none.
std::wstring labelOf(HWND control) {
    const LONG_PTR type = buttonType(control);
    if (type < 0 ? !isClass(control, L"Static") : type == BS_OWNERDRAW) return {};
    wchar_t text[128];
    return {text, static_cast<std::size_t>(GetWindowTextW(control, text, 128))};
}

// The pixels at 100 % that a control needs beside its text: a check box the mark before it, a push
// button its border round it, a frame the corners of its line.
int besideText(HWND control) {
    switch (buttonType(control)) {
        case -1:
            return 0;
        case BS_AUTOCHECKBOX:
            return 18;
        case BS_GROUPBOX:
            return 16;
        default:
            return 8;
    }
}

struct BuiltDialog {
    std::string name;
    HMODULE (*file)();
    int id;
};

/// Whatever there is, so that a new one is looked at too.
std::vector<BuiltDialog> allDialogs() {
    constexpr struct {
        const char* name;
        HMODULE (*file)();
    } kFiles[] = {{"Module", moduleFile},
                  {"Checks", checksFile},
                  {"Palettes", palettesFile},
                  {"Workbench", workbenchFile}};
    std::vector<BuiltDialog> dialogs;
    for (const auto& built : kFiles)
        for (const std::string& id : resourceNames(built.file(), RT_DIALOG))
            dialogs.push_back({built.name + id.substr(1), built.file, std::stoi(id.substr(1))});
    return dialogs;
}

class ShownDialog : public testing::TestWithParam<std::tuple<BuiltDialog, WORD, int>> {
protected:
    Dialog dialog{std::get<0>(GetParam()).file(), std::get<0>(GetParam()).id,
                  std::get<1>(GetParam()), std::get<2>(GetParam())};
};

TEST_P(ShownDialog, HasRoomForItsTexts) {
    int checked = 0;
    for (const HWND control : dialog.controls()) {
        const std::wstring text = labelOf(control);
        if (text.empty()) continue;
        ++checked;
        RECT room;
        GetClientRect(control, &room);
        SIZE needed = dialog.extent(text);
        const bool hasLines = isClass(control, L"Static") && room.bottom >= 2 * needed.cy;
        if (hasLines) needed = dialog.brokenExtent(text, room.right);
        EXPECT_LE(needed.cx + dialog.scaled(besideText(control)), room.right) << utf8(text);
        EXPECT_LE(needed.cy, room.bottom + 1) << utf8(text);
    }
    EXPECT_GT(checked, 0);
}

TEST_P(ShownDialog, KeepsItsControlsApart) {
    ShowWindow(dialog.window(), SW_SHOWNA);
    const std::vector<HWND>& controls = dialog.controls();
    for (std::size_t i = 0; i < controls.size(); ++i) {
        if (buttonType(controls[i]) == BS_GROUPBOX) continue;
        for (std::size_t j = i + 1; j < controls.size(); ++j) {
            if (buttonType(controls[j]) == BS_GROUPBOX) continue;
            // Of controls in one place, one is shown.
            if (!IsWindowVisible(controls[i]) || !IsWindowVisible(controls[j])) continue;
            const RECT a = placeOf(controls[i]);
            const RECT b = placeOf(controls[j]);
            RECT both;
            EXPECT_FALSE(IntersectRect(&both, &a, &b))
                << GetDlgCtrlID(controls[i]) << " and " << GetDlgCtrlID(controls[j]) << " share "
                << both.right - both.left << " x " << both.bottom - both.top;
        }
    }
}

// The key that an ampersand marks, as a small letter; 0 without one.
wchar_t keyIn(const std::wstring& text) {
    const std::size_t mark = text.find(L'&');
    return mark != text.npos && mark + 1 < text.size()
               ? static_cast<wchar_t>(std::towlower(text[mark + 1]))
               : L'\0';
}

// Enter and Esc are the keys of the usual buttons. The module's own dialogs have the texts that
// their users know.
TEST_P(ShownDialog, HasAKeyForEachControlWithALabel) {
    if (std::get<0>(GetParam()).file == moduleFile) GTEST_SKIP();
    std::set<wchar_t> keys;
    HWND before = nullptr;
    for (const HWND control : dialog.controls()) {
        const HWND label = std::exchange(before, control);
        const std::wstring text = labelOf(control);
        const LONG_PTR type = buttonType(control);
        const int id = GetDlgCtrlID(control);
        if (keyIn(text) != 0) {
            EXPECT_TRUE(keys.insert(keyIn(text)).second) << utf8(text);
        }
        if (type >= 0 && type != BS_GROUPBOX && !text.empty() && id != IDOK && id != IDCANCEL) {
            EXPECT_NE(keyIn(text), 0) << utf8(text);
        }
        const bool isField = isClass(control, L"Edit") || isClass(control, L"ComboBox") ||
                             isClass(control, L"ListBox");
        if (isField && label && isClass(label, L"Static") && !labelOf(label).empty()) {
            EXPECT_NE(keyIn(labelOf(label)), 0) << utf8(labelOf(label));
        }
    }
}

// Tab reaches every control that takes input and comes back to where it began.
TEST_P(ShownDialog, TabReachesEveryControl) {
    std::vector<HWND> wanted;
    for (const HWND child : dialog.controls()) {
        const bool passive = isClass(child, L"Static") || isClass(child, UPDOWN_CLASSW) ||
                             isClass(child, PROGRESS_CLASSW) || buttonType(child) == BS_GROUPBOX ||
                             GetDlgCtrlID(child) == IDC_ABOUT_PICTURE;
        if (passive) continue;
        EnableWindow(child, TRUE);
        ShowWindow(child, SW_SHOWNA);
        wanted.push_back(child);
    }
    ShowWindow(dialog.window(), SW_SHOWNA);

    std::vector<HWND> reached;
    HWND at = nullptr;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        at = GetNextDlgTabItem(dialog.window(), at, FALSE);
        reached.push_back(at);
    }
    EXPECT_EQ(reached, wanted);
}

std::string nameOf(WORD language, int percent) {
    return (language == kChinese ? "Chinese" : "English") + std::to_string(percent);
}

INSTANTIATE_TEST_SUITE_P(All, ShownDialog,
                         testing::Combine(testing::ValuesIn(allDialogs()),
                                          testing::ValuesIn(kLanguages),
                                          testing::ValuesIn(kScalings)),
                         [](const auto& instance) {
                             return std::get<0>(instance.param).name +
                                    nameOf(std::get<1>(instance.param),
                                           std::get<2>(instance.param));
                         });

// What the form fills in itself.
class ShownForm : public testing::TestWithParam<std::tuple<WORD, int>> {
protected:
    WORD language() const { return std::get<0>(GetParam()); }

    Dialog dialog{moduleFile(), IDD_HIERARCHY, std::get<0>(GetParam()), std::get<1>(GetParam())};
};

TEST_P(ShownForm, HasRoomForTheKindsThatCanBeCreated) {
    const RECT list = placeOf(GetDlgItem(dialog.window(), IDC_CREATE_KIND));
    constexpr int kArrowAndBorder = 17 + 8;
    for (unsigned id = IDS_KIND_GROUP; id <= IDS_KIND_LIGHT_POINT; ++id) {
        const std::string name = stringResource(moduleFile(), id, language());
        EXPECT_LE(dialog.extent(base::toWide(name)).cx + dialog.scaled(kArrowAndBorder),
                  list.right - list.left)
            << name;
    }
}

// A grid as large as the form's, with columns as the form sizes them, and all captions in it.
TEST_P(ShownForm, HasRoomForEveryCaptionInItsGrid) {
    RECT area;
    GetClientRect(GetDlgItem(dialog.window(), IDC_GRID), &area);
    // At another scaling, the scroll bar is wider than here.
    const int scrollBar = GetSystemMetrics(SM_CXVSCROLL);
    area.right -= dialog.scaled(scrollBar) - scrollBar;
    grid::CGridCtrl grid;
    ASSERT_TRUE(grid.Create(area, dialog.window(), 1));
    SendMessageW(grid.Handle(), WM_SETFONT, reinterpret_cast<WPARAM>(dialog.font()), FALSE);
    const auto text = [this](unsigned id) { return stringResource(moduleFile(), id, language()); };
    grid.SetRowCount(1);
    grid.SetColumnCount(2);
    grid.SetCellText(0, 0, text(IDS_GRID_ATTRIBUTE));
    grid.SetCellText(0, 1, text(IDS_GRID_VALUE));
    grid.AutoSizeColumns();
    grid.SetColumnWidth(0, grid.ColumnWidth(0) * 3 / 2);
    grid.ExpandColumnsToFit();
    constexpr unsigned kFirstCaption = 101, kLastCaption = 411;
    grid.SetRowCount(static_cast<int>(kLastCaption - kFirstCaption) + 2);
    const int room = grid.ColumnWidth(0);
    for (unsigned id = kFirstCaption; id <= kLastCaption; ++id) {
        const std::string caption = stringResource(captionFile(), id, language());
        grid.SetCellText(1, 0, caption);
        grid.AutoSizeColumn(0);
        EXPECT_LE(grid.ColumnWidth(0), room) << caption;
    }
}

INSTANTIATE_TEST_SUITE_P(
    All, ShownForm, testing::Combine(testing::ValuesIn(kLanguages), testing::ValuesIn(kScalings)),
    [](const auto& instance) {
        return nameOf(std::get<0>(instance.param), std::get<1>(instance.param));
    });

}  // namespace
