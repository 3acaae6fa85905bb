#include <interchange/import.h>
#include "../texts.h"

#include <kiln/kiln.h>
#include <quillon/fltfilereader.h>
#include <tessera/iaviaryutil.h>

#include <exception>
#include <new>
#include <string_view>
#include <system_error>

namespace interchange {

namespace {

std::string_view fileNameOf(std::string_view path) {
    return path.substr(path.find_last_of("/\\:") + 1);
}

/// Tells Aviary, if it is loaded, which file was read.
void tellAviary(const std::string& fileName) {
    FPInterface* aviary = GetCOREInterface(kAviaryInterfaceId);
    if (aviary != nullptr) static_cast<IAviaryUtil*>(aviary)->SetLastImport(fileName.c_str());
}

ImpExpCause causeOf(const FltFileError& error) {
    switch (error.cause()) {
        case FltFileError::Cause::kTruncated:
            return ImpExpCause::kTruncated;
        case FltFileError::Cause::kUnsupportedRevision:
            return ImpExpCause::kVersion;
        default:
            return ImpExpCause::kDamaged;
    }
}

void readInto(std::string_view path, ImpExpReport& report, Interface& host) {
    const std::string fileName(fileNameOf(path));
    const FltFileBytes file = FltFileBytes::load(std::string(path));
    FileIndex index;
    try {
        index = readFileIndex(file.bytes());
        buildScene(index, fileName, report, host);
    } catch (const FltFileError& error) {
        report.Cause(causeOf(error));
        throw FltFileError(text(TextId::kOfFile, {fileName, error.what()}), error.offset(),
                           error.cause());
    }
    report.Progress(1, text(TextId::kBuildingScene).c_str());
    report.Summary(summaryOf(index).c_str());
    if (!report.IsReference()) tellAviary(fileName);
}

/// Tells what went wrong, as far as it knows; the report is the host's and may throw.
int importReported(const char* path, ImpExpReport& report, Interface& host) {
    try {
        readInto(path, report, host);
        return IMPEXP_SUCCESS;
    } catch (const Cancelled&) {
        return IMPEXP_CANCEL;
    } catch (const std::bad_alloc&) {
        report.Error(text(TextId::kNoMemoryToRead).c_str());
        report.Cause(ImpExpCause::kOutOfMemory);
    } catch (const std::system_error& error) {
        report.Error(text(TextId::kCannotRead, {path, error.code().message()}).c_str());
        report.Cause(ImpExpCause::kUnreadable);
    } catch (const std::exception& error) {
        report.Error(error.what());
    } catch (...) {
        report.Error(text(TextId::kNotRead).c_str());
    }
    return IMPEXP_FAIL;
}

}  // namespace

int importFile(const char* path, ImpExpReport& report, Interface& host) noexcept {
    try {
        return importReported(path == nullptr ? "" : path, report, host);
    } catch (...) {
        return IMPEXP_FAIL;
    }
}

}  // namespace interchange
