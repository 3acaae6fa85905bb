#include <framework/centredtext.h>
#include <framework/gdi.h>

#include <algorithm>

namespace framework {
namespace {

constexpr UINT_PTR kSubclass = 0xCE47;
// A property of the control: the pixels above its client area that it leaves free in the low word,
// and the height in whose middle the text is to stand in the high one.
constexpr wchar_t kProperty[] = L"framework.centredText";

LONG_PTR propertyOf(HWND edit) noexcept {
    return reinterpret_cast<LONG_PTR>(::GetPropW(edit, kProperty));
}
int stripOf(HWND edit) noexcept {
    return LOWORD(propertyOf(edit));
}

int textHeight(HWND edit) noexcept {
    const WindowDc dc(edit);
    const SelectScope font(dc.get(),
                           reinterpret_cast<HFONT>(::SendMessageW(edit, WM_GETFONT, 0, 0)));
    TEXTMETRICW metrics{};
    ::GetTextMetricsW(dc.get(), &metrics);
    return static_cast<int>(metrics.tmHeight);
}

/// The free strip that the control wants; `strip` is what it has.
int wantedStrip(HWND edit, int strip, int height) noexcept {
    RECT window;
    ::GetWindowRect(edit, &window);
    RECT text{};
    ::SendMessageW(edit, EM_GETRECT, 0, reinterpret_cast<LPARAM>(&text));
    POINT corner{text.left, text.top};
    ::ClientToScreen(edit, &corner);
    const int from = static_cast<int>(corner.y - window.top) - strip;
    const int middle = ((height > 0 ? height : heightOf(window)) - textHeight(edit)) / 2;
    return std::clamp(middle - from, 0, 0x7FFF);
}

// Between border and client area, in the color that the control has within.
void paintStrip(HWND edit, int strip) noexcept {
    RECT window, client;
    ::GetWindowRect(edit, &window);
    ::GetClientRect(edit, &client);
    POINT corner{};
    ::ClientToScreen(edit, &corner);
    const LONG left = corner.x - window.left;
    const LONG bottom = corner.y - window.top;
    const RECT area{left, bottom - strip, left + client.right, bottom};
    const HDC dc = ::GetWindowDC(edit);
    if (!dc) return;
    const bool readOnly =
        !::IsWindowEnabled(edit) || (::GetWindowLongW(edit, GWL_STYLE) & ES_READONLY);
    auto brush = reinterpret_cast<HBRUSH>(
        ::SendMessageW(::GetParent(edit), readOnly ? WM_CTLCOLORSTATIC : WM_CTLCOLOREDIT,
                       reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(edit)));
    if (!brush) brush = ::GetSysColorBrush(readOnly ? COLOR_BTNFACE : COLOR_WINDOW);
    ::FillRect(dc, &area, brush);
    ::ReleaseDC(edit, dc);
}

LRESULT CALLBACK procedure(HWND edit, UINT message, WPARAM wParam, LPARAM lParam, UINT_PTR id,
                           DWORD_PTR) {
    if (message == WM_NCDESTROY) {
        ::RemovePropW(edit, kProperty);
        ::RemoveWindowSubclass(edit, procedure, id);
    }
    const LRESULT result = ::DefSubclassProc(edit, message, wParam, lParam);
    switch (message) {
        case WM_NCCALCSIZE:
            // The rectangle comes first in both structures that the message may have.
            reinterpret_cast<RECT*>(lParam)->top += stripOf(edit);
            break;
        case WM_NCPAINT:
            paintStrip(edit, stripOf(edit));
            break;
        case WM_NCHITTEST:
            // A click above the text is one on its first line.
            if (result != HTTRANSPARENT) return HTCLIENT;
            break;
        case WM_ENABLE:
        case EM_SETREADONLY:
            ::RedrawWindow(edit, nullptr, nullptr, RDW_FRAME | RDW_INVALIDATE);
            break;
        case WM_SETFONT:
        case WM_SIZE:
            if (const int height = HIWORD(propertyOf(edit)); message == WM_SETFONT || height == 0)
                centreText(edit, height);
            break;
        default:
            break;
    }
    return result;
}

}  // namespace

void centreText(HWND edit, int height) noexcept {
    const int strip = stripOf(edit);
    const int wanted = wantedStrip(edit, strip, height);
    const auto property = reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(MAKELONG(wanted, height)));
    if (!::SetPropW(edit, kProperty, property) ||
        !::SetWindowSubclass(edit, procedure, kSubclass, 0))
        return;
    if (wanted != strip)
        ::SetWindowPos(edit, nullptr, 0, 0, 0, 0,
                       SWP_FRAMECHANGED | SWP_NOMOVE | SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
}

}  // namespace framework
