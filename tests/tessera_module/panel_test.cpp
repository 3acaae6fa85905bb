#include "loadedmodule.h"

#include <resources/resource.h>
#include <tessera/iaviaryutil.h>

#include <string>
#include <vector>

namespace {

/// A host window that puts rollup pages on a plain window and writes down what it is asked for.
class PanelHost : public kiln::HostWindow {
public:
    PanelHost() {
        main_ = CreateWindowExW(0, L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 100, 100, 400, 500,
                                nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    }
    ~PanelHost() override { DestroyWindow(main_); }

    HWND mainWindow() override { return main_; }
    HWND addRollupPage(HINSTANCE module, int dialogId, DLGPROC procedure, const char* title,
                       LPARAM param, DWORD, int category) override {
        title_ = title;
        category_ = category;
        page_ = CreateDialogParamW(module, MAKEINTRESOURCEW(dialogId), main_, procedure, param);
        return page_;
    }
    void deleteRollupPage(HWND page) override {
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
};

class PanelTest : public testing::Test {
protected:
    PanelTest() : core(kiln::Core::create()) {
        loadedModule();
        core.setHostWindow(&window);
        core.newScene();
        utility = kiln::classesOf(UTILITY_CLASS_ID).front();
        const kiln::Status opened = core.openUtility(utility);
        EXPECT_TRUE(opened.ok()) << opened.message();
    }
    ~PanelTest() override {
        core.closeUtility();
        exported<void (*)()>("_zufltguidestroy")();
        core.newScene();
        core.setHostWindow(nullptr);
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

TEST_F(PanelTest, ShowsItsPageAndMakesTheBrowserHidden) {
    ASSERT_TRUE(window.page_);
    EXPECT_EQ(window.title_, "Aviary ©");
    EXPECT_EQ(window.category_, 4000);
    ASSERT_TRUE(form());
    EXPECT_FALSE(IsWindowVisible(form()));
    window.press(IDC_BROWSER);
    EXPECT_TRUE(IsWindowVisible(form()));
    core.closeUtility();
    EXPECT_EQ(window.page_, nullptr);
    EXPECT_TRUE(form()) << "the browser outlives the page";
}

TEST_F(PanelTest, PassesTheMouseToTheRollupAndClosesOnRequest) {
    for (const UINT message : {WM_MOUSEMOVE, WM_LBUTTONDOWN, WM_LBUTTONUP})
        SendMessageW(window.page_, message, 0, MAKELPARAM(3, 3));
    EXPECT_EQ(window.mouse_, (std::vector<UINT>{0x200, 0x201, 0x202}));
    window.press(IDOK);
    EXPECT_EQ(core.openedUtility(), nullptr);
    EXPECT_EQ(window.page_, nullptr);
}

TEST_F(PanelTest, StepsThePreviewAndChangesNothingAtItsEnd) {
    auto* const aviary = static_cast<IAviaryUtil*>(GetCOREInterface(kAviaryInterfaceId));
    ASSERT_TRUE(aviary->CreateLOD());  // 0 to 100,000
    window.press(IDC_LOD_MOST);
    EXPECT_EQ(aviary->GetLodDistance(), 50000);
    EXPECT_GT(window.redraws_, 0);
    window.redraws_ = 0;
    window.press(IDC_LOD_MORE);
    window.press(IDC_LOD_LESS);
    EXPECT_EQ(window.redraws_, 0) << "the only band is both ends";
    aviary->StoreLodDistance(900000);
    window.press(IDC_LOD_MORE);
    EXPECT_EQ(aviary->GetLodDistance(), 50000);
    window.press(IDC_LOD_LEAST);
    EXPECT_EQ(aviary->GetLodDistance(), 50000);
}

}  // namespace
