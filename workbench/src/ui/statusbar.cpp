#include "statusbar.h"

#include "look.h"

#include <base/utf16.h>

using framework::heightOf;

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
    static constexpr int kWidths[kPartCount] = {0, 170, 110, 220, 90};
    Send(WM_SIZE);
    int edges[kPartCount];
    int right = width - ::GetSystemMetrics(SM_CXVSCROLL);
    for (int part = kPartCount - 1; part >= 0; --part) {
        edges[part] = right;
        right -= Scaled(kWidths[part]);
    }
    Send(SB_SETPARTS, kPartCount, reinterpret_cast<LPARAM>(edges));
}

void StatusBar::setText(Part part, const std::string& text) {
    if (texts_[part] == text) return;
    texts_[part] = text;
    const std::wstring wide = base::toWide(" " + text);
    Send(SB_SETTEXTW, part, reinterpret_cast<LPARAM>(wide.c_str()));
}

}  // namespace workbench
