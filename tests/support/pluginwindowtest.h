// What tests of a plug-in's window have in common: a host with one page, and the window.
// MODULE_FILE names the plug-in, which is loaded as a host loads it.
#pragma once

#include "../checks/checkscene.h"
#include "spokenlanguage.h"

#include <base/utf16.h>
#include <framework/win32.h>
#include <input.h>
#include <kiln/host/host.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

/// A host window with one rollup page, which counts how often the view was to follow.
class PageHost : public kiln::HostWindow {
public:
    PageHost()
        : main_(CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 50, 50,
                                300, 300, nullptr, nullptr, GetModuleHandleW(nullptr), nullptr)) {}
    ~PageHost() override { DestroyWindow(main_); }

    HWND mainWindow() override { return main_; }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char*, LPARAM param,
                       DWORD, int) override {
        return page_ =
                   CreateDialogParamW(module, MAKEINTRESOURCEW(dialogId), main_, procedure, param);
    }
    void deleteRollupPage(HWND page) override {
        DestroyWindow(page);
        page_ = nullptr;
    }
    void zoomToSelection() override { ++zooms_; }

    HWND main_;
    HWND page_ = nullptr;
    int zooms_ = 0;
};

/// Over a small database, in English. The window is known by its list of that number.
class PluginWindowTest : public testing::Test {
protected:
    explicit PluginWindowTest(int list) : list_(list) {
        static const kiln::Status loaded = kiln::loadModule(modulePath());
        EXPECT_TRUE(loaded.ok()) << loaded.message();
        core_.setHostWindow(&host_);
    }
    ~PluginWindowTest() override {
        core_.closeUtility();
        core_.setHostWindow(nullptr);
        DestroyWindow(window());
        testinput::pump();
    }

    /// Presses the button of the page that opens the window.
    void openBy(int button) { openBy(button, list_); }
    /// The same of another window, which has that control.
    void openBy(int button, int control) {
        ASSERT_TRUE(core_.openUtility(kiln::classesOf(UTILITY_CLASS_ID).front()).ok());
        SendMessageW(host_.page_, WM_COMMAND, static_cast<WPARAM>(button), 0);
        ASSERT_NE(windowWith(control), nullptr);
        ASSERT_TRUE(testinput::activate(windowWith(control)));
    }

    HWND window() const { return windowWith(list_); }
    static HWND windowWith(int control) {
        Sought sought{control, nullptr};
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND candidate, LPARAM param) {
                auto& wanted = *reinterpret_cast<Sought*>(param);
                if (!GetDlgItem(candidate, wanted.control)) return TRUE;
                wanted.window = candidate;
                return FALSE;
            },
            reinterpret_cast<LPARAM>(&sought));
        return sought.window;
    }
    HWND control(int id) const { return GetDlgItem(window(), id); }
    HWND list() const { return control(list_); }
    static std::string textOf(HWND window) {
        wchar_t text[256] = L"";
        GetWindowTextW(window, text, 256);
        return base::toUtf8(text);
    }
    void push(int id) const {
        SendMessageW(control(id), BM_CLICK, 0, 0);
        testinput::pump();
    }

    int rows() const { return static_cast<int>(SendMessageW(list(), LVM_GETITEMCOUNT, 0, 0)); }
    std::string cell(int row, int column) const {
        wchar_t text[256] = L"";
        LVITEMW item{};
        item.iSubItem = column;
        item.pszText = text;
        item.cchTextMax = 256;
        SendMessageW(list(), LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                     reinterpret_cast<LPARAM>(&item));
        return base::toUtf8(text);
    }
    std::vector<std::string> column(int number) const {
        std::vector<std::string> cells;
        cells.reserve(static_cast<std::size_t>(rows()));
        for (int row = 0; row < rows(); ++row) cells.push_back(cell(row, number));
        return cells;
    }
    /// Clicks the heading of a column.
    void clickHeading(int number) const {
        const HWND header = reinterpret_cast<HWND>(SendMessageW(list(), LVM_GETHEADER, 0, 0));
        RECT name{};
        SendMessageW(header, HDM_GETITEMRECT, static_cast<WPARAM>(number),
                     reinterpret_cast<LPARAM>(&name));
        testinput::click(header, {name.left + 20, 5});
    }

    const SpokenLanguage english_{KILN_LANGUAGE_ENGLISH};
    CheckScene scene_;
    kiln::Core& core_ = kiln::Core::create();
    PageHost host_;

private:
    struct Sought {
        int control;
        HWND window;
    };

    static std::string modulePath() {
        std::string path = "Z:" MODULE_FILE;
        std::ranges::replace(path, '/', '\\');
        return path;
    }

    const int list_;
};
