// A host window with one rollup page, and a test that has the utility open in it.
#pragma once

#include "loadedmodule.h"

#include <resources/resource.h>
#include <tessera/iaviaryutil.h>

#include <functional>
#include <string>
#include <vector>

/// A host window that puts rollup pages on a plain window and writes down what it is asked for.
class PanelHost : public kiln::HostWindow {
public:
    PanelHost() {
        main_ = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 100, 100, 400, 500,
                                nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    }
    ~PanelHost() override { DestroyWindow(main_); }

    HWND mainWindow() override {
        if (failure_) failure_();
        return main_;
    }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                       LPARAM param, DWORD, int category) override {
        if (pageFailure_) pageFailure_();
        title_ = title;
        category_ = category;
        page_ = CreateDialogParamW(module, MAKEINTRESOURCEW(dialogId), main_, procedure, param);
        return page_;
    }
    void deleteRollupPage(HWND page) override {
        if (pageFailure_) pageFailure_();
        EXPECT_EQ(page, page_);
        DestroyWindow(page);
        page_ = nullptr;
    }
    void rollupMouseMessage(HWND page, UINT message, WPARAM, LPARAM) override {
        EXPECT_EQ(page, page_);
        mouse_.push_back(message);
    }
    void redrawViews(TimeValue, DWORD, Animatable*) override { ++redraws_; }

    void press(int id) const {
        SendMessageW(page_, WM_COMMAND, MAKEWPARAM(id, BN_CLICKED),
                     reinterpret_cast<LPARAM>(GetDlgItem(page_, id)));
    }

    HWND main_ = nullptr;
    HWND page_ = nullptr;
    std::string title_;
    int category_ = 0;
    std::vector<UINT> mouse_;
    int redraws_ = 0;
    /// Called whenever the module asks for the host's window; it may throw.
    std::function<void()> failure_;
    /// The same for rollup pages.
    std::function<void()> pageFailure_;
};

class PanelTest : public testing::Test {
protected:
    PanelTest() : core(kiln::Core::create()) {
        loadedModule();
        core.setHostWindow(&window);
        core.newScene();
        utility = kiln::classesOf(UTILITY_CLASS_ID).front();
        openPage();
    }
    ~PanelTest() override {
        core.closeUtility();
        exported<void (*)()>("_zufltguidestroy")();
        core.newScene();
        core.setHostWindow(nullptr);
    }

    void openPage() {
        const kiln::Status opened = core.openUtility(utility);
        EXPECT_TRUE(opened.ok()) << opened.message();
    }

    static IAviaryUtil& aviary() {
        return *static_cast<IAviaryUtil*>(GetCOREInterface(kAviaryInterfaceId));
    }

    /// The browser form, a window of this process owned by the host's.
    HWND form() const {
        struct Search {
            HWND owner;
            HWND found;
        } search{window.main_, nullptr};
        EnumThreadWindows(
            GetCurrentThreadId(),
            [](HWND candidate, LPARAM param) {
                auto& wanted = *reinterpret_cast<Search*>(param);
                if (GetWindow(candidate, GW_OWNER) == wanted.owner &&
                    GetDlgItem(candidate, IDC_TREE))
                    wanted.found = candidate;
                return wanted.found ? FALSE : TRUE;
            },
            reinterpret_cast<LPARAM>(&search));
        return search.found;
    }

    PanelHost window;
    kiln::Core& core;
    ClassDesc* utility = nullptr;
};
