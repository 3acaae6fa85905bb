#include "fltfile.h"

#include <quillon/fltreplacefile.h>

#include <random>
#include <system_error>

namespace {

// Renaming would replace a file whose owner does not want it to change.
bool isProtected(const std::filesystem::path& path) {
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::status(path, ignored);
    constexpr auto kWritable = std::filesystem::perms::owner_write |
                               std::filesystem::perms::group_write |
                               std::filesystem::perms::others_write;
    return std::filesystem::exists(status) &&
           (status.permissions() & kWritable) == std::filesystem::perms::none;
}

}  // namespace

FltReplaceFile::FltReplaceFile(const std::string& path) : path_(path) {
    std::random_device random;
    std::error_code ignored;
    do {
        name_ = path + "." + std::to_string(random()) + ".tmp";
    } while (std::filesystem::exists(quillon::nativePath(name_), ignored));
}

FltReplaceFile::~FltReplaceFile() {
    std::error_code ignored;
    std::filesystem::remove(quillon::nativePath(name_), ignored);
}

void FltReplaceFile::takePlace() {
    const std::filesystem::path path = quillon::nativePath(path_);
    std::error_code reason;
    if (isProtected(path)) {
        reason = std::make_error_code(std::errc::permission_denied);
    } else {
        std::filesystem::rename(quillon::nativePath(name_), path, reason);
    }
    if (reason) throw std::system_error(reason, "cannot write " + path_);
}
