#include <base/paths.h>

#ifdef _WIN32
#include <base/utf16.h>
#endif

namespace base {

#ifdef _WIN32

std::filesystem::path pathFrom(std::string_view utf8) {
    return toWide(utf8);
}

std::string textOf(const std::filesystem::path& path) {
    return toUtf8(path.native());
}

std::string genericTextOf(const std::filesystem::path& path) {
    return toUtf8(path.generic_wstring());
}

#else

std::filesystem::path pathFrom(std::string_view utf8) {
    return utf8;
}

std::string textOf(const std::filesystem::path& path) {
    return path.native();
}

std::string genericTextOf(const std::filesystem::path& path) {
    return path.generic_string();
}

#endif

}  // namespace base
