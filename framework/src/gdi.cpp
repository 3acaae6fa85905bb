#include "module_internal.h"

#include <framework/gdi.h>

#include <algorithm>

namespace framework {

MemoryDc::MemoryDc(HDC like, int width, int height) noexcept
    : bitmap_(::CreateCompatibleBitmap(like, width, height)),
      dc_(bitmap_ ? ::CreateCompatibleDC(like) : nullptr) {
    if (dc_) former_ = ::SelectObject(dc_, bitmap_.get());
}

MemoryDc::~MemoryDc() {
    if (!dc_) return;
    ::SelectObject(dc_, former_);
    ::DeleteDC(dc_);
}

BITMAPINFO pixelFormat(int width, int height) noexcept {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = width;
    info.bmiHeader.biHeight = -height;
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 32;
    info.bmiHeader.biCompression = BI_RGB;
    return info;
}

GdiBitmap makePixelBitmap(int width, int height, std::uint32_t*& pixels) noexcept {
    const BITMAPINFO info = pixelFormat(width, height);
    void* bits = nullptr;
    GdiBitmap bitmap(::CreateDIBSection(nullptr, &info, DIB_RGB_COLORS, &bits, nullptr, 0));
    pixels = static_cast<std::uint32_t*>(bits);
    return bitmap;
}

HDC PaintBuffer::contextFor(HDC like, const RECT& area) noexcept {
    if ((widthOf(area) > size_.cx || heightOf(area) > size_.cy) &&
        !grow(like, {widthOf(area), heightOf(area)}))
        return nullptr;
    ::SetWindowOrgEx(dc_, area.left, area.top, nullptr);
    return dc_;
}

// Not a bitmap of the display's own format, which would have to be replaced whenever the display's
// mode changes.
bool PaintBuffer::grow(HDC like, SIZE least) noexcept {
    const SIZE size{std::max(size_.cx, least.cx), std::max(size_.cy, least.cy)};
    drop();
    std::uint32_t* pixels = nullptr;
    bitmap_ = makePixelBitmap(static_cast<int>(size.cx), static_cast<int>(size.cy), pixels);
    dc_ = bitmap_ ? ::CreateCompatibleDC(like) : nullptr;
    if (!dc_) {
        bitmap_.reset();
        return false;
    }
    former_ = ::SelectObject(dc_, bitmap_.get());
    size_ = size;
    return true;
}

void PaintBuffer::drop() noexcept {
    if (dc_) {
        ::SelectObject(dc_, former_);
        ::DeleteDC(dc_);
    }
    dc_ = nullptr;
    bitmap_.reset();
    size_ = {};
}

BufferedPaint::BufferedPaint(HWND window, PaintBuffer* kept) noexcept : window_(window) {
    ::BeginPaint(window, &paint_);
    if (!paint_.hdc || ::IsRectEmpty(&paint_.rcPaint)) return;
    memory_ = (kept ? *kept : own_).contextFor(paint_.hdc, paint_.rcPaint);
    // So that the next drawing begins with the same state.
    if (memory_) state_ = ::SaveDC(memory_);
}

BufferedPaint::~BufferedPaint() {
    if (memory_) {
        const RECT& area = paint_.rcPaint;
        ::RestoreDC(memory_, state_);
        ::BitBlt(paint_.hdc, area.left, area.top, widthOf(area), heightOf(area), memory_, area.left,
                 area.top, SRCCOPY);
    }
    ::EndPaint(window_, &paint_);
}

DrawingPause::DrawingPause(HWND window) noexcept
    : window_((::GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0 ? window : nullptr) {
    if (window_) ::DefWindowProcW(window_, WM_SETREDRAW, FALSE, 0);
}

DrawingPause::~DrawingPause() {
    if (!window_) return;
    ::DefWindowProcW(window_, WM_SETREDRAW, TRUE, 0);
    ::RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_FRAME);
}

int windowDpi(HWND window) noexcept {
    static const auto dpiForWindow =
        platformFunction<UINT WINAPI(HWND)>(L"user32.dll", "GetDpiForWindow");
    if (window && dpiForWindow) {
        if (const UINT dpi = dpiForWindow(window)) return static_cast<int>(dpi);
    }
    const WindowDc screen(nullptr);
    const int dpi = screen.get() ? ::GetDeviceCaps(screen.get(), LOGPIXELSX) : 0;
    return dpi > 0 ? dpi : USER_DEFAULT_SCREEN_DPI;
}

}  // namespace framework
