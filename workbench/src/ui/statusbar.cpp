#include "statusbar.h"

#include "look.h"

#include <base/utf16.h>

#include <algorithm>

using framework::SelectScope, framework::WindowDc, framework::heightOf;

namespace workbench {

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
    static constexpr int kLeast[kPartCount] = {0, 170, 110, 220, 90};
    width_ = width;
    Send(WM_SIZE);
    int edges[kPartCount];
    int right = width - ::GetSystemMetrics(SM_CXVSCROLL);
    for (int part = kPartCount - 1; part >= 0; --part) {
        edges[part] = right;
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
    if (part != kMessage && part != kSelection) place(width_);
}

// With the space before it, the border of its part and some air.
int StatusBar::widthOfText(Part part) const {
    const WindowDc dc(Handle());
    const SelectScope font(dc.get(), Look::of(Handle()).normal());
    const std::wstring text = base::toWide(" " + texts_[part]);
    SIZE size;
    ::GetTextExtentPoint32W(dc.get(), text.c_str(), static_cast<int>(text.size()), &size);
    return static_cast<int>(size.cx) + Scaled(20);
}

}  // namespace workbench
