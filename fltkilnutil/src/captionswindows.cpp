// The captions in the resource library beside the module.
#include <base/resources.h>
#include <base/utf16.h>
#include <fltkilnutil/captions.h>
#include <kiln/interface.h>
#include <windows.h>

#include <memory>
#include <type_traits>

namespace fltkilnutil {

namespace {

/// The longest path that is tried, in characters, terminator included.
constexpr std::size_t kPathSize = 260;
constexpr std::size_t kMaxCaption = 256;

struct FreeModule {
    void operator()(HMODULE module) const noexcept { FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, FreeModule>;

Module openLibrary() {
    std::string path = GetDir(KILN_PLUGIN_DIR);
    if (path.empty()) return nullptr;  // a bare name would be looked for all over the system
    if (path.back() != '\\' && path.back() != '/') path += '\\';
    const std::wstring widePath = base::toWide(path + kCaptionLibrary);
    if (widePath.size() >= kPathSize) return nullptr;
    return Module(LoadLibraryExW(widePath.c_str(), nullptr,
                                 LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE));
}

}  // namespace

CaptionReader openCaptionLibrary() {
    const std::shared_ptr<std::remove_pointer_t<HMODULE>> library = openLibrary();
    if (library == nullptr) return {};
    return [library](base::Language language, std::uint32_t id, std::string& text) {
        const std::wstring_view caption = base::findString(library.get(), id, language);
        if (caption.empty()) return false;
        text = base::toUtf8(caption.substr(0, kMaxCaption));
        return true;
    };
}

}  // namespace fltkilnutil
