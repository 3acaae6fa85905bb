#include <base/resources.h>

extern "C" IMAGE_DOS_HEADER __ImageBase;  // NOLINT(bugprone-reserved-identifier): the linker's

namespace base {

namespace {

struct Bytes {
    const void* data = nullptr;
    DWORD size = 0;
};

Bytes bytesOf(HMODULE module, HRSRC found) noexcept {
    const HGLOBAL loaded = found ? ::LoadResource(module, found) : nullptr;
    if (!loaded) return {};
    return {::LockResource(loaded), ::SizeofResource(module, found)};
}

Bytes find(HMODULE module, const wchar_t* type, unsigned id, Language language) noexcept {
    return bytesOf(
        module, ::FindResourceExW(module, type, MAKEINTRESOURCEW(id), static_cast<WORD>(language)));
}

Bytes findAny(HMODULE module, const wchar_t* type, unsigned id) noexcept {
    return bytesOf(module, ::FindResourceW(module, MAKEINTRESOURCEW(id), type));
}

constexpr unsigned kTextsInResource = 16;

// A string resource holds sixteen texts one after the other, each behind its length in units.
std::wstring_view textIn(const Bytes& resource, unsigned id) noexcept {
    const auto* at = static_cast<const wchar_t*>(resource.data);
    const wchar_t* const end = at + resource.size / sizeof(wchar_t);
    for (unsigned i = 0; at != end; ++i) {
        const std::size_t length = *at++;
        if (length > static_cast<std::size_t>(end - at)) break;
        if (i == id % kTextsInResource) return {at, length};
        at += length;
    }
    return {};
}

}  // namespace

HMODULE ownModule() noexcept {
    return reinterpret_cast<HMODULE>(&__ImageBase);
}

const void* findResource(HMODULE module, const wchar_t* type, unsigned id,
                         Language language) noexcept {
    for (const Language tried : {language, Language::kChinese})
        if (const Bytes found = find(module, type, id, tried); found.data) return found.data;
    return findAny(module, type, id).data;
}

std::wstring_view findString(HMODULE module, unsigned id, Language language) noexcept {
    const unsigned resource = id / kTextsInResource + 1;
    for (const Language tried : {language, Language::kChinese}) {
        const std::wstring_view text = textIn(find(module, RT_STRING, resource, tried), id);
        if (!text.empty()) return text;
    }
    return textIn(findAny(module, RT_STRING, resource), id);
}

}  // namespace base
