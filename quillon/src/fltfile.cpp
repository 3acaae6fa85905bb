#include "fltfile.h"

namespace quillon {

std::filesystem::path nativePath(const std::string& text) {
    return std::u8string(text.begin(), text.end());
}

std::FILE* openFile(const std::filesystem::path& path, bool forWriting) noexcept {
#ifdef _WIN32
    return _wfopen(path.c_str(), forWriting ? L"wb" : L"rb");
#else
    return std::fopen(path.c_str(), forWriting ? "wb" : "rb");
#endif
}

}  // namespace quillon
