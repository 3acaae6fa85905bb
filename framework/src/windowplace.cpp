#include <framework/windowplace.h>

namespace framework {

namespace {

constexpr wchar_t kKey[] = L"Software\\Tessera\\Windows";

}  // namespace

void keepWindowPlace(HWND window, const std::wstring& name) noexcept {
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    if (!::GetWindowPlacement(window, &placement)) return;
    const RECT& area = placement.rcNormalPosition;
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kKey, name.c_str(), REG_BINARY, &area, sizeof area);
}

bool restoreWindowPlace(HWND window, const std::wstring& name) noexcept {
    RECT area{};
    DWORD size = sizeof area;
    if (::RegGetValueW(HKEY_CURRENT_USER, kKey, name.c_str(), RRF_RT_REG_BINARY, nullptr, &area,
                       &size) != ERROR_SUCCESS ||
        size != sizeof area || area.left >= area.right || area.top >= area.bottom ||
        ::MonitorFromRect(&area, MONITOR_DEFAULTTONULL) == nullptr)
        return false;
    WINDOWPLACEMENT placement{};
    placement.length = sizeof placement;
    if (!::GetWindowPlacement(window, &placement)) return false;
    placement.rcNormalPosition = area;
    placement.showCmd = SW_HIDE;  // whoever made the window shows it
    return ::SetWindowPlacement(window, &placement) != FALSE;
}

}  // namespace framework
