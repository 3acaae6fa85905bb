// A grid on paper.
#pragma once

#include <framework/gdi.h>
#include <grid/cgridctrl.h>

#include <string>
#include <vector>

namespace grid {

/// Where and how a grid is printed.
struct GridPageSetup {
    /// The part of each page that is used, in device units.
    RECT area{};
    /// Device units per inch.
    int dpi = 0;
    /// Stands at the top of every page when it is not empty.
    std::string title;
};

/// Draws a grid page by page on a device context. The heading rows come again on every page, and
/// every page has its number at the foot, as in "2 / 5". Sizes on paper are those on the screen at
/// 100 %; columns too wide for the page are narrowed together. The grid must not change meanwhile.
class GridPrinter {
public:
    /// The device context is not owned.
    GridPrinter(const CGridCtrl& grid, HDC dc, GridPageSetup setup);

    /// At least 1, also for an empty grid.
    int PageCount() const noexcept;
    /// Draws page `page`, counted from 0, whatever the device context's state is.
    void DrawPage(int page) const;

    /// Asks for a printer and prints the grid on it with margins of 1.5 cm. False when the user
    /// cancels or the printer fails; a job that fails is withdrawn.
    static bool Print(const CGridCtrl& grid, const std::string& title);

private:
    int DrawRow(int row, int top) const;
    void DrawCell(CellId cell, const RECT& area) const;
    void DrawLine(const std::string& text, int top, UINT format) const;
    int RowsPerPage() const noexcept;

    const CGridCtrl& grid_;
    HDC dc_;
    GridPageSetup setup_;
    framework::GdiFont font_;
    int rowHeight_ = 0;
    int margin_ = 0;
    int fixedRows_ = 0;
    std::vector<int> widths_;
};

}  // namespace grid
