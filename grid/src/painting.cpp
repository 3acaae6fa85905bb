// Drawing the grid: only the cells within the invalid area, through memory.
#include <base/text.h>
#include <base/utf16.h>
#include <grid/cgridctrl.h>

#include <algorithm>

using framework::BufferedPaint, framework::CWnd, framework::SelectScope;

namespace grid {

namespace {

constexpr COLORREF kLine = RGB(200, 200, 200);
// Characters of a text; no cell shows more, and measuring more would take time.
constexpr size_t kMostDrawn = 1000;

void fill(HDC dc, const RECT& area, COLORREF color) {
    ::SetBkColor(dc, color);
    ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &area, nullptr, 0, nullptr);
}

// A mixture of two colors that is still easy to read on the second.
COLORREF between(COLORREF from, COLORREF to) {
    const auto part = [](BYTE a, BYTE b) { return static_cast<BYTE>((3 * a + b) / 4); };
    return RGB(part(GetRValue(from), GetRValue(to)), part(GetGValue(from), GetGValue(to)),
               part(GetBValue(from), GetBValue(to)));
}

// The lower and right edge of a cell, within it.
void drawEdges(HDC dc, const RECT& area, COLORREF color) {
    fill(dc, {area.left, area.bottom - 1, area.right, area.bottom}, color);
    fill(dc, {area.right - 1, area.top, area.right, area.bottom}, color);
}

std::wstring drawnText(const Cell& cell) {
    std::wstring text = base::toWide(base::clipUtf8(cell.Text(), kMostDrawn));
    if (cell.format & DT_SINGLELINE) {
        std::ranges::replace(text, L'\r', L' ');
        std::ranges::replace(text, L'\n', L' ');
    }
    return text;
}

}  // namespace

void CGridCtrl::OnPaint() {
    if (rowHeight_ == 0) UpdateScrollBars();
    const BufferedPaint paint(Handle(), &buffer_);
    if (!paint.dc()) return;
    const SelectScope font(paint.dc(), GridFont());
    PaintGrid(paint.dc(), paint.area());
}

void CGridCtrl::PaintGrid(HDC dc, const RECT& dirty) const {
    fill(dc, dirty, background_);
    const RECT client = ClientRect();
    const int fixedWidth = FixedWidth();
    const int fixedHeight = FixedHeight();
    const CellId lastFixed{std::min(fixedRows_, rowCount_) - 1,
                           std::min(fixedColumns_, columnCount_) - 1};
    const CellId last{rowCount_ - 1, columnCount_ - 1};
    const CellId free{std::max(topRow_, fixedRows_), fixedColumns_};

    PaintPane(dc, dirty, {free, last}, {fixedWidth, fixedHeight, client.right, client.bottom});
    PaintPane(dc, dirty, {{free.row, 0}, {last.row, lastFixed.column}},
              {0, fixedHeight, fixedWidth, client.bottom});
    PaintPane(dc, dirty, {{0, free.column}, {lastFixed.row, last.column}},
              {fixedWidth, 0, client.right, fixedHeight});
    PaintPane(dc, dirty, {{0, 0}, lastFixed}, {0, 0, fixedWidth, fixedHeight});
    if (tracking_ == Tracking::kDragging) PaintDropTarget(dc);
}

void CGridCtrl::PaintPane(HDC dc, const RECT& dirty, const CellRange& cells,
                          const RECT& pane) const {
    RECT shown;
    if (!::IntersectRect(&shown, &dirty, &pane)) return;
    const int state = ::SaveDC(dc);
    ::IntersectClipRect(dc, shown.left, shown.top, shown.right, shown.bottom);
    const int rowHeight = RowHeight();
    const int skipped =
        std::max((static_cast<int>(shown.top) - RowTop(cells.first.row)) / rowHeight, 0);
    int top = RowTop(cells.first.row) + skipped * rowHeight;
    for (int row = cells.first.row + skipped; row <= cells.last.row && top < shown.bottom; ++row) {
        int left = ColumnLeft(cells.first.column);
        for (int column = cells.first.column; column <= cells.last.column && left < shown.right;
             ++column) {
            const RECT area{left, top, left + ColumnWidth(column), top + rowHeight};
            if (area.right > shown.left) PaintCell(dc, {row, column}, area);
            left = static_cast<int>(area.right);
        }
        top += rowHeight;
    }
    ::RestoreDC(dc, state);
}

void CGridCtrl::PaintCell(HDC dc, CellId id, const RECT& area) const {
    const Cell& cell = *Find(id);
    const bool fixed = IsFixed(id);
    const bool selected = selection_.Contains(id);
    const bool active = selected && focused_;
    const bool readOnly = editable_ && !fixed && !CanEdit(id);

    COLORREF back = ::GetSysColor(fixed ? COLOR_BTNFACE : COLOR_WINDOW);
    COLORREF textColor = ::GetSysColor(IsEnabled() ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT);
    if (readOnly && IsEnabled()) textColor = between(textColor, back);
    // Pale without the keyboard, and never the gray of a heading.
    if (selected && !fixed) back = between(back, ::GetSysColor(COLOR_HIGHLIGHT));
    if (active) {
        back = ::GetSysColor(COLOR_HIGHLIGHT);
        textColor = ::GetSysColor(COLOR_HIGHLIGHTTEXT);
    }
    fill(dc, area, back);
    drawEdges(dc, area, fixed ? ::GetSysColor(COLOR_BTNSHADOW) : kLine);

    if (const std::wstring text = drawnText(cell); !text.empty()) {
        RECT place{area.left + TextMargin(), area.top, area.right - TextMargin() - 1,
                   area.bottom - 1};
        const LONG style = ::GetWindowLongW(Handle(), GWL_EXSTYLE);
        const UINT reading = style & WS_EX_RTLREADING ? UINT{DT_RTLREADING} : 0u;
        ::SetBkMode(dc, TRANSPARENT);
        ::SetTextColor(dc, textColor);
        ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &place,
                    (cell.format & ~UINT{DT_MODIFYSTRING}) | DT_NOPREFIX | reading);
    }
    if (id == focus_ && focused_) {
        const RECT inner{area.left, area.top, area.right - 1, area.bottom - 1};
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &inner);
    }
}

void CGridCtrl::PaintDropTarget(HDC dc) const {
    const CellRange range = DropRange();
    if (range.IsEmpty()) return;
    const int left = ColumnLeft(range.first.column);
    const int right = ColumnLeft(range.last.column) + ColumnWidth(range.last.column);
    RECT frame{left, RowTop(range.first.row), right, RowTop(range.last.row) + RowHeight()};
    for (int i = 0; i < 2; ++i) {
        ::FrameRect(dc, &frame, ::GetSysColorBrush(COLOR_HIGHLIGHT));
        ::InflateRect(&frame, -1, -1);
    }
}

void CGridCtrl::OnEnable(bool) {
    Default();
    InvalidateAll();
}

LRESULT CGridCtrl::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_SETFONT:
            font_ = reinterpret_cast<HFONT>(wParam);
            rowHeight_ = 0;
            UpdateScrollBars();
            if (LOWORD(lParam)) InvalidateAll();
            return 0;
        case WM_GETFONT:
            return reinterpret_cast<LRESULT>(GridFont());
        case WM_PRINTCLIENT: {
            const auto dc = reinterpret_cast<HDC>(wParam);
            const SelectScope font(dc, GridFont());
            PaintGrid(dc, ClientRect());
            return 0;
        }
        case WM_IME_STARTCOMPOSITION:
        case WM_IME_COMPOSITION:
        case WM_IME_ENDCOMPOSITION:
        case WM_IME_CHAR:
            return Compose(message, wParam, lParam);
        case kDropRetiredEditors:
            retiredEditors_.clear();
            return 0;
        default:
            return CWnd::WindowProc(message, wParam, lParam);
    }
}

}  // namespace grid
