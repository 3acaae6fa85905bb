// The whole of it: the workbench with the built module, used with the display's own mouse.
#include "remotetree.h"
#include "workbenchfixture.h"

#include <base/utf16.h>
#include <resources/resource.h>

#include <gmock/gmock.h>

#include <memory>
#include <string>

using testing::HasSubstr;

namespace {

POINT middleOf(HWND window) {
    RECT area{};
    ::GetWindowRect(window, &area);
    return {(area.left + area.right) / 2, (area.top + area.bottom) / 2};
}

class BrowserMouse : public WorkbenchTest {
protected:
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS));
        // Three groups beside each other, the last with an object in it.
        for (const char* name : {"north", "east", "south"}) {
            script("Aviary.CreateGroup()");
            script(std::string("$g001.name = \"") + name + "\"");
        }
        script("select $south");
        script("Aviary.CreateObject()");
        script("$o001.name = \"hangar\"");
        script("clearSelection()");
        openBrowser();
    }

    void TearDown() override {
        tree_.reset();
        WorkbenchTest::TearDown();
    }

    void openBrowser() {
        form_ = openBrowserForm();
        ASSERT_NE(form_, nullptr);
        tree_ = std::make_unique<RemoteTree>(::GetDlgItem(form_, IDC_TREE), process_.hProcess);
    }

    static std::string place(POINT at) { return std::to_string(at.x) + " " + std::to_string(at.y); }

    // The tool runs beside the test; what it does is seen by its effect.
    static void pointer(const std::string& what) {
        std::wstring line = base::toWide(XDOTOOL_PROGRAM " " + what);
        STARTUPINFOW info{};
        info.cb = sizeof info;
        PROCESS_INFORMATION process{};
        ASSERT_TRUE(::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                     nullptr, &info, &process))
            << ::GetLastError();
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }

    /// Goes to the middle of a window, waits until the mouse is seen there, and clicks.
    static void push(HWND button) {
        const POINT at = middleOf(button);
        pointer("mousemove " + place(at));
        EXPECT_TRUE(eventually([=] {
            POINT now{};
            ::GetCursorPos(&now);
            return now.x == at.x && now.y == at.y && ::WindowFromPoint(now) == button;
        }));
        pointer("click 1");
    }

    /// Clicks an item and waits for the selection that must follow.
    ::testing::AssertionResult clickGives(const char* item, const std::string& selection) {
        pointer("mousemove " + place(tree_->middle(item)) + " click 1");
        if (eventually([&] { return tree_->selected() == selection; }))
            return ::testing::AssertionSuccess();
        return ::testing::AssertionFailure() << "selected: " << tree_->selected();
    }

    /// The same while a key is held. Keys and mouse come by ways of their own, so the key must have
    /// arrived before the mouse goes.
    ::testing::AssertionResult clickGives(const char* item, const std::string& selection,
                                          const char* keyName, int key) {
        const auto holds = [key](bool down) {
            return eventually([=] { return (::GetAsyncKeyState(key) < 0) == down; });
        };
        pointer(std::string("keydown ") + keyName);
        if (!holds(true)) return ::testing::AssertionFailure() << "the key is not seen";
        const ::testing::AssertionResult result = clickGives(item, selection);
        pointer(std::string("keyup ") + keyName);
        if (!holds(false)) return ::testing::AssertionFailure() << "the key stays down";
        return result;
    }

    /// Moves the pressed mouse over an item until the tree shows that it would take the drop. The
    /// display may join movements, and a drag needs one to begin and another to find its target.
    bool dragsOver(const char* item) {
        POINT to = tree_->middle(item);
        return eventually([&] {
            to.x ^= 1;
            pointer("mousemove " + place(to));
            return tree_->dropTarget() == tree_->find(item);
        });
    }

    HWND captured() const {
        GUITHREADINFO info{};
        info.cbSize = sizeof info;
        ::GetGUIThreadInfo(process_.dwThreadId, &info);
        return info.hwndCapture;
    }

    HWND form_ = nullptr;
    std::unique_ptr<RemoteTree> tree_;
};

TEST_F(BrowserMouse, SelectsAndDragsAndTheSceneFollows) {
    ASSERT_TRUE(eventually([this] { return tree_->find("hangar") != nullptr; }));
    ASSERT_TRUE(clickGives("Scene Root", "Scene Root"));
    push(::GetDlgItem(form_, IDC_EXPAND));
    ASSERT_TRUE(eventually([this] { return tree_->isExpanded("south"); }));

    EXPECT_TRUE(clickGives("north", "north"));
    EXPECT_TRUE(clickGives("south", "north south", "ctrl", VK_CONTROL));
    push(::GetDlgItem(form_, IDC_SELECT_SET));
    EXPECT_TRUE(eventually([this] {
        const std::string answer = script("selection");
        return answer.find("$north") != std::string::npos &&
               answer.find("$south") != std::string::npos &&
               answer.find("$east") == std::string::npos;
    })) << script("selection");
    EXPECT_TRUE(clickGives("hangar", "north east south hangar", "shift", VK_SHIFT));
    EXPECT_TRUE(clickGives("north", "north"));

    EXPECT_THAT(script("$north.parent == $south"), HasSubstr("false"));
    // By the icon: a press on the label of the caret item would edit it.
    pointer("mousemove " + place(tree_->icon("north")) + " mousedown 1");
    ASSERT_TRUE(eventually([this] { return captured() != nullptr; }));
    EXPECT_TRUE(dragsOver("south"));
    pointer("mouseup 1");
    EXPECT_TRUE(eventually(
        [this] { return script("$north.parent == $south").find("true") != std::string::npos; }));
    EXPECT_TRUE(tree_->isBelow("north", "south"));
    EXPECT_TRUE(tree_->isSelected("north")) << "it stays in hand at its new place";
}

}  // namespace
