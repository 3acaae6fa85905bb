// The captions in the resource library beside the module.
#include <fltkilnutil/captions.h>
#include <kiln/interface.h>
#include <windows.h>

#include <memory>
#include <type_traits>

namespace fltkilnutil {

namespace {

/// The longest path that is tried, in characters, terminator included.
constexpr std::size_t kPathSize = 260;
constexpr int kMaxCaption = 256;

struct FreeModule {
    void operator()(HMODULE module) const noexcept { FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

std::wstring toUtf16(const std::string& text) {
    const int length = static_cast<int>(text.size());
    std::wstring wide(text.size(), L'\0');  // UTF-16 never has more units than UTF-8 has bytes
    wide.resize(static_cast<std::size_t>(
        MultiByteToWideChar(CP_UTF8, 0, text.data(), length, wide.data(), length)));
    return wide;
}

std::string toUtf8(const wchar_t* text, int length) {
    constexpr std::size_t kBytesPerUnit = 3;
    std::string narrow(static_cast<std::size_t>(length) * kBytesPerUnit, '\0');
    narrow.resize(static_cast<std::size_t>(
        WideCharToMultiByte(CP_UTF8, 0, text, length, narrow.data(),
                            static_cast<int>(narrow.size()), nullptr, nullptr)));
    return narrow;
}

Module openLibrary() {
    std::string path = GetDir(KILN_PLUGIN_DIR);
    if (path.empty()) return nullptr;  // a bare name would be looked for all over the system
    if (path.back() != '\\' && path.back() != '/') path += '\\';
    const std::wstring widePath = toUtf16(path + kCaptionLibrary);
    if (widePath.size() >= kPathSize) return nullptr;
    return Module(LoadLibraryExW(widePath.c_str(), nullptr,
                                 LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

}  // namespace

CaptionReader openCaptionLibrary() {
    const std::shared_ptr<std::remove_pointer_t<HMODULE>> library = openLibrary();
    if (library == nullptr) return {};
    return [library](std::uint32_t id, std::string& text) {
        wchar_t caption[kMaxCaption + 1];
        const int length = LoadStringW(library.get(), id, caption, kMaxCaption + 1);
        if (length <= 0) return false;
        text = toUtf8(caption, length);
        return true;
    };
}

}  // namespace fltkilnutil
