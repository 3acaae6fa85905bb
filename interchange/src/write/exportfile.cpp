#include "../sourcerecords.h"
#include "../summary.h"
#include "../texts.h"
#include "databaseheader.h"
#include "plan.h"
#include "scenecollector.h"
#include "scenewriter.h"

#include <base/replacefile.h>
#include <diagnostics/assertion.h>
#include <interchange/export.h>
#include <interchange/import.h>
#include <interchange/textencoding.h>
#include <kiln/kiln.h>
#include <quillon/fltrevision.h>

#include <cerrno>
#include <exception>
#include <new>
#include <system_error>

namespace interchange {

namespace {

void checkRevision(std::uint32_t revision) {
    if (revision == 0 || fltIsWritable(revision)) return;
    throw ExportError(
        text(TextId::kNotWritable,
             {std::to_string(revision), std::to_string(kFltOldestRevision),
              std::to_string(kFltNewest15Revision), std::to_string(kFltOldest16Revision),
              std::to_string(kFltNewestRevision)}));
}

void writeTo(const std::string& path, const std::string& temporary, DatabaseHeader& header,
             const Plan& plan, SceneContent& content, ImpExpReport& report) {
    FltStream stream;
    errno = 0;
    if (!stream.open(temporary, header.header(), &header)) {
        throw std::system_error(errno, std::generic_category(), "cannot write " + path);
    }
    SceneWriter(plan, content, report, stream).write();
    if (!stream.close()) {
        throw std::system_error(errno != 0 ? errno : EIO, std::generic_category(),
                                "cannot write " + path);
    }
}

std::string summaryOf(const Plan& plan) {
    KindCounts counts;
    for (const PlanNode& node : plan.nodes) ++counts[static_cast<std::uint16_t>(node.kind)];
    std::string summary = text(TextId::kExported, {textOf(counts)});
    if (plan.otherDatabases == 0) return summary;
    return text(TextId::kLeftOut, {summary, counted(plan.otherDatabases, TextId::kOtherDatabase)});
}

void writeOut(const std::string& path, const ExportOptions& options, ImpExpReport& report,
              Interface& host) {
    checkRevision(options.revision);
    const Plan plan = planExport(options, host);
    DatabaseHeader header(plan, options.revision);
    SceneContent content(plan.nodes.size(), header.losses());
    SceneCollector(plan, report, content).collect();
    base::FileReplacement file(path);
    writeTo(path, file.name(), header, plan, content, report);
    if (!report.Progress(1, text(TextId::kWritingFile).c_str())) throw Cancelled();
    file.takePlace();
    report.Summary(content.losses.toldBehind(summaryOf(plan)).c_str());
}

/// Tells what went wrong, as far as it knows; the report is the host's and may throw.
int exportReported(const char* path, const ExportOptions& options, ImpExpReport& report,
                   Interface& host) {
    try {
        writeOut(path, options, report, host);
        return IMPEXP_SUCCESS;
    } catch (const Cancelled&) {
        return IMPEXP_CANCEL;
    } catch (const diagnostics::AviaryAssertion&) {
        report.Error(text(TextId::kLongRecord).c_str());
    } catch (const std::bad_alloc&) {
        report.Error(text(TextId::kNoMemoryToWrite).c_str());
        report.Cause(ImpExpCause::kOutOfMemory);
    } catch (const std::system_error& error) {
        report.Error(text(TextId::kCannotWrite, {path, error.code().message()}).c_str());
        report.Cause(ImpExpCause::kUnwritable);
    } catch (const std::exception& error) {
        report.Error(error.what());
    } catch (...) {
        report.Error(text(TextId::kNotWritten).c_str());
    }
    return IMPEXP_FAIL;
}

}  // namespace

std::string sourceFileOf(const INode& database) {
    const std::string name = textOf(sourceChunk(database, SourceChunk::source));
    return name.substr(name.find_last_of("/\\:") + 1);  // whatever the scene file says
}

int exportFile(const char* path, const ExportOptions& options, ImpExpReport& report,
               Interface& host) noexcept {
    try {
        return exportReported(path == nullptr ? "" : path, options, report, host);
    } catch (...) {
        return IMPEXP_FAIL;
    }
}

}  // namespace interchange
