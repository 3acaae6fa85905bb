// The output side of an OpenFlight file.
#pragma once

#include <quillon/fltheader.h>
#include <quillon/fltlistof.h>
#include <quillon/fltnesting.h>
#include <quillon/flttoken.h>

#include <cstdint>
#include <cstdio>
#include <span>
#include <string>

/// Turns the items that a stream has pending into one record.
class FltPendingWriter {
public:
    virtual ~FltPendingWriter() = default;

    /// Puts the record into `token`, as `FltRecord::writeToken` does.
    virtual void writePending(FltToken& token, std::uint32_t revision) = 0;
};

/// Lays out the header of a file for who wants more in it than the fields of `FltHeader`.
class FltHeaderForm {
public:
    virtual ~FltHeaderForm() = default;

    /// The bytes of the whole header record, as many each time; they are written as they are.
    /// Valid until the next call.
    virtual std::span<const std::uint8_t> layOutHeader(const FltHeader& header) = 0;
};

enum class FltStreamMode : std::int32_t { kRead = 0, kWrite = 1 };

/// Writes records, in order, to a file, and counts the nesting they open and close.
///
/// It owns the file's header, whose counters name the records that have no name. Writing never
/// fails at once: a disk that refuses is remembered and reported by `close`.
class FltStream {
public:
    FltStream() = default;
    FltStream(const FltStream&) = delete;
    FltStream& operator=(const FltStream&) = delete;

    /// Closes the file; what the disk says is lost. Call `close` to know.
    ~FltStream();

    /// Creates the file (replacing one that exists) and writes `header` as its first record; the
    /// stream's revision is the header's. Returns false when the file cannot be created, true
    /// otherwise. The path is UTF-8. `form` (not owned, must outlive the file; null for that of
    /// `FltFileHeader`) lays the header out, here and at the end. Throws `AviaryAssertion` when a
    /// file is open already.
    [[nodiscard]] bool open(const std::string& path, const FltHeader& header = {},
                            FltHeaderForm* form = nullptr);

    /// Uses a file that the caller has open, and closes it after this stream is done with it.
    /// Nothing is written to it but the records. Throws as `open`.
    void attach(std::FILE* file, std::uint32_t revision,
                FltStreamMode mode = FltStreamMode::kWrite);

    /// Writes what is pending, brings the header at the file's start up to date with the counters
    /// (for a file that `open` created), and lets go of the file. Returns false when any byte since
    /// the file was opened could not be written, and when the header's form has changed its mind on
    /// the length; true also when no file is open. What a pending writer throws passes through and
    /// leaves the file open.
    [[nodiscard]] bool close();

    bool isOpen() const noexcept { return file_ != nullptr; }

    /// The revision that every record operation receives.
    std::uint32_t revision() const noexcept { return revision_; }

    /// The token that records are put into on their way; reused for all of them.
    FltToken& token() noexcept { return token_; }

    FltHeader& header() noexcept { return header_; }
    const FltNesting& nesting() const noexcept { return nesting_; }

    /// Writes one finished record, after whatever is pending: pads it, patches its length, counts
    /// its nesting. Throws `AviaryAssertion` without an open file or in another mode than write.
    void writeToken(FltToken& token);

    /// Writes the bytes of one whole record as they are, neither padded nor patched, after whatever
    /// is pending, and counts its nesting. Throws as `writeToken`, and when the bytes are not as
    /// many as their own length word says.
    void writeVerbatim(std::span<const std::uint8_t> record);

    /// Writes several whole records that stand one behind the other, each as `writeVerbatim` does,
    /// in one write call. Throws as that, before anything is written.
    void writeRecords(std::span<const std::uint8_t> records);

    /// Writes a record of nothing but its header, such as a push or a pop. Not padded. Throws as
    /// `writeToken`.
    void writeControl(std::uint16_t opcode);

    /// Installs who writes pending items; not owned, must outlive them.
    void setPendingWriter(FltPendingWriter* writer) noexcept { pendingWriter_ = writer; }

    /// Keeps `item` for the record that precedes the next one written.
    /// Throws `AviaryAssertion` without a pending writer.
    void addPending(std::int32_t item);
    const FltListOf<std::int32_t>& pendingItems() const noexcept { return pendingItems_; }

    /// Writes the pending items as one record and forgets them. Nothing when there are none, or
    /// while it is at work already.
    void flushPending();

private:
    void prepareFor(std::uint16_t opcode);
    std::span<const std::uint8_t> headerBytes();
    bool rewriteHeader();
    bool release() noexcept;

    std::uint32_t revision_ = 1580;
    FltToken token_;
    FltStreamMode mode_ = FltStreamMode::kRead;
    FltNesting nesting_;
    FltPendingWriter* pendingWriter_ = nullptr;
    FltListOf<std::int32_t> pendingItems_;
    FltToken pendingToken_;
    bool flushing_ = false;
    FltHeader header_;
    FltHeaderForm* headerForm_ = nullptr;
    std::size_t headerLength_ = 0;  ///< of the header at the file's start
    std::FILE* file_ = nullptr;
    bool ownsFile_ = false;
};
