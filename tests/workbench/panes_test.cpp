// The panes of the workbench's window have room for their texts, in both languages and at each
// display scaling.
#include "../../workbench/src/ui/commandpanel.h"
#include "../../workbench/src/ui/look.h"
#include "../../workbench/src/ui/scriptpane.h"
#include "../../workbench/src/ui/statusbar.h"
#include "../support/menukeys.h"
#include "../support/seen.h"
#include "../support/spokenlanguage.h"

#include <base/utf16.h>
#include <framework/clipboard.h>
#include <input.h>
#include <workbench/texts.h>

#include <commctrl.h>
#include <gtest/gtest.h>
#include <richedit.h>

#include <string>
#include <tuple>
#include <utility>
#include <vector>

using namespace workbench;

namespace {

constexpr int kDots = 96;  // an inch, at 100 %

class PanesIn : public testing::TestWithParam<std::tuple<WORD, int>> {
protected:
    PanesIn() {
        parent_ = ::CreateWindowW(L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 1200, 700, nullptr,
                                  nullptr, nullptr, nullptr);
    }
    ~PanesIn() override { ::DestroyWindow(parent_); }

    int percent() const { return std::get<1>(GetParam()); }
    /// Pixels at this scaling, of those that a window has in this process.
    int scaled(int pixels) const { return pixels * percent() / 100; }
    int widthOf(const std::string& text, bool isBold = false) const {
        const Look look(kDots * percent() / 100);
        const framework::WindowDc dc(parent_);
        const framework::SelectScope font(dc.get(), isBold ? look.bold() : look.normal());
        RECT area{};
        ::DrawTextW(dc.get(), base::toWide(text).c_str(), -1, &area, DT_SINGLELINE | DT_CALCRECT);
        return static_cast<int>(area.right);
    }

    const SpokenLanguage spoken_{std::get<0>(GetParam())};
    HWND parent_ = nullptr;
};

TEST_P(PanesIn, TheLanguageShowFiguresAndSelectionWhole) {
    StatusBar bar;
    ASSERT_TRUE(bar.Create(parent_, 1));
    bar.place(1200);
    const std::string nodes = textOf(TextId::kNodes, {"10,000,000"});
    const struct {
        StatusBar::Part part;
        std::string text;
    } shown[] = {
        {StatusBar::kNodes, textOf(TextId::kNodesHidden, {nodes, "10,000,000"})},
        {StatusBar::kFaces, textOf(TextId::kFaces, {"100,000,000"})},
        {StatusBar::kMissing, textOf(TextId::kMissing, {"200"})},
        {StatusBar::kSelection, textOf(TextId::kSelected, {"10,000,000"})},
        {StatusBar::kTime, textOf(TextId::kTime, {"-2147483648"})},
        {StatusBar::kSelection, textOf(TextId::kNothingSelected)},
    };
    for (const auto& [part, text] : shown) {
        bar.setText(part, text);
        RECT room{};
        bar.Send(SB_GETRECT, part, reinterpret_cast<LPARAM>(&room));
        EXPECT_LE(widthOf(" " + text) + scaled(4), scaled(room.right - room.left)) << text;
        EXPECT_GT(room.left, 0) << text;
    }
}

TEST_P(PanesIn, TheLanguageShowTheLabelOfTheScriptLineWhole) {
    ScriptPane pane;
    ASSERT_TRUE(pane.Create(parent_, 1));
    pane.MoveTo({0, 0, 800, 130});
    kiln::Core::setLanguage(GetLanguage() == KILN_LANGUAGE_ENGLISH ? KILN_LANGUAGE_CHINESE
                                                                   : KILN_LANGUAGE_ENGLISH);
    pane.showLanguage();
    RECT line;
    ::GetWindowRect(::GetDlgItem(pane.Handle(), 2), &line);
    ::MapWindowPoints(nullptr, pane.Handle(), reinterpret_cast<POINT*>(&line), 2);
    EXPECT_LE(scaled(6) + widthOf(textOf(TextId::kScriptPrompt)), scaled(line.left));
}

TEST_P(PanesIn, TheLanguageShowTheHeadingOfThePanelWhole) {
    CommandPanel panel;
    ASSERT_TRUE(panel.Create(parent_, 1));
    const int room = scaled(panel.wantedWidth() - 14);
    EXPECT_LE(widthOf(textOf(TextId::kUtilities), true), room);
    EXPECT_LE(widthOf(textOf(TextId::kNoUtilities)), 4 * room) << "it has lines enough";
}

TEST(Panes, TellAssistiveProgramsTheirNamesAndKeys) {
    const HWND parent = ::CreateWindowW(L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 900, 500,
                                        nullptr, nullptr, nullptr, nullptr);
    {
        ScriptPane pane;
        CommandPanel panel;
        ASSERT_TRUE(pane.Create(parent, 1) && panel.Create(parent, 2));
        pane.showLanguage();
        panel.showLanguage();
        const Seen line(pane.line()), log(::GetDlgItem(pane.Handle(), 1)),
            utilities(panel.Handle());
        for (const WORD language : {KILN_LANGUAGE_CHINESE, KILN_LANGUAGE_ENGLISH}) {
            const SpokenLanguage spoken(language);
            pane.showLanguage();
            panel.showLanguage();
            const bool english = language == KILN_LANGUAGE_ENGLISH;
            EXPECT_EQ(line.name(), english ? L"Script" : L"脚本");
            EXPECT_EQ(line.keys(), L"Alt+R");
            EXPECT_EQ(log.name(), english ? L"Script log" : L"脚本日志");
            EXPECT_EQ(utilities.name(), english ? L"Utilities" : L"实用程序");
            EXPECT_EQ(utilities.keys(), L"Alt+U");
        }
    }
    ::DestroyWindow(parent);
}

/// The log of a pane that is shown, and what it looks like at some place.
class LogTest : public testing::Test {
protected:
    LogTest() {
        parent_ = ::CreateWindowW(L"Static", L"", WS_OVERLAPPEDWINDOW, 0, 0, 900, 500, nullptr,
                                  nullptr, nullptr, nullptr);
        ::ShowWindow(parent_, SW_SHOW);
        EXPECT_TRUE(pane_.Create(parent_, 1));
        pane_.MoveTo({0, 0, 800, 400});
        log_ = ::GetDlgItem(pane_.Handle(), 1);
    }
    ~LogTest() override { ::DestroyWindow(parent_); }

    std::wstring text() const {
        std::wstring text(4096, L'\0');
        text.resize(static_cast<std::size_t>(::GetWindowTextW(log_, text.data(), 4096)));
        return text;
    }
    CHARRANGE selection() const {
        CHARRANGE range{};
        ::SendMessageW(log_, EM_EXGETSEL, 0, reinterpret_cast<LPARAM>(&range));
        return range;
    }
    void select(LONG from, LONG to) const {
        CHARRANGE range{from, to};
        ::SendMessageW(log_, EM_EXSETSEL, 0, reinterpret_cast<LPARAM>(&range));
    }
    /// Of the character at a place of the control, which counts a line's end as one.
    CHARFORMAT2W formatAt(LONG at) const {
        select(at, at + 1);
        CHARFORMAT2W format{};
        format.cbSize = sizeof format;
        ::SendMessageW(log_, EM_GETCHARFORMAT, SCF_SELECTION, reinterpret_cast<LPARAM>(&format));
        return format;
    }
    bool hasGlyph(const wchar_t* face, wchar_t character) const {
        const framework::WindowDc dc(parent_);
        const HFONT font =
            ::CreateFontW(-12, 0, 0, 0, 0, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, face);
        WORD glyph = 0xFFFF;
        {
            const framework::SelectScope selected(dc.get(), font);
            ::GetGlyphIndicesW(dc.get(), &character, 1, &glyph, GGI_MARK_NONEXISTING_GLYPHS);
        }
        ::DeleteObject(font);
        return glyph != 0xFFFF;
    }
    bool seesLastLine() const {
        POINTL at{};
        ::SendMessageW(log_, EM_POSFROMCHAR, reinterpret_cast<WPARAM>(&at),
                       ::SendMessageW(log_, EM_LINEINDEX, 60, 0));
        RECT area;
        ::GetClientRect(log_, &area);
        return at.y >= 0 && at.y < area.bottom;
    }

    HWND parent_ = nullptr, log_ = nullptr;
    ScriptPane pane_;
};

TEST_F(LogTest, ShowsOfWhichKindALineIsInCharactersThatItsFontHas) {
    pane_.print("plain");
    pane_.print("警告", LogLine::kWarning);
    pane_.print("bad", LogLine::kError);
    EXPECT_EQ(text(), L"plain\r\n警告\r\nbad");
    const COLORREF plain = formatAt(0).crTextColor, warning = formatAt(6).crTextColor,
                   error = formatAt(9).crTextColor;
    EXPECT_EQ(plain, ::GetSysColor(COLOR_WINDOWTEXT));
    EXPECT_NE(warning, plain);
    EXPECT_NE(error, plain);
    EXPECT_NE(error, warning);
    EXPECT_TRUE(hasGlyph(formatAt(6).szFaceName, L'警'));
    EXPECT_TRUE(hasGlyph(formatAt(0).szFaceName, L'p'));
}

TEST_F(LogTest, HasTheLastLineInViewUntilTheUserSelectsSomething) {
    for (int i = 0; i <= 60; ++i) pane_.print("line " + std::to_string(i));
    EXPECT_TRUE(seesLastLine());
    pane_.MoveTo({0, 0, 800, 110});
    EXPECT_TRUE(seesLastLine()) << "after another size";
    select(0, 6);
    pane_.print("one more");
    EXPECT_EQ(selection().cpMin, 0);
    EXPECT_EQ(selection().cpMax, 6) << "what is being copied stays in hand";
    pane_.clear();
    pane_.print("anew");
    EXPECT_EQ(text(), L"anew");
}

TEST_F(LogTest, IsCopiedAndClearedByKeyAndByMenu) {
    const auto fill = [this] {
        pane_.clear();
        pane_.print("one");
        pane_.print("两");
        framework::putOnClipboard(log_, "something else");
    };
    const auto choose = [](std::vector<WORD> keys) {
        const MenuKeys pressed(std::move(keys));
        testinput::key(VK_F10, {VK_SHIFT});
        EXPECT_TRUE(testinput::pumpUntil([] { return MenuKeys::opened(); }));
    };
    const auto copied = [this] { return framework::textFromClipboard(log_); };
    ASSERT_TRUE(testinput::activate(parent_));
    ::SetFocus(log_);
    fill();
    testinput::key('A', {VK_CONTROL});
    testinput::key('C', {VK_CONTROL});
    EXPECT_EQ(copied(), "one\r\n两");
    testinput::key('L', {VK_CONTROL});
    EXPECT_EQ(text(), L"");

    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    choose({});
    EXPECT_EQ(MenuKeys::texts(),
              (std::vector<std::wstring>{L"(&Copy\tCtrl+C)", L"(Select &All\tCtrl+A)",
                                         L"(C&lear\tCtrl+L)"}))
        << "there is nothing in it";
    fill();
    choose({'A'});
    choose({'C'});
    EXPECT_EQ(copied(), "one\r\n两");
    const SpokenLanguage chinese(KILN_LANGUAGE_CHINESE);
    choose({'L'});
    EXPECT_EQ(MenuKeys::texts().back(), L"清空(&L)\tCtrl+L");
    EXPECT_EQ(text(), L"");
}

INSTANTIATE_TEST_SUITE_P(
    All, PanesIn,
    testing::Combine(testing::Values(KILN_LANGUAGE_CHINESE, KILN_LANGUAGE_ENGLISH),
                     testing::Values(100, 125, 150, 200)),
    [](const auto& instance) {
        return (std::get<0>(instance.param) == KILN_LANGUAGE_CHINESE ? "Chinese" : "English") +
               std::to_string(std::get<1>(instance.param));
    });

}  // namespace
