// Drawing the grid: only the cells within the invalid area, through memory.
#include "gridaccessible.h"

#include <base/text.h>
#include <base/utf16.h>
#include <grid/cgridctrl.h>

#include <algorithm>

using framework::BufferedPaint, framework::heightOf, framework::SelectScope;

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

void fillTriangle(HDC dc, POINT a, POINT b, POINT c, COLORREF color) {
    const POINT corners[] = {a, b, c};
    const SelectScope brush(dc, ::GetStockObject(DC_BRUSH));
    const SelectScope pen(dc, ::GetStockObject(DC_PEN));
    ::SetDCBrushColor(dc, color);
    ::SetDCPenColor(dc, color);
    ::Polygon(dc, corners, 3);
}

// The sign for "not equal", from its upper left corner.
void paintUnequal(HDC dc, POINT at, int side, COLORREF color) {
    const int stroke = std::max(side / 7, 1);
    for (const LONG top : {at.y + side / 3 - stroke / 2, at.y + side * 2 / 3 - stroke / 2})
        fill(dc, {at.x, top, at.x + side, top + stroke}, color);
    const SelectScope pen(dc, ::GetStockObject(DC_PEN));
    ::SetDCPenColor(dc, color);
    for (int i = 0; i < stroke; ++i) {
        ::MoveToEx(dc, at.x + side / 4 + i, at.y + side, nullptr);
        ::LineTo(dc, at.x + side * 3 / 4 + i, at.y - 1);
    }
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
    const int fixedRows = std::min(fixedRows_, rowCount_);
    const int fixedColumns = std::min(fixedColumns_, columnCount_);
    const int top = std::max(topLine_, fixedRows_);
    const int lines = LineCount();

    PaintPane(dc, dirty, top, lines, fixedColumns, columnCount_,
              {fixedWidth, fixedHeight, client.right, client.bottom});
    PaintPane(dc, dirty, top, lines, 0, fixedColumns, {0, fixedHeight, fixedWidth, client.bottom});
    for (std::size_t section = 0; section < Sections().size(); ++section) PaintHeading(dc, section);
    PaintPane(dc, dirty, 0, fixedRows, fixedColumns, columnCount_,
              {fixedWidth, 0, client.right, fixedHeight});
    PaintPane(dc, dirty, 0, fixedRows, 0, fixedColumns, {0, 0, fixedWidth, fixedHeight});
    if (tracking_ == Tracking::kDragging) PaintDropTarget(dc);
}

// The cells of some lines and columns within a part of the client area. Headings of sections are
// left out.
void CGridCtrl::PaintPane(HDC dc, const RECT& dirty, int firstLine, int endLine, int firstColumn,
                          int endColumn, const RECT& pane) const {
    RECT shown;
    if (!::IntersectRect(&shown, &dirty, &pane)) return;
    const int state = ::SaveDC(dc);
    ::IntersectClipRect(dc, shown.left, shown.top, shown.right, shown.bottom);
    const int rowHeight = RowHeight();
    const int skipped = std::max((static_cast<int>(shown.top) - LineTop(firstLine)) / rowHeight, 0);
    int top = LineTop(firstLine) + skipped * rowHeight;
    for (int line = firstLine + skipped; line < endLine && top < shown.bottom; ++line) {
        const RowLines::Line found = lines_.At(line);
        int left = ColumnLeft(firstColumn);
        for (int column = firstColumn; !found.heading && column < endColumn && left < shown.right;
             ++column) {
            const RECT area{left, top, left + ColumnWidth(column), top + rowHeight};
            if (area.right > shown.left) PaintCell(dc, {found.row, column}, area);
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

    const Look look = fixed ? Look() : LookOf(id);
    const int right = PaintLook(dc, look, area, textColor);
    RECT place{area.left + TextMargin(), area.top, right - TextMargin() - 1, area.bottom - 1};
    const LONG style = ::GetWindowLongW(Handle(), GWL_EXSTYLE);
    const UINT reading = style & WS_EX_RTLREADING ? UINT{DT_RTLREADING} : 0u;
    ::SetBkMode(dc, TRANSPARENT);
    if (const std::wstring text = drawnText(cell); !text.empty()) {
        ::SetTextColor(dc, textColor);
        ::DrawTextW(dc, text.c_str(), static_cast<int>(text.size()), &place,
                    (cell.format & ~UINT{DT_MODIFYSTRING}) | DT_NOPREFIX | reading);
        SIZE extent{};
        ::GetTextExtentPoint32W(dc, text.c_str(), static_cast<int>(text.size()), &extent);
        place.left += extent.cx + 3 * TextMargin();
    }
    if (!look.note.empty() && place.left < place.right) {
        const std::wstring note = base::toWide(base::clipUtf8(look.note, kMostDrawn));
        ::SetTextColor(dc, active ? textColor : ::GetSysColor(COLOR_GRAYTEXT));
        ::DrawTextW(dc, note.c_str(), static_cast<int>(note.size()), &place,
                    DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX | reading);
    }
    if (id == focus_ && focused_) {
        const RECT inner{area.left, area.top, area.right - 1, area.bottom - 1};
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &inner);
    }
}

// At the right end of the cell, so that the text does not move when its editor opens. Returns where
// the room for the text ends.
int CGridCtrl::PaintLook(HDC dc, const Look& look, const RECT& area, COLORREF textColor) const {
    const int margin = TextMargin();
    const int side = heightOf(area) - margin - 1;
    int right = static_cast<int>(area.right) - 1;
    if (look.swatch && right - side - margin > area.left) {
        right -= margin / 2;
        RECT patch{right - 2 * side, area.top + margin / 2, right, area.top + margin / 2 + side};
        fill(dc, patch, RGB(96, 96, 96));
        ::InflateRect(&patch, -1, -1);
        fill(dc, patch, *look.swatch);
        right = static_cast<int>(patch.left);
    }
    const int mark = side * 2 / 3;
    if (look.differs && right - mark - margin > area.left) {
        right -= margin;
        paintUnequal(dc, {right - mark, (area.top + area.bottom - mark) / 2}, mark, textColor);
        right -= mark;
    }
    return right + 1;
}

// A band over the width of the cells, with a triangle that points down while the section is open.
void CGridCtrl::PaintHeading(HDC dc, std::size_t index) const {
    const auto shown = SectionRect(index);
    if (!shown) return;
    const Section& section = Sections()[index];
    const int state = ::SaveDC(dc);
    ::IntersectClipRect(dc, 0, FixedHeight(), shown->right, ClientRect().bottom);
    const bool selected = section.folded && selection_.Contains({section.first, fixedColumns_});
    const bool active = selected && focused_;
    COLORREF back = between(::GetSysColor(COLOR_BTNFACE), ::GetSysColor(COLOR_BTNSHADOW));
    if (selected) back = between(back, ::GetSysColor(COLOR_HIGHLIGHT));
    COLORREF textColor = ::GetSysColor(IsEnabled() ? COLOR_WINDOWTEXT : COLOR_GRAYTEXT);
    if (active) {
        back = ::GetSysColor(COLOR_HIGHLIGHT);
        textColor = ::GetSysColor(COLOR_HIGHLIGHTTEXT);
    }
    fill(dc, *shown, back);
    drawEdges(dc, *shown, ::GetSysColor(COLOR_BTNSHADOW));

    const int half = std::max(heightOf(*shown) / 6, 3);
    const LONG middle = (shown->top + shown->bottom - 1) / 2;
    const LONG left = shown->left + TextMargin();
    if (section.folded)
        fillTriangle(dc, {left + half / 2, middle - half}, {left + half / 2, middle + half},
                     {left + half + half / 2, middle}, textColor);
    else
        fillTriangle(dc, {left, middle - half / 2}, {left + 2 * half, middle - half / 2},
                     {left + half, middle + half / 2 + half % 2}, textColor);
    RECT place{left + 2 * half + TextMargin(), shown->top, shown->right - TextMargin() - 1,
               shown->bottom - 1};
    const std::wstring title = base::toWide(section.title);
    ::SetBkMode(dc, TRANSPARENT);
    ::SetTextColor(dc, textColor);
    ::DrawTextW(dc, title.c_str(), static_cast<int>(title.size()), &place,
                DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS | DT_NOPREFIX);
    if (active && FocusedHeading() == index) {
        const RECT inner{shown->left, shown->top, shown->right - 1, shown->bottom - 1};
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &inner);
    }
    ::RestoreDC(dc, state);
}

void CGridCtrl::PaintDropTarget(HDC dc) const {
    const CellRange range = DropRange();
    if (range.IsEmpty()) return;
    const int left = ColumnLeft(range.first.column);
    const int right = ColumnLeft(range.last.column) + ColumnWidth(range.last.column);
    RECT frame{left, LineTop(lines_.LineOf(range.first.row)), right,
               LineTop(lines_.LineOf(range.last.row)) + RowHeight()};
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
        case WM_GETOBJECT:
            if (!framework::Accessible::IsAskedFor(lParam)) return Default();
            if (!accessible_) accessible_ = new GridAccessible(*this);
            return accessible_->Answer(wParam);
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
