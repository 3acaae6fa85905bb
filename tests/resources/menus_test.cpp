// The workbench's menus, read from the built file.
#include "../../workbench/src/app/commands.h"
#include "builtfiles.h"

#include <gtest/gtest.h>

#include <cwctype>
#include <functional>
#include <set>
#include <vector>

namespace {

struct Entry {
    std::wstring text;  // with the ampersand before its key; empty for a separator
    UINT command = 0;   // 0 for a menu
    HMENU menu = nullptr;
};

std::vector<Entry> entriesOf(HMENU menu) {
    std::vector<Entry> entries;
    for (int i = 0, count = GetMenuItemCount(menu); i < count; ++i) {
        wchar_t text[128] = {};
        GetMenuStringW(menu, static_cast<UINT>(i), text, 128, MF_BYPOSITION);
        const HMENU below = GetSubMenu(menu, i);
        entries.push_back({text, below ? 0 : GetMenuItemID(menu, i), below});
    }
    return entries;
}

void forEachMenu(HMENU menu, const std::function<void(const std::vector<Entry>&)>& visit) {
    const std::vector<Entry> entries = entriesOf(menu);
    visit(entries);
    for (const Entry& entry : entries)
        if (entry.menu) forEachMenu(entry.menu, visit);
}

// The key that an ampersand marks, as a small letter; 0 without one.
wchar_t keyOf(const std::wstring& text) {
    const std::size_t mark = text.find(L'&');
    return mark != text.npos && mark + 1 < text.size()
               ? static_cast<wchar_t>(std::towlower(text[mark + 1]))
               : L'\0';
}

class MainMenu {
public:
    explicit MainMenu(WORD language) {
        const auto bytes =
            resourceBytes(workbenchFile(), RT_MENU, MAKEINTRESOURCEW(IDR_MAIN_MENU), language);
        if (!bytes.empty()) menu_ = LoadMenuIndirectW(bytes.data());
    }
    ~MainMenu() { DestroyMenu(menu_); }
    MainMenu(const MainMenu&) = delete;
    MainMenu& operator=(const MainMenu&) = delete;

    HMENU handle() const { return menu_; }

private:
    HMENU menu_ = nullptr;
};

class MenusIn : public testing::TestWithParam<WORD> {};

TEST_P(MenusIn, TheLanguageHaveAKeyOfItsOwnForEachEntry) {
    const MainMenu menu(GetParam());
    int checked = 0;
    forEachMenu(menu.handle(), [&](const std::vector<Entry>& entries) {
        std::set<wchar_t> keys;
        for (const Entry& entry : entries) {
            const bool isNote = entry.command == CMD_FILE_RECENT_NONE;
            if (entry.text.empty() || isNote) continue;
            ++checked;
            EXPECT_NE(keyOf(entry.text), L'\0') << utf8(entry.text);
            EXPECT_TRUE(keys.insert(keyOf(entry.text)).second) << utf8(entry.text);
        }
    });
    EXPECT_GT(checked, 40);
}

INSTANTIATE_TEST_SUITE_P(Both, MenusIn, testing::Values(kChinese, kEnglish),
                         [](const auto& instance) {
                             return instance.param == kChinese ? "Chinese" : "English";
                         });

TEST(Menus, HaveTheSameCommandsInTheSameOrderAndWithTheSameShortCuts) {
    // A command of 0 stands for a menu or a line.
    const auto commandsOf = [](WORD language) {
        const MainMenu menu(language);
        std::vector<std::pair<UINT, std::wstring>> commands;
        forEachMenu(menu.handle(), [&](const std::vector<Entry>& entries) {
            for (const Entry& entry : entries) {
                const std::size_t tab = entry.text.find(L'\t');
                commands.emplace_back(entry.command,
                                      tab == std::wstring::npos ? L"" : entry.text.substr(tab));
            }
        });
        return commands;
    };
    const auto chinese = commandsOf(kChinese);
    EXPECT_GT(chinese.size(), 40u);
    EXPECT_EQ(commandsOf(kEnglish), chinese);
}

}  // namespace
