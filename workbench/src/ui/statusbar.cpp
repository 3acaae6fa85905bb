#include "statusbar.h"

#include "look.h"

#include <base/utf16.h>

#include <algorithm>

using framework::SelectScope, framework::WindowDc, framework::heightOf;

namespace workbench {
namespace {

// Shared: it stays the system's.
HICON warningSign() {
    const int size = ::GetSystemMetrics(SM_CXSMICON);
    return static_cast<HICON>(
        ::LoadImageW(nullptr, MAKEINTRESOURCEW(32515), IMAGE_ICON, size, size, LR_SHARED));
}

}  // namespace

bool StatusBar::Create(HWND parent, UINT id) {
    if (!CreateEx(0, STATUSCLASSNAMEW, "", WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, {0, 0, 0, 0},
                  parent, id))
        return false;
    SetFont(Look::of(Handle()).normal());
    return true;
}

int StatusBar::height() const {
    return heightOf(AreaInParent());
}

void StatusBar::place(int width) {
    static constexpr int kLeast[kPartCount] = {0, 0, 170, 110, 220, 90};
    width_ = width;
    Send(WM_SIZE);
    int edges[kPartCount];
    int right = width - ::GetSystemMetrics(SM_CXVSCROLL);
    for (int part = kPartCount - 1; part >= 0; --part) {
        edges[part] = right;
        if (part == kMissing && texts_[part].empty()) continue;
        const int wanted = part == kSelection ? 0 : widthOfText(static_cast<Part>(part));
        right -= std::max(Scaled(kLeast[part]), wanted);
    }
    Send(SB_SETPARTS, kPartCount, reinterpret_cast<LPARAM>(edges));
}

void StatusBar::setText(Part part, const std::string& text) {
    if (texts_[part] == text) return;
    texts_[part] = text;
    const std::wstring wide = base::toWide(" " + text);
    Send(SB_SETTEXTW, part, reinterpret_cast<LPARAM>(wide.c_str()));
    if (part == kMissing)
        Send(SB_SETICON, part, reinterpret_cast<LPARAM>(text.empty() ? nullptr : warningSign()));
    if (part != kMessage && part != kSelection) place(width_);
}

bool StatusBar::isOver(Part part, POINT screen) const {
    RECT area;
    Send(SB_GETRECT, part, reinterpret_cast<LPARAM>(&area));
    return !texts_[part].empty() && ::PtInRect(&area, ToClient(screen)) != 0;
}

// With the space before it, the border of its part and some air.
int StatusBar::widthOfText(Part part) const {
    const WindowDc dc(Handle());
    const SelectScope font(dc.get(), Look::of(Handle()).normal());
    const std::wstring text = base::toWide(" " + texts_[part]);
    SIZE size;
    ::GetTextExtentPoint32W(dc.get(), text.c_str(), static_cast<int>(text.size()), &size);
    const int sign = part == kMissing ? ::GetSystemMetrics(SM_CXSMICON) : 0;
    return static_cast<int>(size.cx) + sign + Scaled(20);
}

}  // namespace workbench
