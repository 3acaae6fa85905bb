#include "module_internal.h"

#include <framework/gdi.h>

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

BufferedPaint::BufferedPaint(HWND window) noexcept
    : window_(window), dc_(::BeginPaint(window, &paint_)) {
    const RECT& area = paint_.rcPaint;
    if (!dc_ || ::IsRectEmpty(&area)) return;
    buffer_.emplace(dc_, widthOf(area), heightOf(area));
    if (!buffer_->get()) {
        buffer_.reset();
        return;
    }
    ::SetWindowOrgEx(buffer_->get(), area.left, area.top, nullptr);
    dc_ = buffer_->get();
}

BufferedPaint::~BufferedPaint() {
    if (buffer_) {
        const RECT& area = paint_.rcPaint;
        ::BitBlt(paint_.hdc, area.left, area.top, widthOf(area), heightOf(area), dc_, area.left,
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
