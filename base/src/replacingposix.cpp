#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "replacing.h"

namespace base::replacing {

namespace {

constexpr int kMostLinks = 40;

std::error_code lastError() {
    return {errno, std::generic_category()};
}

/// An open file's number.
class Descriptor {
public:
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int get() const { return number_; }
    explicit operator bool() const { return number_ >= 0; }

private:
    int number_;
};

bool exists(const std::filesystem::path& path, struct ::stat& status, std::error_code& reason) {
    if (::stat(path.c_str(), &status) == 0) return true;
    if (errno != ENOENT) reason = lastError();
    return false;
}

std::filesystem::path folderOf(const std::filesystem::path& path) {
    return path.has_parent_path() ? path.parent_path() : ".";
}

}  // namespace

std::filesystem::path targetOf(std::filesystem::path path, std::error_code& reason) {
    std::error_code none;
    for (int links = 0; std::filesystem::is_symlink(path, none); ++links) {
        if (links == kMostLinks)
            reason = std::make_error_code(std::errc::too_many_symbolic_link_levels);
        if (reason) break;
        path = path.parent_path() / std::filesystem::read_symlink(path, reason);
    }
    return path;
}

void check(const std::filesystem::path& target, std::error_code& reason) {
    struct ::stat status {};
    if (!exists(target, status, reason)) return;
    constexpr mode_t kWritable = S_IWUSR | S_IWGRP | S_IWOTH;
    if (S_ISDIR(status.st_mode))
        reason = std::make_error_code(std::errc::is_a_directory);
    else if (!S_ISREG(status.st_mode))
        reason = std::make_error_code(std::errc::invalid_argument);
    else if ((status.st_mode & kWritable) == 0)  // which does not keep the superuser from writing
        reason = std::make_error_code(std::errc::permission_denied);
    else if (::faccessat(AT_FDCWD, target.c_str(), W_OK, AT_EACCESS) != 0)
        reason = lastError();
}

bool create(const std::filesystem::path& temporary, const std::filesystem::path& target,
            std::error_code& reason) {
    struct ::stat status {};
    const mode_t mode = exists(target, status, reason) ? 0600 : 0666;
    if (reason) return false;
    const Descriptor file(::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode));
    if (!file) reason = lastError();
    return static_cast<bool>(file);
}

void flush(const std::filesystem::path& temporary, const std::filesystem::path& target,
           std::error_code& reason) {
    struct ::stat status {};
    const bool replaces = exists(target, status, reason);
    if (reason) return;
    const Descriptor file(::open(temporary.c_str(), O_WRONLY | O_CLOEXEC));
    if (!file) {
        reason = lastError();
        return;
    }
    if (replaces) {
        // Only the superuser can give a file away; others keep what they write.
        if (::fchown(file.get(), status.st_uid, status.st_gid) != 0) errno = 0;
        if (::fchmod(file.get(), status.st_mode & 07777) != 0) reason = lastError();
    }
    if (!reason && ::fsync(file.get()) != 0) reason = lastError();
}

void rename(const std::filesystem::path& temporary, const std::filesystem::path& target,
            std::error_code& reason) {
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        reason = lastError();
        return;
    }
    // The name too; where the system cannot, the file is still one of the two.
    const Descriptor folder(::open(folderOf(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folder) ::fsync(folder.get());
}

}  // namespace base::replacing
