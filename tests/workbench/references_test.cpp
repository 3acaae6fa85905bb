// References to other files in the workbench: what is missing, where files are looked for, and what
// the commands make of them; with real keys and clicks.
#include "../tour/user.h"
#include "workbenchfixture.h"

#include <base/paths.h>
#include <base/utf16.h>

#include <commctrl.h>

namespace {

constexpr int kMakeLocal = 1132, kSearchFolders = 1135;                  // commands
constexpr int kList = 1080, kFolder = 1081, kRemove = 1084, kUp = 1085;  // controls

class WorkbenchReferences : public WorkbenchTest {
protected:
    /// A database of one reference, to the file `models/tower.flt`, which is not there.
    void SetUp() override {
        WorkbenchTest::SetUp();
        start(base::toWide(STAGED_PLUGINS), L"--language en");
        ASSERT_TRUE(showsItsScene());
        std::filesystem::create_directory(folder_ / "models");
        const std::string main = base::genericTextOf(folder_ / "main.flt");
        script("newScene(); createBox name:\"tower\"");
        script("exportFile \"" + main + "\"");
        script("newScene()");
        script("importFile \"" + main + "\"");
        script("collapse $tower \"" + base::genericTextOf(folder_ / "models/tower.flt") + "\"");
        std::filesystem::rename(folder_ / "models", folder_ / "library");
        ASSERT_TRUE(becomes("$tower.kind", "\"EXTERNAL_REF\""));
        ASSERT_TRUE(user::click(viewport_));
        user::key(VK_F5);
    }

    bool becomes(const std::string& line, const std::string& value) {
        return user::eventually([&] { return script(line).ends_with("\r\n" + value); });
    }
    HWND dialog() const { return user::dialogNamed(process_.dwProcessId, L"Search Folders"); }
    HWND item(int id) const { return ::GetDlgItem(dialog(), id); }
    bool lists(int count) const {
        return user::eventually(
            [&] { return ::SendMessageW(item(kList), LB_GETCOUNT, 0, 0) == count; });
    }
    bool saysMissing(bool isMissing) const {
        const HWND bar = ::FindWindowExW(window_, nullptr, L"msctls_statusbar32", nullptr);
        // Each text begins with a space.
        return user::eventually([&] {
            return (LOWORD(::SendMessageW(bar, SB_GETTEXTLENGTHW, 1, 0)) > 1) == isMissing;
        });
    }
};

TEST_F(WorkbenchReferences, WhatIsMissingIsCountedListedAndFoundInTheUsersFolders) {
    EXPECT_TRUE(saysMissing(true));
    user::key(VK_F5, {VK_SHIFT});
    EXPECT_TRUE(user::eventually([this] { return logSays("models/tower.flt"); }));

    ::PostMessageW(window_, WM_COMMAND, kSearchFolders, 0);
    ASSERT_TRUE(user::eventually([this] { return dialog() != nullptr; }));
    for (const std::filesystem::path& folder : {folder_ / "none", folder_ / "library"}) {
        ASSERT_TRUE(user::click(item(kFolder)));
        user::type(folder.wstring());
        ASSERT_TRUE(
            user::eventually([&] { return user::text(item(kFolder)) == folder.wstring(); }));
        user::key(VK_RETURN);  // into the list, and not out of the dialog
        ASSERT_TRUE(user::eventually([&] { return user::text(item(kFolder)).empty(); }));
    }
    EXPECT_TRUE(lists(2));
    ASSERT_TRUE(user::click(item(kUp)));
    EXPECT_TRUE(user::eventually([this] { return !::IsWindowEnabled(item(kUp)); })) << "at the top";
    ASSERT_TRUE(user::click(item(kList)));
    user::key(VK_END);
    ASSERT_TRUE(user::click(item(kRemove)));
    EXPECT_TRUE(lists(1));
    user::key(VK_RETURN);
    ASSERT_TRUE(user::eventually([this] { return dialog() == nullptr; }));
    EXPECT_TRUE(saysMissing(false));

    script("select $tower");
    ::SendMessageW(window_, WM_COMMAND, kMakeLocal, 0);
    EXPECT_TRUE(becomes("$tower.kind", "\"GROUP\""));
    ASSERT_TRUE(user::click(viewport_));
    user::key('Z', {VK_CONTROL});
    EXPECT_TRUE(becomes("$tower.kind", "\"EXTERNAL_REF\""));
}

}  // namespace
