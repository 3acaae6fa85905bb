#include <base/filereads.h>

#include <system_error>

namespace base {

namespace {

FileReads* theListener = nullptr;

}  // namespace

FileReads::FileReads() {
    theListener = this;
}
FileReads::~FileReads() {
    theListener = nullptr;
}

void FileReads::note(const std::filesystem::path& path) noexcept {
    if (theListener == nullptr) return;
    try {
        const auto [entry, isNew] = theListener->files_.try_emplace(
            std::filesystem::absolute(path).lexically_normal(), std::nullopt);
        if (!isNew) return;
        std::error_code missing;
        const Time time = std::filesystem::last_write_time(path, missing);
        if (!missing) entry->second = time;
    } catch (...) {
        theListener->areComplete_ = false;
    }
}

}  // namespace base
