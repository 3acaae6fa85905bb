// The panes of the workbench's window have room for their texts, in both languages and at each
// display scaling.
#include "../../workbench/src/ui/commandpanel.h"
#include "../../workbench/src/ui/look.h"
#include "../../workbench/src/ui/scriptpane.h"
#include "../../workbench/src/ui/statusbar.h"
#include "../support/spokenlanguage.h"

#include <base/utf16.h>
#include <workbench/texts.h>

#include <commctrl.h>
#include <gtest/gtest.h>

#include <string>
#include <tuple>

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
        const std::wstring wide = base::toWide(text);
        SIZE size;
        ::GetTextExtentPoint32W(dc.get(), wide.c_str(), static_cast<int>(wide.size()), &size);
        return static_cast<int>(size.cx);
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

INSTANTIATE_TEST_SUITE_P(
    All, PanesIn,
    testing::Combine(testing::Values(KILN_LANGUAGE_CHINESE, KILN_LANGUAGE_ENGLISH),
                     testing::Values(100, 125, 150, 200)),
    [](const auto& instance) {
        return (std::get<0>(instance.param) == KILN_LANGUAGE_CHINESE ? "Chinese" : "English") +
               std::to_string(std::get<1>(instance.param));
    });

}  // namespace
