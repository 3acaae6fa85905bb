#include "swatches.h"

#include <algorithm>

using framework::heightOf, framework::widthOf;

namespace palettes {

void Swatches::show(int count, int columns) {
    count_ = count;
    columns_ = std::max(columns, 1);
    chosen_ = std::clamp(chosen_, 0, std::max(count - 1, 0));
    Invalidate();
}

void Swatches::choose(int swatch) {
    chosen_ = std::clamp(swatch, 0, std::max(count_ - 1, 0));
    Invalidate();
}

void Swatches::chooseByUser(int swatch) {
    swatch = std::clamp(swatch, 0, std::max(count_ - 1, 0));
    if (swatch == chosen_) return;
    choose(swatch);
    if (onChosen) onChosen();
}

// The areas fill the window without a gap.
RECT Swatches::areaOf(int swatch) const {
    const RECT client = ClientRect();
    const int row = swatch / columns_, column = swatch % columns_;
    const auto share = [](int part, int parts, int whole) { return whole * part / parts; };
    return {share(column, columns_, widthOf(client)), share(row, rows(), heightOf(client)),
            share(column + 1, columns_, widthOf(client)), share(row + 1, rows(), heightOf(client))};
}

int Swatches::at(POINT point) const {
    for (int i = 0; i < count_; ++i) {
        const RECT area = areaOf(i);
        if (::PtInRect(&area, point)) return i;
    }
    return -1;
}

void Swatches::OnPaint() {
    const framework::BufferedPaint paint(Handle());
    const HDC dc = paint.dc();
    const RECT client = ClientRect();
    ::FillRect(dc, &client, ::GetSysColorBrush(COLOR_BTNFACE));
    for (int i = 0; i < count_; ++i) {
        const RECT area = areaOf(i);
        RECT overlap;
        if (!::IntersectRect(&overlap, &area, &paint.area())) continue;
        if (isShown && !isShown(i)) continue;
        const COLORREF color = colorOf ? colorOf(i) : 0;
        const framework::GdiBrush brush(::CreateSolidBrush(color));
        ::FillRect(dc, &area, brush.get());
        if (!isMarked || !isMarked(i)) continue;
        // Black or white, whichever is seen.
        constexpr int kMiddle = 3 * 128;
        const bool isDark = GetRValue(color) + GetGValue(color) + GetBValue(color) < kMiddle;
        const int side = std::max(Scaled(2), 2);
        const RECT dot{area.right - side - 1, area.bottom - side - 1, area.right - 1,
                       area.bottom - 1};
        ::FillRect(dc, &dot,
                   static_cast<HBRUSH>(::GetStockObject(isDark ? WHITE_BRUSH : BLACK_BRUSH)));
    }
    if (count_ == 0) return;
    RECT frame = areaOf(chosen_);
    ::InflateRect(&frame, 1, 1);
    ::FrameRect(dc, &frame, static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH)));
    ::InflateRect(&frame, -1, -1);
    ::FrameRect(dc, &frame, static_cast<HBRUSH>(::GetStockObject(WHITE_BRUSH)));
    ::InflateRect(&frame, -1, -1);
    ::FrameRect(dc, &frame, static_cast<HBRUSH>(::GetStockObject(BLACK_BRUSH)));
    if (HasFocus()) ::DrawFocusRect(dc, &frame);
}

void Swatches::OnSetFocus(HWND) {
    Default();
    Invalidate();
}

void Swatches::OnKillFocus(HWND) {
    Default();
    Invalidate();
}

void Swatches::OnSize(UINT, int, int) {
    Default();
    Invalidate();
}

UINT Swatches::OnGetDlgCode(const MSG* message) {
    const bool isEnter =
        message != nullptr && message->message == WM_KEYDOWN && message->wParam == VK_RETURN;
    return DLGC_WANTARROWS | (isEnter ? DLGC_WANTMESSAGE : 0U);
}

void Swatches::OnKeyDown(UINT key, UINT, UINT) {
    switch (key) {
        case VK_LEFT:
            return chooseByUser(chosen_ - 1);
        case VK_RIGHT:
            return chooseByUser(chosen_ + 1);
        case VK_UP:
            return chooseByUser(chosen_ < columns_ ? chosen_ : chosen_ - columns_);
        case VK_DOWN:
            return chooseByUser(chosen_ + columns_ < count_ ? chosen_ + columns_ : chosen_);
        case VK_PRIOR:
            return chooseByUser(chosen_ - 8 * columns_);
        case VK_NEXT:
            return chooseByUser(chosen_ + 8 * columns_);
        case VK_HOME:
            return chooseByUser(0);
        case VK_END:
            return chooseByUser(count_ - 1);
        case VK_RETURN:
            if (onActivated) onActivated();
            return;
        default:
            Default();
    }
}

void Swatches::OnLButtonDown(UINT, POINT point) {
    SetFocus();
    if (const int swatch = at(point); swatch >= 0) chooseByUser(swatch);
}

void Swatches::OnLButtonDblClk(UINT, POINT point) {
    if (at(point) == chosen_ && onActivated) onActivated();
}

}  // namespace palettes
