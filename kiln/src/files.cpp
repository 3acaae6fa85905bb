#include "files.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>

#include "text.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace kiln {

namespace {

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

#ifdef _WIN32
File openFile(const std::filesystem::path& path, bool writing) {
    return File(_wfopen(path.c_str(), writing ? L"wb" : L"rb"));
}
bool flushToDisk(std::FILE* file) {
    return std::fflush(file) == 0 && _commit(_fileno(file)) == 0;
}
#else
File openFile(const std::filesystem::path& path, bool writing) {
    return File(std::fopen(path.c_str(), writing ? "wb" : "rb"));
}
bool flushToDisk(std::FILE* file) {
    return std::fflush(file) == 0 && fsync(fileno(file)) == 0;
}
#endif

Status failed(const std::string& path, const char* what, int error) {
    return Status::failure(path + ": cannot be " + what + ": " + std::strerror(error));
}

bool writeWhole(const std::filesystem::path& path, const std::string& text) {
    File file = openFile(path, true);
    return file && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size() &&
           flushToDisk(file.get()) && std::fclose(file.release()) == 0;
}

}  // namespace

Status readFile(const std::string& path, std::string& text) {
    errno = 0;
    const File file = openFile(pathFrom(path), false);
    if (!file) return failed(path, "opened", errno);
    text.clear();
    char buffer[1 << 16];
    while (const std::size_t count = std::fread(buffer, 1, sizeof buffer, file.get()))
        text.append(buffer, count);
    if (std::ferror(file.get())) return failed(path, "read", errno);
    return {};
}

Status replaceFile(const std::string& path, const std::string& text) {
    const std::filesystem::path target = pathFrom(path);
    std::filesystem::path temporary = target;
    temporary += ".saving";
    std::error_code ignored;
    errno = 0;
    if (!writeWhole(temporary, text)) {
        const int error = errno;
        std::filesystem::remove(temporary, ignored);
        return failed(path, "written", error);
    }
    std::error_code error;
    std::filesystem::rename(temporary, target, error);
    if (!error) return {};
    std::filesystem::remove(temporary, ignored);
    return Status::failure(path + ": cannot be replaced: " + error.message());
}

}  // namespace kiln
