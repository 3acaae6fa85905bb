// Owned GDI objects, double buffering and display scaling.
#pragma once

#include <framework/win32.h>

#include <cstdint>
#include <utility>

namespace framework {

/// Owns a GDI object (font, brush, pen, bitmap, region) and deletes it.
template <typename Handle>
class GdiObject {
public:
    GdiObject() noexcept = default;
    explicit GdiObject(Handle handle) noexcept : handle_(handle) {}
    ~GdiObject() { reset(); }
    GdiObject(GdiObject&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
    GdiObject& operator=(GdiObject&& other) noexcept {
        if (this != &other) reset(std::exchange(other.handle_, nullptr));
        return *this;
    }

    Handle get() const noexcept { return handle_; }
    explicit operator bool() const noexcept { return handle_ != nullptr; }
    Handle release() noexcept { return std::exchange(handle_, nullptr); }
    void reset(Handle handle = nullptr) noexcept {
        if (handle_) ::DeleteObject(handle_);
        handle_ = handle;
    }

private:
    Handle handle_ = nullptr;
};

using GdiFont = GdiObject<HFONT>;
using GdiBrush = GdiObject<HBRUSH>;
using GdiPen = GdiObject<HPEN>;
using GdiBitmap = GdiObject<HBITMAP>;
using GdiRegion = GdiObject<HRGN>;

/// Selects an object into a device context for as long as it lives. A null object selects nothing.
class SelectScope {
public:
    SelectScope(HDC dc, HGDIOBJ object) noexcept
        : dc_(dc), former_(object ? ::SelectObject(dc, object) : nullptr) {}
    ~SelectScope() {
        if (former_) ::SelectObject(dc_, former_);
    }
    SelectScope(const SelectScope&) = delete;
    SelectScope& operator=(const SelectScope&) = delete;

private:
    HDC dc_;
    HGDIOBJ former_;
};

/// The device context of a window's client area (of the screen for null), for measuring and for
/// drawing outside WM_PAINT.
class WindowDc {
public:
    explicit WindowDc(HWND window) noexcept : window_(window), dc_(::GetDC(window)) {}
    ~WindowDc() {
        if (dc_) ::ReleaseDC(window_, dc_);
    }
    WindowDc(const WindowDc&) = delete;
    WindowDc& operator=(const WindowDc&) = delete;
    HDC get() const noexcept { return dc_; }

private:
    HWND window_;
    HDC dc_;
};

/// A device context over a bitmap of its own, compatible with another one.
class MemoryDc {
public:
    MemoryDc(HDC like, int width, int height) noexcept;
    ~MemoryDc();
    MemoryDc(const MemoryDc&) = delete;
    MemoryDc& operator=(const MemoryDc&) = delete;
    /// Null when the platform has no memory.
    HDC get() const noexcept { return dc_; }
    HBITMAP bitmap() const noexcept { return bitmap_.get(); }

private:
    GdiBitmap bitmap_;
    HDC dc_;
    HGDIOBJ former_ = nullptr;
};

/// Describes pixels of 32 bits (from the least significant byte blue, green, red, and alpha or
/// nothing), the top row first.
BITMAPINFO pixelFormat(int width, int height) noexcept;

/// A bitmap of such pixels, which belong to it, at `pixels`; empty when there is no memory.
GdiBitmap makePixelBitmap(int width, int height, std::uint32_t*& pixels) noexcept;

/// The memory that a window is drawn in, for windows that are painted often: asking the platform
/// for it can take longer than the drawing. Grows to the largest area asked for and keeps that.
class PaintBuffer {
public:
    PaintBuffer() noexcept = default;
    ~PaintBuffer() { drop(); }
    PaintBuffer(const PaintBuffer&) = delete;
    PaintBuffer& operator=(const PaintBuffer&) = delete;

    /// A device context with room for `area`, whose corner its first pixel is; owned by the buffer.
    /// Its pixels are those of earlier drawings. Null when the platform has no memory.
    HDC contextFor(HDC like, const RECT& area) noexcept;

private:
    bool grow(HDC like, SIZE least) noexcept;
    void drop() noexcept;

    GdiBitmap bitmap_;
    SIZE size_{};
    HDC dc_ = nullptr;
    HGDIOBJ former_ = nullptr;
};

/// The drawing of one WM_PAINT through memory, so that nothing flickers: draw to `dc()` in client
/// coordinates; the destructor copies the invalid area to the window. Without memory for the
/// bitmap, `dc()` is the window's own.
class BufferedPaint {
public:
    /// `kept`, if not null, must outlive this; without it the memory is freed at the end.
    explicit BufferedPaint(HWND window, PaintBuffer* kept = nullptr) noexcept;
    ~BufferedPaint();
    BufferedPaint(const BufferedPaint&) = delete;
    BufferedPaint& operator=(const BufferedPaint&) = delete;
    HDC dc() const noexcept { return memory_ ? memory_ : paint_.hdc; }
    /// The invalid area, in client coordinates.
    const RECT& area() const noexcept { return paint_.rcPaint; }

private:
    HWND window_;
    PAINTSTRUCT paint_;
    PaintBuffer own_;
    HDC memory_ = nullptr;
    int state_ = 0;
};

/// Keeps a window from drawing while it lives, its scroll bars included, then asks for one repaint
/// of everything. Controls that know WM_SETREDRAW do not all keep their scroll bars still at it,
/// and some compute the places of all their items again. Does nothing for a window that is not
/// shown.
class DrawingPause {
public:
    explicit DrawingPause(HWND window) noexcept;
    ~DrawingPause();
    DrawingPause(const DrawingPause&) = delete;
    DrawingPause& operator=(const DrawingPause&) = delete;

private:
    HWND window_;
};

/// Dots per inch of the display that a window is on (of the main display for null): 96 at 100 %.
int windowDpi(HWND window) noexcept;

inline int widthOf(const RECT& area) noexcept {
    return static_cast<int>(area.right - area.left);
}
inline int heightOf(const RECT& area) noexcept {
    return static_cast<int>(area.bottom - area.top);
}

}  // namespace framework
