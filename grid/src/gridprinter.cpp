#include <base/utf16.h>
#include <framework/cwaitcursor.h>
#include <grid/gridprinter.h>

// Not among the headers of WIN32_LEAN_AND_MEAN.
#include <commdlg.h>

#include <algorithm>
#include <numeric>

using framework::CWaitCursor, framework::GdiBrush, framework::GdiFont, framework::SelectScope,
    framework::heightOf, framework::widthOf, framework::windowDpi;

namespace grid {

namespace {

// At 96 dots per inch.
constexpr int kCellMargin = 4;
constexpr int kRowMargin = 2;
constexpr int kPageMarginTenthMm = 150;
constexpr int kTenthMmPerInch = 254;

constexpr COLORREF kHeading = RGB(230, 230, 230);

// The grid's own font, as large on the page as on the screen.
GdiFont pageFont(const CGridCtrl& grid, int dpi) {
    LOGFONTW description{};
    const HFONT own = grid.Font();
    ::GetObjectW(own ? own : ::GetStockObject(DEFAULT_GUI_FONT), sizeof description, &description);
    description.lfHeight = ::MulDiv(description.lfHeight, dpi, windowDpi(grid.Handle()));
    description.lfWidth = 0;
    return GdiFont(::CreateFontIndirectW(&description));
}

GridPageSetup printerPage(HDC printer, const std::string& title) {
    // The origin is the corner of what the printer can reach, not of the paper.
    const auto margin = [&](int dpi, int unreachable) {
        return std::max(::MulDiv(kPageMarginTenthMm, dpi, kTenthMmPerInch) - unreachable, 0);
    };
    const int dpi = ::GetDeviceCaps(printer, LOGPIXELSX);
    const int x = margin(dpi, ::GetDeviceCaps(printer, PHYSICALOFFSETX));
    const int y =
        margin(::GetDeviceCaps(printer, LOGPIXELSY), ::GetDeviceCaps(printer, PHYSICALOFFSETY));
    return {{x, y, ::GetDeviceCaps(printer, HORZRES) - x, ::GetDeviceCaps(printer, VERTRES) - y},
            dpi,
            title};
}

class OwnedDc {
public:
    explicit OwnedDc(HDC dc) noexcept : dc_(dc) {}
    ~OwnedDc() {
        if (dc_) ::DeleteDC(dc_);
    }
    OwnedDc(const OwnedDc&) = delete;
    OwnedDc& operator=(const OwnedDc&) = delete;
    HDC get() const noexcept { return dc_; }

private:
    HDC dc_;
};

bool printAllPages(HDC printer, const GridPrinter& pages) {
    for (int page = 0; page < pages.PageCount(); ++page) {
        if (::StartPage(printer) <= 0) return false;
        pages.DrawPage(page);
        if (::EndPage(printer) <= 0) return false;
    }
    return true;
}

}  // namespace

GridPrinter::GridPrinter(const CGridCtrl& grid, HDC dc, GridPageSetup setup)
    : grid_(grid), dc_(dc), setup_(std::move(setup)), font_(pageFont(grid, setup_.dpi)) {
    const SelectScope font(dc_, font_.get());
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(dc_, &metrics);
    margin_ = ::MulDiv(kCellMargin, setup_.dpi, USER_DEFAULT_SCREEN_DPI);
    rowHeight_ = std::max(static_cast<int>(metrics.tmHeight), 1) +
                 2 * ::MulDiv(kRowMargin, setup_.dpi, USER_DEFAULT_SCREEN_DPI);
    fixedRows_ = std::min(grid_.FixedRowCount(), grid_.RowCount());

    const int screenDpi = windowDpi(grid_.Handle());
    for (int column = 0; column < grid_.ColumnCount(); ++column)
        widths_.push_back(::MulDiv(grid_.ColumnWidth(column), setup_.dpi, screenDpi));
    const int total = std::accumulate(widths_.begin(), widths_.end(), 0);
    const int room = widthOf(setup_.area);
    if (total > room)
        for (int& width : widths_) width = ::MulDiv(width, room, total);
}

int GridPrinter::RowsPerPage() const noexcept {
    // Besides the cells: the page number with a free row above it, and the title with one below.
    const int others = fixedRows_ + 2 + (setup_.title.empty() ? 0 : 2);
    return std::max(heightOf(setup_.area) / rowHeight_ - others, 1);
}

int GridPrinter::PageCount() const noexcept {
    const int rows = grid_.RowCount() - fixedRows_;
    return std::max((rows + RowsPerPage() - 1) / RowsPerPage(), 1);
}

void GridPrinter::DrawPage(int page) const {
    const int state = ::SaveDC(dc_);
    {
        const SelectScope font(dc_, font_.get());
        ::SetBkMode(dc_, TRANSPARENT);
        ::SetTextColor(dc_, RGB(0, 0, 0));
        int top = static_cast<int>(setup_.area.top);
        if (!setup_.title.empty()) {
            DrawLine(setup_.title, top, DT_LEFT | DT_END_ELLIPSIS);
            top += 2 * rowHeight_;
        }
        for (int row = 0; row < fixedRows_; ++row) top = DrawRow(row, top);
        const int first = fixedRows_ + page * RowsPerPage();
        const int end = std::min(first + RowsPerPage(), grid_.RowCount());
        for (int row = first; row < end; ++row) top = DrawRow(row, top);
        DrawLine(std::to_string(page + 1) + " / " + std::to_string(PageCount()),
                 static_cast<int>(setup_.area.bottom) - rowHeight_, DT_CENTER);
    }
    ::RestoreDC(dc_, state);
}

void GridPrinter::DrawLine(const std::string& text, int top, UINT format) const {
    RECT line{setup_.area.left, top, setup_.area.right, top + rowHeight_};
    ::DrawTextW(dc_, base::toWide(text).c_str(), -1, &line,
                format | DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
}

int GridPrinter::DrawRow(int row, int top) const {
    int left = static_cast<int>(setup_.area.left);
    for (int column = 0; column < grid_.ColumnCount(); ++column) {
        const int right = left + widths_[static_cast<size_t>(column)];
        DrawCell({row, column}, {left, top, right, top + rowHeight_});
        left = right;
    }
    return top + rowHeight_;
}

void GridPrinter::DrawCell(CellId cell, const RECT& area) const {
    if (grid_.IsFixed(cell)) {
        const GdiBrush heading(::CreateSolidBrush(kHeading));
        ::FillRect(dc_, &area, heading.get());
    }
    ::FrameRect(dc_, &area, static_cast<HBRUSH>(::GetStockObject(GRAY_BRUSH)));
    std::wstring text = base::toWide(grid_.CellText(cell.row, cell.column));
    std::ranges::replace(text, L'\r', L' ');
    std::ranges::replace(text, L'\n', L' ');
    RECT place = area;
    ::InflateRect(&place, -margin_, 0);
    const UINT format = grid_.CellFormat(cell.row, cell.column);
    ::DrawTextW(dc_, text.c_str(), static_cast<int>(text.size()), &place,
                (format & ~UINT{DT_MODIFYSTRING}) | DT_SINGLELINE | DT_NOPREFIX);
}

void CGridCtrl::OnPrint() {
    CWnd frame;
    frame.Attach(::GetAncestor(Handle(), GA_ROOT));
    GridPrinter::Print(*this, frame.Text());
}

bool GridPrinter::Print(const CGridCtrl& grid, const std::string& title) {
    PRINTDLGW dialog{};
    dialog.lStructSize = sizeof dialog;
    dialog.hwndOwner = grid.HasWindow() ? ::GetAncestor(grid.Handle(), GA_ROOT) : nullptr;
    dialog.Flags = PD_RETURNDC | PD_NOSELECTION | PD_NOPAGENUMS | PD_USEDEVMODECOPIESANDCOLLATE;
    const bool chosen = ::PrintDlgW(&dialog) != FALSE;
    const OwnedDc printer(dialog.hDC);
    for (const HGLOBAL memory : {dialog.hDevMode, dialog.hDevNames})
        if (memory) ::GlobalFree(memory);
    if (!chosen || !printer.get()) return false;

    const CWaitCursor wait;
    const std::wstring name = base::toWide(title);
    DOCINFOW document{};
    document.cbSize = sizeof document;
    document.lpszDocName = name.c_str();
    if (::StartDocW(printer.get(), &document) <= 0) return false;
    const GridPrinter pages(grid, printer.get(), printerPage(printer.get(), title));
    if (printAllPages(printer.get(), pages)) return ::EndDoc(printer.get()) > 0;
    ::AbortDoc(printer.get());
    return false;
}

}  // namespace grid
