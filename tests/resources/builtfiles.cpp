#include "builtfiles.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace {

std::wstring windowsPath(std::wstring path) {
    std::replace(path.begin(), path.end(), L'/', L'\\');
    return std::wstring(L"Z:").append(path);
}

HMODULE loadAsData(const std::wstring& path) {
    return LoadLibraryExW(path.c_str(), nullptr,
                          LOAD_LIBRARY_AS_DATAFILE | LOAD_LIBRARY_AS_IMAGE_RESOURCE);
}

// The bytes of a program file, addressed as they lie in memory when it is loaded.
class Image {
public:
    explicit Image(const std::wstring& path) {
        std::ifstream file(std::filesystem::path(path), std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
        const auto dos = readAt<IMAGE_DOS_HEADER>(0);
        if (dos.e_magic != IMAGE_DOS_SIGNATURE) throw std::runtime_error("no program file");
        const auto start = static_cast<std::size_t>(dos.e_lfanew);
        headers_ = readAt<IMAGE_NT_HEADERS64>(start);
        const std::size_t sections = start + offsetof(IMAGE_NT_HEADERS64, OptionalHeader) +
                                     headers_.FileHeader.SizeOfOptionalHeader;
        for (std::size_t i = 0; i < headers_.FileHeader.NumberOfSections; ++i)
            sections_.push_back(
                readAt<IMAGE_SECTION_HEADER>(sections + i * sizeof(IMAGE_SECTION_HEADER)));
    }

    const IMAGE_NT_HEADERS64& headers() const { return headers_; }
    IMAGE_DATA_DIRECTORY directory(int index) const {
        return headers_.OptionalHeader.DataDirectory[index];
    }

    template <typename T>
    T at(std::size_t address) const {
        return readAt<T>(offsetOf(address));
    }

    std::string textAt(std::size_t address) const {
        std::string text;
        for (std::size_t at = offsetOf(address); bytes_.at(at) != 0; ++at) text += bytes_[at];
        return text;
    }

private:
    template <typename T>
    T readAt(std::size_t offset) const {
        if (bytes_.size() < sizeof(T) || offset > bytes_.size() - sizeof(T))
            throw std::runtime_error("the program file ends early");
        T value;
        std::memcpy(&value, bytes_.data() + offset, sizeof value);
        return value;
    }

    std::size_t offsetOf(std::size_t address) const {
        for (const IMAGE_SECTION_HEADER& section : sections_)
            if (address >= section.VirtualAddress &&
                address < section.VirtualAddress + section.SizeOfRawData)
                return address - section.VirtualAddress + section.PointerToRawData;
        throw std::runtime_error("an address outside of all sections");
    }

    std::vector<char> bytes_;
    IMAGE_NT_HEADERS64 headers_{};
    std::vector<IMAGE_SECTION_HEADER> sections_;
};

std::set<std::string> exportsOf(const Image& image) {
    std::set<std::string> names;
    const auto place = image.directory(IMAGE_DIRECTORY_ENTRY_EXPORT);
    if (place.Size == 0) return names;
    const auto table = image.at<IMAGE_EXPORT_DIRECTORY>(place.VirtualAddress);
    for (std::size_t i = 0; i < table.NumberOfNames; ++i)
        names.insert(image.textAt(image.at<DWORD>(table.AddressOfNames + i * sizeof(DWORD))));
    return names;
}

std::set<std::string> importsOf(const Image& image) {
    std::set<std::string> names;
    const auto place = image.directory(IMAGE_DIRECTORY_ENTRY_IMPORT);
    if (place.Size == 0) return names;
    for (std::size_t at = place.VirtualAddress;; at += sizeof(IMAGE_IMPORT_DESCRIPTOR)) {
        const auto entry = image.at<IMAGE_IMPORT_DESCRIPTOR>(at);
        if (entry.Name == 0) return names;
        std::string name = image.textAt(entry.Name);
        std::transform(name.begin(), name.end(), name.begin(),
                       [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
        names.insert(name);
    }
}

BOOL CALLBACK collectName(HMODULE, const wchar_t*, wchar_t* name, LONG_PTR found) {
    reinterpret_cast<std::set<std::string>*>(found)->insert(
        IS_INTRESOURCE(name) ? std::string("#").append(std::to_string(LOWORD(name))) : utf8(name));
    return TRUE;
}

constexpr unsigned kBlock = 16;  // strings are stored by sixteen

}  // namespace

std::wstring modulePath() {
    return windowsPath(L"" MODULE_FILE);
}

std::wstring captionPath() {
    return windowsPath(L"" CAPTION_FILE);
}

HMODULE moduleFile() {
    static const HMODULE file = loadAsData(modulePath());
    return file;
}

HMODULE captionFile() {
    static const HMODULE file = loadAsData(captionPath());
    return file;
}

HMODULE interchangeFile() {
    static const HMODULE file = loadAsData(windowsPath(L"" INTERCHANGE_FILE));
    return file;
}

HMODULE checksFile() {
    static const HMODULE file = loadAsData(windowsPath(L"" CHECKS_FILE));
    return file;
}

HMODULE palettesFile() {
    static const HMODULE file = loadAsData(windowsPath(L"" PALETTES_FILE));
    return file;
}

HMODULE workbenchFile() {
    static const HMODULE file = loadAsData(windowsPath(L"" WORKBENCH_FILE));
    return file;
}

HMODULE coreFile() {
    static const HMODULE file = loadAsData(windowsPath(L"" CORE_FILE));
    return file;
}

HMODULE kilnbatchFile() {
    static const HMODULE file = loadAsData(windowsPath(L"" KILNBATCH_FILE));
    return file;
}

std::span<const std::byte> resourceBytes(HMODULE file, const wchar_t* type, const wchar_t* name,
                                         WORD language) {
    const HRSRC found = FindResourceExW(file, type, name, language);
    if (found == nullptr) return {};
    const void* data = LockResource(LoadResource(file, found));
    return {static_cast<const std::byte*>(data), SizeofResource(file, found)};
}

std::span<const std::byte> resourceBytes(const wchar_t* type, const wchar_t* name, WORD language) {
    return resourceBytes(moduleFile(), type, name, language);
}

std::set<std::string> resourceNames(HMODULE file, const wchar_t* type) {
    std::set<std::string> names;
    EnumResourceNamesW(file, type, collectName, reinterpret_cast<LONG_PTR>(&names));
    return names;
}

std::set<unsigned> stringIds(HMODULE file, WORD language) {
    std::set<unsigned> ids;
    for (const std::string& block : resourceNames(file, RT_STRING)) {
        const unsigned first = (static_cast<unsigned>(std::stoul(block.substr(1))) - 1) * kBlock;
        for (unsigned id = first; id < first + kBlock; ++id)
            if (!stringResource(file, id, language).empty()) ids.insert(id);
    }
    return ids;
}

std::string stringResource(HMODULE file, unsigned id, WORD language) {
    const auto bytes = resourceBytes(file, RT_STRING, MAKEINTRESOURCEW(id / kBlock + 1), language);
    const auto* at = reinterpret_cast<const wchar_t*>(bytes.data());
    const wchar_t* const end = at + bytes.size() / sizeof(wchar_t);
    for (unsigned skipped = 0; at < end; ++skipped, at += 1 + *at)
        if (skipped == id % kBlock) return utf8({at + 1, at + 1 + *at});
    return {};
}

ProgramFile readProgramFile(const std::wstring& path) {
    const Image image(path);
    const IMAGE_FILE_HEADER& header = image.headers().FileHeader;
    return {header.Machine == IMAGE_FILE_MACHINE_AMD64 &&
                (header.Characteristics & IMAGE_FILE_DLL) != 0,
            exportsOf(image), importsOf(image)};
}

std::string utf8(const std::wstring& text) {
    const int length = static_cast<int>(text.size());
    const int size =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string result(static_cast<std::size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), length, result.data(), size, nullptr, nullptr);
    return result;
}
