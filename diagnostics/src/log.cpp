#include <base/file.h>
#include <diagnostics/log.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

namespace diagnostics {

namespace {

std::string logPath() {
    const char* drive = std::getenv("SystemDrive");
    return std::string(drive ? drive : "") + "\\Aviary.log";
}

int append(const char* format, std::va_list arguments) {
    const base::File file(std::fopen(logPath().c_str(), "a"));
    if (!file) return 0;
    // The analyzer does not see that callers have started the list.
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized)
    const int written = std::vfprintf(file.get(), format, arguments);
    return written < 0 ? 0 : written;
}

}  // namespace

int log(const char* format, ...) noexcept {
    std::va_list arguments;
    va_start(arguments, format);
    int written = 0;
    try {
        written = append(format, arguments);
    } catch (...) {
        // Only building the path can throw, for want of memory; the line is lost like any line
        // that cannot be written.
    }
    va_end(arguments);
    return written;
}

void logCurrentException(const char* sourceFile, int guardLine) noexcept {
    try {
        throw;
    } catch (const AviaryAssertion& assertion) {
        log("Assertion failed in %s at %d\n", assertion.file, assertion.line);
    } catch (...) {
        log("Exception in %s at %d\n", sourceFile, guardLine);
    }
}

void noteCurrentException() noexcept {
    Guard* const guard = Guard::innermost_;
    if (guard && !guard->noted_) guard->noted_ = std::current_exception();
}

bool Guard::reportNoted(const char* sourceFile, int guardLine) noexcept {
    if (!noted_) return false;
    if (outer_ && !logsItself_) {
        if (!outer_->noted_) outer_->noted_ = noted_;
        return true;
    }
    try {
        std::rethrow_exception(noted_);
    } catch (...) {
        logCurrentException(sourceFile, guardLine);
    }
    return true;
}

}  // namespace diagnostics
