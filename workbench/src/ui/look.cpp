#include "look.h"

#include <map>

using framework::windowDpi;

namespace workbench {
namespace {

HFONT makeFont(int dpi, int tenthPoints, int weight, const wchar_t* face) {
    return ::CreateFontW(-::MulDiv(tenthPoints, dpi, 720), 0, 0, 0, weight, FALSE, FALSE, FALSE,
                         DEFAULT_CHARSET, OUT_DEFAULT_PRECIS, CLIP_DEFAULT_PRECIS,
                         CLEARTYPE_QUALITY, DEFAULT_PITCH | FF_DONTCARE, face);
}

}  // namespace

Look::Look(int dpi)
    : normal_(makeFont(dpi, 83, FW_NORMAL, L"Tahoma")),
      bold_(makeFont(dpi, 83, FW_BOLD, L"Tahoma")),
      script_(makeFont(dpi, 90, FW_NORMAL, L"Tahoma")) {}

const Look& Look::of(HWND window) {
    static std::map<int, Look> looks;
    const int dpi = windowDpi(window);
    return looks.try_emplace(dpi, dpi).first->second;
}

}  // namespace workbench
