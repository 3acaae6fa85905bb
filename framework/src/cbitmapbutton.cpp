#include <base/utf16.h>
#include <framework/cbitmapbutton.h>
#include <framework/module.h>

// After win32.h: these do not stand alone.
#include <uxtheme.h>
#include <vssym32.h>

#include <cstdint>
#include <memory>

namespace framework {

namespace {

// A picture that comes this close to the edges is the button's whole face, frame and all.
constexpr int kFrame = 3;
constexpr std::uint32_t kSeeThrough = 0xFF00FF;
constexpr BYTE kDisabledOpacity = 90;

// A picture as 32-bit pixels with premultiplied alpha, top row first.
class Picture {
public:
    Picture(int width, int height)
        : width_(width), height_(height), bitmap_(makePixelBitmap(width, height, pixels_)) {}

    explicit operator bool() const { return static_cast<bool>(bitmap_); }

    GdiBitmap takeFrom(HBITMAP source) {
        {
            const HDC target = ::CreateCompatibleDC(nullptr);
            const HDC from = ::CreateCompatibleDC(nullptr);
            {
                const SelectScope to(target, bitmap_.get());
                const SelectScope picture(from, source);
                ::BitBlt(target, 0, 0, width_, height_, from, 0, 0, SRCCOPY);
            }
            ::DeleteDC(from);
            ::DeleteDC(target);
            ::GdiFlush();
        }
        for (int i = 0; i < width_ * height_; ++i) {
            const std::uint32_t color = pixels_[i] & 0xFFFFFF;
            pixels_[i] = color == kSeeThrough ? 0 : color | 0xFF000000;
        }
        return std::move(bitmap_);
    }

private:
    int width_;
    int height_;
    std::uint32_t* pixels_ = nullptr;
    GdiBitmap bitmap_;
};

SIZE sizeOf(HBITMAP bitmap) noexcept {
    BITMAP description{};
    ::GetObjectW(bitmap, sizeof description, &description);
    return {description.bmWidth, description.bmHeight};
}

GdiBitmap loadPicture(const std::string& name) {
    if (name.empty()) return {};
    const GdiBitmap source(static_cast<HBITMAP>(::LoadImageW(
        resourceInstance(), base::toWide(name).c_str(), IMAGE_BITMAP, 0, 0, LR_CREATEDIBSECTION)));
    if (!source) return {};
    const SIZE size = sizeOf(source.get());
    Picture picture(size.cx, size.cy);
    return picture ? picture.takeFrom(source.get()) : GdiBitmap();
}

void drawFrame(HWND button, HDC dc, RECT area, UINT state, bool hot, bool isDefault) {
    const bool pressed = (state & ODS_SELECTED) != 0;
    const bool disabled = (state & ODS_DISABLED) != 0;
    if (const HTHEME theme = ::OpenThemeData(button, VSCLASS_BUTTON)) {
        const int look = disabled    ? PBS_DISABLED
                         : pressed   ? PBS_PRESSED
                         : hot       ? PBS_HOT
                         : isDefault ? PBS_DEFAULTED
                                     : PBS_NORMAL;
        ::DrawThemeParentBackground(button, dc, &area);
        ::DrawThemeBackground(theme, dc, BP_PUSHBUTTON, look, &area, nullptr);
        ::CloseThemeData(theme);
        return;
    }
    if (isDefault && !disabled) {
        ::FrameRect(dc, &area, ::GetSysColorBrush(COLOR_WINDOWFRAME));
        ::InflateRect(&area, -1, -1);
    }
    const UINT look = pressed ? DFCS_BUTTONPUSH | DFCS_PUSHED : DFCS_BUTTONPUSH;
    ::DrawFrameControl(dc, &area, DFC_BUTTON, look);
}

void drawPicture(HDC dc, const RECT& area, HBITMAP picture, BYTE opacity) {
    const SIZE size = sizeOf(picture);
    const HDC source = ::CreateCompatibleDC(dc);
    if (!source) return;
    {
        const SelectScope selected(source, picture);
        const BLENDFUNCTION blend{AC_SRC_OVER, 0, opacity, AC_SRC_ALPHA};
        ::AlphaBlend(dc, area.left, area.top, widthOf(area), heightOf(area), source, 0, 0, size.cx,
                     size.cy, blend);
    }
    ::DeleteDC(source);
}

RECT centred(const RECT& area, SIZE size) noexcept {
    const LONG left = area.left + (widthOf(area) - size.cx) / 2;
    const LONG top = area.top + (heightOf(area) - size.cy) / 2;
    return {left, top, left + size.cx, top + size.cy};
}

}  // namespace

bool CBitmapButton::AutoLoad(int id, HWND parent) {
    if (!HasWindow() && !SubclassDlgItem(id, parent)) return false;
    const std::string caption = Text();
    return LoadBitmaps(caption + "U", caption + "D", caption + "F", caption + "X");
}

bool CBitmapButton::LoadBitmaps(const std::string& up, const std::string& down,
                                const std::string& focus, const std::string& disabled) {
    up_ = loadPicture(up);
    down_ = loadPicture(down);
    focus_ = loadPicture(focus);
    disabled_ = loadPicture(disabled);
    // Without a picture the button stays as it is and shows its caption.
    if (!up_) return false;
    ModifyStyle(BS_TYPEMASK, BS_OWNERDRAW);
    Invalidate();
    return true;
}

HBITMAP CBitmapButton::PictureFor(UINT state) const noexcept {
    if (state & ODS_DISABLED) return disabled_.get();
    if (state & ODS_SELECTED) return down_.get();
    if (state & ODS_FOCUS) return focus_.get();
    return up_.get();
}

void CBitmapButton::DrawItem(const DRAWITEMSTRUCT& item) {
    if (!up_) return;
    const RECT& area = item.rcItem;
    MemoryDc buffer(item.hDC, widthOf(area), heightOf(area));
    const HDC dc = buffer.get() ? buffer.get() : item.hDC;
    if (buffer.get()) ::SetWindowOrgEx(dc, area.left, area.top, nullptr);

    const HBITMAP own = PictureFor(item.itemState);
    const HBITMAP picture = own ? own : up_.get();
    const SIZE size{Scaled(sizeOf(picture).cx), Scaled(sizeOf(picture).cy)};
    const bool wholeFace =
        size.cx >= widthOf(area) - 2 * kFrame && size.cy >= heightOf(area) - 2 * kFrame;
    RECT place = area;
    ::FillRect(dc, &area, ::GetSysColorBrush(COLOR_BTNFACE));
    if (!wholeFace) {
        drawFrame(Handle(), dc, area, item.itemState, hot_, default_);
        place = centred(area, size);
    }
    if ((item.itemState & ODS_SELECTED) && !own) ::OffsetRect(&place, 1, 1);
    const bool greyed = (item.itemState & ODS_DISABLED) && !own;
    drawPicture(dc, place, picture, greyed ? kDisabledOpacity : 255);
    if ((item.itemState & ODS_FOCUS) && picture != focus_.get()) {
        RECT focus = area;
        ::InflateRect(&focus, -Scaled(3), -Scaled(3));
        ::SetTextColor(dc, RGB(0, 0, 0));
        ::SetBkColor(dc, RGB(255, 255, 255));
        ::DrawFocusRect(dc, &focus);
    }
    if (buffer.get())
        ::BitBlt(item.hDC, area.left, area.top, widthOf(area), heightOf(area), dc, area.left,
                 area.top, SRCCOPY);
}

// The control would draw itself at once, and often again when it is enabled the next moment.
void CBitmapButton::OnEnable(bool) {
    Invalidate(false);
}

UINT CBitmapButton::OnGetDlgCode(const MSG* message) {
    if (!up_) return CButton::OnGetDlgCode(message);
    // An owner-drawn button would otherwise not be pressed by Enter.
    return DLGC_BUTTON | (default_ ? DLGC_DEFPUSHBUTTON : DLGC_UNDEFPUSHBUTTON);
}

void CBitmapButton::OnMouseMove(UINT, POINT) {
    Default();
    if (hot_) return;
    TRACKMOUSEEVENT leave{sizeof leave, TME_LEAVE, Handle(), 0};
    hot_ = ::TrackMouseEvent(&leave) != FALSE;
    if (hot_) Invalidate(false);
}

LRESULT CBitmapButton::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case WM_MOUSELEAVE:
            hot_ = false;
            Invalidate(false);
            break;
        case BM_SETSTYLE:
            // The dialog marks its default button by changing the style, which would end the
            // drawing by the owner; remember the mark instead.
            if (!up_) break;
            default_ = (wParam & BS_TYPEMASK) == BS_DEFPUSHBUTTON;
            if (LOWORD(lParam)) Invalidate(false);
            return 0;
        case WM_LBUTTONDBLCLK:
            // An owner-drawn button would report every second of several quick clicks as a double
            // click.
            if (up_) return Default(WM_LBUTTONDOWN, wParam, lParam);
            break;
        case WM_ERASEBKGND:
            if (up_) return TRUE;
            break;
        default:
            break;
    }
    return CButton::WindowProc(message, wParam, lParam);
}

}  // namespace framework
