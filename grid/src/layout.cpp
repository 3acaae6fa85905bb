// Where the cells are: column widths, row height, scrolling.
#include <base/scopedvalue.h>
#include <base/utf16.h>
#include <grid/cgridctrl.h>

#include <cmath>
#include <numeric>

using framework::SelectScope, framework::WindowDc;

namespace grid {

namespace {

// At 100 % display scaling.
constexpr int kTextMargin = 4;
constexpr int kRowMargin = 2;
constexpr int kMinColumnWidth = 8;
constexpr int kDividerReach = 4;
constexpr int kHorizontalStep = 16;

}  // namespace

// Columns

int CGridCtrl::ColumnWidth(int column) const noexcept {
    return column >= 0 && column < columnCount_ ? widths_[static_cast<size_t>(column)] : 0;
}

void CGridCtrl::SetColumnWidth(int column, int width) {
    if (column < 0 || column >= columnCount_) return;
    EndEdit(true);
    widths_[static_cast<size_t>(column)] = std::max(width, 0);
    shares_.clear();
    UpdateScrollBars();
    InvalidateAll();
}

int CGridCtrl::ContentWidth(int column) const {
    const WindowDc dc(Handle());
    const SelectScope font(dc.get(), GridFont());
    int widest = 0;
    for (int row = 0; row < rowCount_; ++row) {
        const std::wstring text = base::toWide(Find({row, column})->Text());
        SIZE size{};
        ::GetTextExtentPoint32W(dc.get(), text.c_str(), static_cast<int>(text.size()), &size);
        widest = std::max(widest, static_cast<int>(size.cx));
    }
    return widest + 2 * Scaled(kTextMargin) + 1;
}

void CGridCtrl::AutoSizeColumn(int column) {
    if (column >= 0 && column < columnCount_) SetColumnWidth(column, ContentWidth(column));
}

void CGridCtrl::AutoSizeColumns() {
    for (int column = 0; column < columnCount_; ++column) AutoSizeColumn(column);
}

void CGridCtrl::RememberShares() {
    const double total = std::accumulate(widths_.begin(), widths_.end(), 0.0);
    shares_.clear();
    if (total <= 0) return;
    for (const int width : widths_) shares_.push_back(width / total);
}

void CGridCtrl::FitColumns(int from, int width) {
    const auto first = shares_.begin() + from;
    const double total = std::accumulate(first, shares_.end(), 0.0);
    if (total <= 0) return;
    // Each column's end is rounded by itself, so that rounding errors do not add up.
    double share = 0;
    int end = 0;
    for (auto at = first; at != shares_.end(); ++at) {
        share += *at;
        const int next = static_cast<int>(std::lround(std::max(width, 0) * share / total));
        widths_[static_cast<size_t>(at - shares_.begin())] = next - end;
        end = next;
    }
}

void CGridCtrl::ExpandColumnsToFit() {
    EndEdit(true);
    if (shares_.empty()) RememberShares();
    UpdateScrollBars();
    InvalidateAll();
}

double CGridCtrl::ColumnShare(int column) const noexcept {
    const bool known = column >= 0 && static_cast<size_t>(column) < shares_.size();
    return known ? shares_[static_cast<size_t>(column)] : 0;
}

void CGridCtrl::ResizeColumn(int column, int width) {
    const int least = Scaled(kMinColumnWidth);
    const int right = columnCount_ - 1 - column;
    if (shares_.empty()) {
        SetColumnWidth(column, std::max(width, least));
        return;
    }
    // The columns keep filling the width: those to the right get the rest.
    if (right <= 0) return;
    int before = 0;
    for (int i = 0; i < column; ++i) before += ColumnWidth(i);
    const int available = static_cast<int>(ClientRect().right) - before;
    width = std::max(std::min(width, available - right * least), least);
    widths_[static_cast<size_t>(column)] = width;
    FitColumns(column + 1, available - width);
    RememberShares();
    UpdateScrollBars();
    InvalidateAll();
}

// Geometry

int CGridCtrl::RowHeight() const {
    if (rowHeight_ == 0) {
        const WindowDc dc(Handle());
        const SelectScope font(dc.get(), GridFont());
        TEXTMETRICW metrics{};
        ::GetTextMetricsW(dc.get(), &metrics);
        rowHeight_ = static_cast<int>(metrics.tmHeight + metrics.tmExternalLeading) +
                     2 * Scaled(kRowMargin) + 1;
    }
    return rowHeight_;
}

// A dialog sets the font of its controls when it creates them, before there is an object for it.
HFONT CGridCtrl::GridFont() const {
    if (font_) return font_;
    const HWND parent = Parent();
    const LRESULT font = parent ? ::SendMessageW(parent, WM_GETFONT, 0, 0) : 0;
    return font ? reinterpret_cast<HFONT>(font)
                : static_cast<HFONT>(::GetStockObject(DEFAULT_GUI_FONT));
}

int CGridCtrl::TextMargin() const {
    return Scaled(kTextMargin);
}

int CGridCtrl::FixedHeight() const {
    return std::min(fixedRows_, rowCount_) * RowHeight();
}

int CGridCtrl::FixedWidth() const noexcept {
    int width = 0;
    for (int i = 0; i < std::min(fixedColumns_, columnCount_); ++i) width += ColumnWidth(i);
    return width;
}

int CGridCtrl::ColumnLeft(int column) const noexcept {
    int left = 0;
    for (int i = 0; i < column; ++i) left += ColumnWidth(i);
    return column < fixedColumns_ ? left : left - scrollX_;
}

int CGridCtrl::ColumnAt(int x) const noexcept {
    if (x < 0) return -1;
    int left = 0;
    for (int column = 0; column < columnCount_; ++column) {
        // Columns that are scrolled away lie behind the fixed ones.
        if (column == fixedColumns_ && x >= left) x += scrollX_;
        left += ColumnWidth(column);
        if (x < left) return column;
    }
    return -1;
}

int CGridCtrl::DividerAt(POINT at) const {
    if (!columnResizing_ || at.y < 0 || at.y >= FixedHeight()) return -1;
    const int reach = Scaled(kDividerReach);
    // From the right, so that a column squeezed to nothing can be pulled out again.
    for (int column = columnCount_ - 1; column >= 0; --column) {
        const int divider = ColumnLeft(column) + ColumnWidth(column);
        const bool hidden = column >= fixedColumns_ && divider < FixedWidth();
        const bool fits = !shares_.empty() && column == columnCount_ - 1;
        if (!hidden && !fits && std::abs(static_cast<int>(at.x) - divider) <= reach) return column;
    }
    return -1;
}

int CGridCtrl::LineTop(int line) const {
    return line < fixedRows_ ? line * RowHeight() : FixedHeight() + (line - topLine_) * RowHeight();
}

int CGridCtrl::LineAt(int y) const {
    if (y < 0) return -1;
    const int line =
        y < FixedHeight() ? y / RowHeight() : topLine_ + (y - FixedHeight()) / RowHeight();
    return line < LineCount() ? line : -1;
}

int CGridCtrl::PageRows() const {
    return std::max((static_cast<int>(ClientRect().bottom) - FixedHeight()) / RowHeight(), 1);
}

CellId CGridCtrl::CellAt(POINT at) const noexcept {
    const int line = LineAt(at.y);
    if (line < 0) return {};
    const RowLines::Line found = lines_.At(line);
    const CellId cell{found.heading ? -1 : found.row, ColumnAt(at.x)};
    return cell.IsValid() ? cell : CellId{};
}

std::optional<RECT> CGridCtrl::CellRect(CellId cell) const {
    if (!IsValid(cell) || lines_.IsHidden(cell.row)) return std::nullopt;
    const int left = ColumnLeft(cell.column);
    const int top = LineTop(lines_.LineOf(cell.row));
    const RECT whole{left, top, left + ColumnWidth(cell.column), top + RowHeight()};
    RECT pane = ClientRect();
    if (cell.column >= fixedColumns_) pane.left = FixedWidth();
    if (cell.row >= fixedRows_) pane.top = FixedHeight();
    RECT shown;
    if (!::IntersectRect(&shown, &whole, &pane)) return std::nullopt;
    return whole;
}

void CGridCtrl::InvalidateCell(CellId cell) const {
    if (!HasWindow() || updating_ > 0) return;
    if (const auto area = CellRect(cell)) Invalidate(*area, false);
}

void CGridCtrl::InvalidateAll() const {
    if (updating_ == 0) Invalidate(false);
}

CGridCtrl::UpdateScope::~UpdateScope() {
    if (--grid_.updating_ > 0) return;
    grid_.UpdateScrollBars();
    grid_.InvalidateAll();
}

// Scrolling

int CGridCtrl::MaxTopLine() const {
    return std::max(fixedRows_, LineCount() - PageRows());
}

int CGridCtrl::MaxScrollX() const {
    const int total = std::accumulate(widths_.begin(), widths_.end(), 0);
    return std::max(total - static_cast<int>(ClientRect().right), 0);
}

// True when the bar has to be redrawn.
bool CGridCtrl::SetScrollBar(int bar, DWORD style, const SCROLLINFO& wanted) const {
    SCROLLINFO now{};
    now.cbSize = sizeof now;
    now.fMask = SIF_PAGE | SIF_POS | SIF_RANGE;
    ::GetScrollInfo(Handle(), bar, &now);
    const bool shown = (Style() & style) != 0;
    const bool needed = static_cast<UINT>(wanted.nMax) >= wanted.nPage;
    if (now.nMax == wanted.nMax && now.nPage == wanted.nPage && now.nPos == wanted.nPos &&
        shown == needed)
        return false;
    ::SetScrollInfo(Handle(), bar, &wanted, FALSE);
    return shown || needed;
}

bool CGridCtrl::UpdateVerticalBar() {
    topLine_ = std::clamp(topLine_, fixedRows_, MaxTopLine());
    SCROLLINFO rows{};
    rows.cbSize = sizeof rows;
    rows.fMask = SIF_PAGE | SIF_POS | SIF_RANGE;
    rows.nMax = std::max(LineCount() - fixedRows_ - 1, 0);
    rows.nPage = static_cast<UINT>(PageRows());
    rows.nPos = topLine_ - fixedRows_;
    return SetScrollBar(SB_VERT, WS_VSCROLL, rows);
}

bool CGridCtrl::UpdateHorizontalBar() {
    const int width = static_cast<int>(ClientRect().right);
    if (!shares_.empty()) FitColumns(0, width);
    const int farthest = MaxScrollX();
    scrollX_ = std::clamp(scrollX_, 0, farthest);
    SCROLLINFO columns{};
    columns.cbSize = sizeof columns;
    columns.fMask = SIF_PAGE | SIF_POS | SIF_RANGE;
    columns.nMax = std::max(farthest + width - FixedWidth() - 1, 0);
    columns.nPage = static_cast<UINT>(std::max(width - FixedWidth(), 0));
    columns.nPos = scrollX_;
    return SetScrollBar(SB_HORZ, WS_HSCROLL, columns);
}

// The platform takes longer to show, hide or draw a bar than the grid does for all its cells. So
// the columns are fitted after the vertical bar, or they might need a horizontal bar for a moment;
// and the bars are drawn when the grid is painted, once for all changes.
void CGridCtrl::UpdateScrollBars() {
    if (!HasWindow() || updatingScrollBars_ || updating_ > 0) return;
    bool changed = false;
    {
        const base::ScopedValue updating(updatingScrollBars_, true);
        // Showing or hiding the horizontal bar changes the room for the vertical one; three rounds
        // are enough for both to fit.
        for (int round = 0; round < 3; ++round) {
            changed |= UpdateVerticalBar();
            const LONG height = ClientRect().bottom;
            changed |= UpdateHorizontalBar();
            if (ClientRect().bottom == height) break;
        }
    }
    if (changed)
        ::RedrawWindow(Handle(), nullptr, nullptr, RDW_INVALIDATE | RDW_FRAME | RDW_NOCHILDREN);
}

void CGridCtrl::ScrollTo(int topLine, int scrollX) {
    EndEdit(true);
    topLine = std::clamp(topLine, fixedRows_, MaxTopLine());
    scrollX = std::clamp(scrollX, 0, MaxScrollX());
    if (topLine == topLine_ && scrollX == scrollX_) return;
    topLine_ = topLine;
    scrollX_ = scrollX;
    UpdateScrollBars();
    InvalidateAll();
}

void CGridCtrl::SetTopLine(int line) {
    ScrollTo(line, scrollX_);
}

void CGridCtrl::EnsureVisible(CellId cell) {
    if (!IsValid(cell) || !HasWindow()) return;
    int topLine = topLine_;
    if (cell.row >= fixedRows_) {
        const int line = lines_.LineOf(cell.row);
        // With its heading, where it is the first row below one.
        const bool below = line > fixedRows_ && lines_.At(line - 1).heading;
        topLine = std::min(topLine, below ? line - 1 : line);
        topLine = std::max(topLine, line - PageRows() + 1);
    }
    int scrollX = scrollX_;
    if (cell.column >= fixedColumns_) {
        const int left = ColumnLeft(cell.column) + scrollX_;
        const int right = left + ColumnWidth(cell.column);
        scrollX = std::max(scrollX, right - static_cast<int>(ClientRect().right));
        scrollX = std::min(scrollX, left - FixedWidth());
    }
    if (topLine != topLine_ || scrollX != scrollX_) ScrollTo(topLine, scrollX);
}

int CGridCtrl::ScrolledPosition(int bar, UINT code, int step) const {
    // The position in the message has 16 bits only.
    SCROLLINFO info{};
    info.cbSize = sizeof info;
    info.fMask = SIF_ALL;
    ::GetScrollInfo(Handle(), bar, &info);
    switch (code) {
        case SB_LINEUP:
            return info.nPos - step;
        case SB_LINEDOWN:
            return info.nPos + step;
        case SB_PAGEUP:
            return info.nPos - static_cast<int>(info.nPage);
        case SB_PAGEDOWN:
            return info.nPos + static_cast<int>(info.nPage);
        case SB_TOP:
            return info.nMin;
        case SB_BOTTOM:
            return info.nMax;
        case SB_THUMBTRACK:
        case SB_THUMBPOSITION:
            return info.nTrackPos;
        default:
            return info.nPos;
    }
}

void CGridCtrl::OnVScroll(UINT code, int, HWND) {
    ScrollTo(fixedRows_ + ScrolledPosition(SB_VERT, code, 1), scrollX_);
}

void CGridCtrl::OnHScroll(UINT code, int, HWND) {
    ScrollTo(topLine_, ScrolledPosition(SB_HORZ, code, Scaled(kHorizontalStep)));
}

void CGridCtrl::OnMouseWheel(UINT keys, int delta, POINT) {
    UINT lines = 3;
    ::SystemParametersInfoW(SPI_GETWHEELSCROLLLINES, 0, &lines, 0);
    const int perNotch =
        lines == WHEEL_PAGESCROLL ? PageRows() : static_cast<int>(std::min(lines, 100u));
    // Fine wheels send parts of a notch; the remainder counts for the next message.
    wheel_ += delta * perNotch;
    const int steps = wheel_ / WHEEL_DELTA;
    wheel_ %= WHEEL_DELTA;
    if (keys & MK_SHIFT) {
        ScrollTo(topLine_, scrollX_ - steps * Scaled(kHorizontalStep));
    } else {
        ScrollTo(topLine_ - steps, scrollX_);
    }
}

void CGridCtrl::OnSize(UINT, int, int) {
    if (updatingScrollBars_) return;
    EndEdit(true);
    UpdateScrollBars();
    InvalidateAll();
}

}  // namespace grid
