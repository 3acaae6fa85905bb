#include <windows.h>

#include <string>
#include <vector>

#include "replacing.h"

namespace base::replacing {

namespace {

constexpr DWORD kLongestPath = 32768;

std::error_code lastError() {
    return {static_cast<int>(::GetLastError()), std::system_category()};
}

/// An open handle.
class Handle {
public:
    explicit Handle(HANDLE handle) : handle_(handle) {}
    ~Handle() {
        if (*this) ::CloseHandle(handle_);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    HANDLE get() const { return handle_; }
    explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE; }

private:
    HANDLE handle_;
};

bool exists(const std::filesystem::path& path, DWORD& attributes, std::error_code& reason) {
    attributes = ::GetFileAttributesW(path.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES) return true;
    const DWORD error = ::GetLastError();
    if (error != ERROR_FILE_NOT_FOUND && error != ERROR_PATH_NOT_FOUND) reason = lastError();
    return false;
}

/// Who may do what with a file, if the file system knows; what a new file has then stays.
void copyAccess(const std::filesystem::path& from, const std::filesystem::path& to) {
    DWORD size = 0;
    ::GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, nullptr, 0, &size);
    std::vector<BYTE> access(size);
    if (size != 0 &&
        ::GetFileSecurityW(from.c_str(), DACL_SECURITY_INFORMATION, access.data(), size, &size))
        ::SetFileSecurityW(to.c_str(), DACL_SECURITY_INFORMATION, access.data());
}

}  // namespace

std::filesystem::path targetOf(std::filesystem::path path, std::error_code& reason) {
    DWORD attributes = 0;
    if (!exists(path, attributes, reason) || !(attributes & FILE_ATTRIBUTE_REPARSE_POINT))
        return path;
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const Handle file(::CreateFileW(path.c_str(), 0, kShare, nullptr, OPEN_EXISTING,
                                    FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    std::wstring target(kLongestPath, L'\0');
    const DWORD length =
        file ? ::GetFinalPathNameByHandleW(file.get(), target.data(), kLongestPath, 0) : 0;
    if (length == 0 || length >= kLongestPath) {
        reason = lastError();
        return path;
    }
    target.resize(length);
    return target;
}

void check(const std::filesystem::path& target, std::error_code& reason) {
    DWORD attributes = 0;
    if (!exists(target, attributes, reason)) return;
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        reason = std::make_error_code(std::errc::is_a_directory);
    else if (attributes & FILE_ATTRIBUTE_READONLY)
        reason = std::make_error_code(std::errc::permission_denied);
}

bool create(const std::filesystem::path& temporary, const std::filesystem::path&,
            std::error_code& reason) {
    const Handle file(::CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file) reason = lastError();
    return static_cast<bool>(file);
}

void flush(const std::filesystem::path& temporary, const std::filesystem::path& target,
           std::error_code& reason) {
    {
        const Handle file(::CreateFileW(temporary.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                        FILE_ATTRIBUTE_NORMAL, nullptr));
        if (!file || !::FlushFileBuffers(file.get())) reason = lastError();
    }
    DWORD attributes = 0;
    if (reason || !exists(target, attributes, reason)) return;
    copyAccess(target, temporary);
    constexpr DWORD kKept =
        FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    if (!::SetFileAttributesW(temporary.c_str(), (attributes & kKept) | FILE_ATTRIBUTE_ARCHIVE))
        reason = lastError();
}

void rename(const std::filesystem::path& temporary, const std::filesystem::path& target,
            std::error_code& reason) {
    // The platform's call for replacing files can leave none under the name when it fails half-way.
    if (!::MoveFileExW(temporary.c_str(), target.c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        reason = lastError();
}

}  // namespace base::replacing
