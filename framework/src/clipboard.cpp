#include <base/utf16.h>
#include <framework/clipboard.h>

#include <cstring>

namespace framework {

namespace {

class OpenClipboardScope {
public:
    explicit OpenClipboardScope(HWND owner) noexcept : open_(::OpenClipboard(owner)) {}
    ~OpenClipboardScope() {
        if (open_) ::CloseClipboard();
    }
    OpenClipboardScope(const OpenClipboardScope&) = delete;
    OpenClipboardScope& operator=(const OpenClipboardScope&) = delete;
    explicit operator bool() const noexcept { return open_; }

private:
    bool open_;
};

}  // namespace

bool putOnClipboard(HWND owner, std::string_view text) {
    const std::wstring wide = base::toWide(text);
    const size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    const OpenClipboardScope clipboard(owner);
    if (!clipboard) return false;
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (!memory) return false;
    if (void* const place = ::GlobalLock(memory)) {
        std::memcpy(place, wide.c_str(), bytes);
        ::GlobalUnlock(memory);
        ::EmptyClipboard();
        if (::SetClipboardData(CF_UNICODETEXT, memory)) return true;
    }
    ::GlobalFree(memory);
    return false;
}

std::string textFromClipboard(HWND owner) {
    const OpenClipboardScope clipboard(owner);
    const HANDLE memory = clipboard ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
    const void* const place = memory ? ::GlobalLock(memory) : nullptr;
    if (!place) return {};
    const std::wstring_view whole(static_cast<const wchar_t*>(place),
                                  ::GlobalSize(memory) / sizeof(wchar_t));
    std::string text = base::toUtf8(whole.substr(0, whole.find(L'\0')));
    ::GlobalUnlock(memory);
    return text;
}

}  // namespace framework
