#include <base/file.h>
#include <base/filereads.h>
#include <base/paths.h>

#include <cerrno>

namespace base {

File openFile(const std::filesystem::path& path, bool forWriting) noexcept {
    if (!forWriting) FileReads::note(path);
#ifdef _WIN32
    return File(_wfopen(path.c_str(), forWriting ? L"wb" : L"rb"));
#else
    return File(std::fopen(path.c_str(), forWriting ? "wb" : "rb"));
#endif
}

bool isFile(const std::filesystem::path& path) noexcept {
    FileReads::note(path);
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

std::error_code readFile(const std::string& path, std::string& bytes) {
    const auto lastError = [] { return std::error_code(errno, std::generic_category()); };
    const File file = openFile(pathFrom(path), false);
    if (!file) return lastError();
    bytes.clear();
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get()))
        bytes.append(buffer, count);
    return std::ferror(file.get()) ? lastError() : std::error_code();
}

}  // namespace base
