#include <base/filelock.h>
#include <base/paths.h>

#ifdef _WIN32
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#endif

namespace base {

#ifdef _WIN32

// Nobody else can open a file that is shared with nobody.
std::optional<FileLock> FileLock::take(const std::string& path) {
    const HANDLE file = ::CreateFileW(pathFrom(path).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                      nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) return std::nullopt;
    return FileLock(reinterpret_cast<Handle>(file));
}

FileLock::~FileLock() {
    if (handle_ != kNone) ::CloseHandle(reinterpret_cast<HANDLE>(handle_));
}

#else

std::optional<FileLock> FileLock::take(const std::string& path) {
    const int file = ::open(pathFrom(path).c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (file < 0) return std::nullopt;
    if (::flock(file, LOCK_EX | LOCK_NB) == 0) return FileLock(file);
    ::close(file);
    return std::nullopt;
}

FileLock::~FileLock() {
    if (handle_ != kNone) ::close(static_cast<int>(handle_));
}

#endif

}  // namespace base
