#include "gridhost.h"

#include <grid/gridprinter.h>

#include <set>

using framework::MemoryDc, framework::WindowDc;
using grid::GridPageSetup, grid::GridPrinter;

namespace {

constexpr int kDpi = 144;
constexpr COLORREF kPaper = RGB(255, 255, 255);

class GridPrinting : public gridtest::GridTest {
protected:
    GridPageSetup setup{{40, 30, 640, 830}, kDpi, "Airfield 机场"};

    // The texts that a page draws.
    std::vector<std::wstring> textsOf(int page) {
        return gridtest::drawnTexts(
            [&](HDC recorder) { GridPrinter(grid(), recorder, setup).DrawPage(page); });
    }

    static bool has(const std::vector<std::wstring>& texts, const std::wstring& text) {
        return std::ranges::find(texts, text) != texts.end();
    }
};

}  // namespace

TEST_F(GridPrinting, PutsEveryRowOnOnePageUnderItsHeadings) {
    host.Fill(100);
    const WindowDc screen(nullptr);
    const int pages = GridPrinter(grid(), screen.get(), setup).PageCount();
    ASSERT_GT(pages, 2);
    std::multiset<std::wstring> values;
    for (int page = 0; page < pages; ++page) {
        const auto texts = textsOf(page);
        EXPECT_TRUE(has(texts, L"属性")) << page;
        EXPECT_TRUE(has(texts, L"值")) << page;
        EXPECT_TRUE(has(texts, L"Airfield 机场")) << page;
        EXPECT_TRUE(has(texts, std::to_wstring(page + 1) + L" / " + std::to_wstring(pages)))
            << page;
        for (const std::wstring& text : texts)
            if (text.starts_with(L"value ")) values.insert(text);
    }
    EXPECT_EQ(values.size(), 100u);
    for (int row = 1; row <= 100; ++row)
        EXPECT_EQ(values.count(L"value " + std::to_wstring(row)), 1u) << row;
}

TEST_F(GridPrinting, StaysWithinItsPartOfThePage) {
    host.Fill(100);
    grid().SetColumnWidth(0, 3000);
    const WindowDc screen(nullptr);
    constexpr int kWidth = 700;
    constexpr int kHeight = 900;
    const MemoryDc page(screen.get(), kWidth, kHeight);
    const RECT whole{0, 0, kWidth, kHeight};
    ::FillRect(page.get(), &whole, static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
    GridPrinter(grid(), page.get(), setup).DrawPage(0);
    int inside = 0;
    int outside = 0;
    for (int y = 0; y < kHeight; y += 2) {
        for (int x = 0; x < kWidth; ++x) {
            if (::GetPixel(page.get(), x, y) == kPaper) continue;
            const POINT at{x, y};
            ++(::PtInRect(&setup.area, at) ? inside : outside);
        }
    }
    EXPECT_EQ(outside, 0);
    EXPECT_GT(inside, 1000);
}

TEST_F(GridPrinting, IsAskedForByKey) {
    testinput::key(L'P', {VK_CONTROL});
    EXPECT_EQ(host.grid.printed, 1);
}

TEST_F(GridPrinting, AnEmptyGridIsOnePage) {
    grid().SetRowCount(0);
    const WindowDc screen(nullptr);
    EXPECT_EQ(GridPrinter(grid(), screen.get(), setup).PageCount(), 1);
    EXPECT_TRUE(has(textsOf(0), L"1 / 1"));
    setup.area = {0, 0, 10, 10};
    host.Fill(3);
    EXPECT_EQ(GridPrinter(grid(), screen.get(), setup).PageCount(), 3)
        << "on the smallest page there is still one row";
}
