#include <base/file.h>
#include <base/paths.h>
#include <base/replacefile.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <random>
#include <system_error>

#include "replacing.h"

namespace base {

namespace {

[[noreturn]] void refuse(const std::string& path, std::error_code reason) {
    throw std::system_error(reason, "cannot write " + path);
}

/// A short name, since the file to replace may have the longest there can be.
std::filesystem::path temporaryName() {
    std::random_device random;
    char name[24];
    std::snprintf(name, sizeof name, "~%08x%08x.tmp", random(), random());
    return name;
}

}  // namespace

FileReplacement::FileReplacement(const std::string& path) : path_(path) {
    std::error_code reason;
    target_ = replacing::targetOf(pathFrom(path), reason);
    if (!reason) replacing::check(target_, reason);
    constexpr int kMostTries = 100;
    for (int tries = 0; !reason && name_.empty() && tries < kMostTries; ++tries) {
        temporary_ = target_.parent_path() / temporaryName();
        if (replacing::create(temporary_, target_, reason)) name_ = textOf(temporary_);
        if (reason == std::errc::file_exists && tries + 1 < kMostTries) reason.clear();
    }
    if (reason) refuse(path_, reason);
}

FileReplacement::~FileReplacement() {
    std::error_code ignored;
    if (!name_.empty()) std::filesystem::remove(temporary_, ignored);
}

void FileReplacement::takePlace() {
    std::error_code reason;
    replacing::check(target_, reason);
    if (!reason) replacing::flush(temporary_, target_, reason);
    if (!reason) replacing::rename(temporary_, target_, reason);
    if (reason) refuse(path_, reason);
    name_.clear();
}

ReplacementWriter::ReplacementWriter(const std::string& path) : path_(path), replacement_(path) {
    errno = 0;
    file_ = openFile(pathFrom(replacement_.name()), true);
    if (!file_) refuseWriting();
}

void ReplacementWriter::refuseWriting() const {
    refuse(path_, std::error_code(errno != 0 ? errno : EIO, std::generic_category()));
}

void ReplacementWriter::write(std::string_view bytes) {
    errno = 0;
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) refuseWriting();
}

void ReplacementWriter::takePlace() {
    errno = 0;
    if (std::fclose(file_.release()) != 0) refuseWriting();
    replacement_.takePlace();
}

void replaceFile(const std::string& path, std::string_view bytes) {
    ReplacementWriter writer(path);
    writer.write(bytes);
    writer.takePlace();
}

}  // namespace base
