#include "fltfile.h"

#include <base/file.h>
#include <base/paths.h>
#include <base/scopedvalue.h>
#include <diagnostics/assertion.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltstream.h>

namespace {

constexpr std::size_t kFileBufferSize = 1 << 16;

}  // namespace

FltStream::~FltStream() {
    try {
        static_cast<void>(close());
    } catch (...) {
        // A pending writer may throw; nobody is left to be told.
        static_cast<void>(release());
    }
}

bool FltStream::open(const std::string& path, const FltHeader& header, FltHeaderForm* form) {
    diagnostics::check(file_ == nullptr, "fltstream", 72);
    std::FILE* file = base::openFile(base::pathFrom(path), true).release();
    if (file == nullptr) return false;
    std::setvbuf(file, nullptr, _IOFBF, kFileBufferSize);
    attach(file, header.revision());
    ownsFile_ = true;
    header_ = header;
    headerForm_ = form;
    const auto bytes = headerBytes();
    headerLength_ = bytes.size();
    writeVerbatim(bytes);
    return true;
}

std::span<const std::uint8_t> FltStream::headerBytes() {
    if (headerForm_ != nullptr) return headerForm_->layOutHeader(header_);
    FltFileHeader(header_).writeToken(token_, revision_);
    token_.finish();
    return {token_.data(), token_.length()};
}

void FltStream::attach(std::FILE* file, std::uint32_t revision, FltStreamMode mode) {
    diagnostics::check(file_ == nullptr, "fltstream", 85);
    file_ = file;
    ownsFile_ = false;
    revision_ = revision;
    mode_ = mode;
    nesting_ = {};
    header_ = {};
    headerForm_ = nullptr;
    pendingItems_.clear();
}

bool FltStream::close() {
    if (file_ == nullptr) return true;
    if (mode_ == FltStreamMode::kWrite) flushPending();
    const bool upToDate = !ownsFile_ || rewriteHeader();
    return release() && upToDate;
}

// Puts the counters, which naming has moved, into the header at the file's start. The header keeps
// the revision that it was written with, so that its length stays the same.
bool FltStream::rewriteHeader() {
    if (std::ferror(file_) != 0 || std::fseek(file_, 0, SEEK_SET) != 0) return false;
    header_.formatRevision = static_cast<std::int32_t>(revision_);
    const auto bytes = headerBytes();
    if (bytes.size() != headerLength_) return false;  // it would write over what follows
    quillon::writeBytes(file_, bytes.data(), bytes.size());
    return true;
}

bool FltStream::release() noexcept {
    const bool flushed = std::fflush(file_) == 0;
    bool good = std::ferror(file_) == 0 && flushed;
    if (ownsFile_ && std::fclose(file_) != 0) good = false;
    file_ = nullptr;
    ownsFile_ = false;
    return good;
}

// What precedes every record: the checks, the pending items, the nesting.
inline void FltStream::prepareFor(std::uint16_t opcode) {
    diagnostics::check(file_ != nullptr, "fltstream", 417);
    diagnostics::check(mode_ == FltStreamMode::kWrite, "fltstream", 418);
    if (pendingItems_.count() > 0) flushPending();
    nesting_.count(opcode);
}

void FltStream::writeToken(FltToken& token) {
    prepareFor(token.opcode());
    token.finish();
    quillon::writeBytes(file_, token.data(), token.length());
}

void FltStream::writeVerbatim(std::span<const std::uint8_t> record) {
    const FltRecordView view = FltRecordView::at(record, 0);
    diagnostics::check(!view.empty() && view.length() == record.size(), "fltstream", 424);
    prepareFor(view.opcode());
    quillon::writeBytes(file_, record.data(), record.size());
}

void FltStream::writeRecords(std::span<const std::uint8_t> records) {
    std::size_t length = 0;
    for (const FltRecordView record : FltRecordRange(records)) length += record.length();
    diagnostics::check(length == records.size(), "fltstream", 424);
    for (const FltRecordView record : FltRecordRange(records)) prepareFor(record.opcode());
    quillon::writeBytes(file_, records.data(), records.size());
}

void FltStream::writeControl(std::uint16_t opcode) {
    std::uint8_t record[4];
    fltStoreBigEndian(record, opcode);
    fltStoreBigEndian(record + 2, std::uint16_t{sizeof record});
    prepareFor(opcode);
    quillon::writeBytes(file_, record, sizeof record);
}

void FltStream::addPending(std::int32_t item) {
    diagnostics::check(pendingWriter_ != nullptr, "fltstream", 431);
    pendingItems_.append(item);
}

void FltStream::flushPending() {
    if (flushing_) return;
    const base::ScopedValue flushing(flushing_, true);
    if (pendingItems_.count() == 0) return;
    diagnostics::check(pendingWriter_ != nullptr, "fltstream", 431);
    // The analyzer does not follow the check above into its throw.
    // NOLINTNEXTLINE(clang-analyzer-core.CallAndMessage)
    pendingWriter_->writePending(pendingToken_, revision_);
    writeToken(pendingToken_);
    pendingItems_.clear();
}
