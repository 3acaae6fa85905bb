#include "commands.h"
#include "progress.h"

#include <base/replacefile.h>
#include <diagnostics/assertion.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltstream.h>

#include <algorithm>
#include <cerrno>
#include <map>
#include <memory>
#include <ostream>
#include <system_error>
#include <vector>

namespace fltool {

namespace {

class Converter : private FltHeaderForm {
public:
    Converter(const ConvertOptions& options, const FltFileBytes& file)
        : options_(options), bytes_(file.bytes()), reader_(bytes_) {}

    void run(FltStream& stream, const std::string& path) {
        Progress progress(bytes_.size());
        if (!reader_.next() || reader_.opcode() != kFltHeader)
            throw CommandError(options_.input + " does not begin with a header");
        open(stream, path);
        while (reader_.next()) {
            progress.reached(reader_.offset());
            convertRecord(stream);
        }
        if (!stream.close()) throw CommandError("cannot write " + options_.output);
    }

    std::size_t strayBytes() const noexcept { return reader_.strayBytes(); }
    std::size_t decoded() const noexcept { return decoded_; }
    std::size_t copied() const noexcept { return copied_; }

private:
    void open(FltStream& stream, const std::string& path) {
        sourceRevision_ = reader_.revision();
        source_ = bytes_.first(reader_.length());
        FltHeader header = reader_.header();
        header.formatRevision = static_cast<std::int32_t>(options_.revision);
        if (!stream.open(path, header, this))
            throw CommandError("cannot write " + options_.output + ": " +
                               std::generic_category().message(errno));
        ++decoded_;
    }

    /// The header as it was, with the new revision, and with the fields that this one has more or
    /// less than that one.
    std::span<const std::uint8_t> layOutHeader(const FltHeader& header) override {
        reader_.header().writeToken(layout_, sourceRevision_);
        FltFileHeader(header).writeToken(token_, options_.revision);
        const bool sameLayout = token_.length() == layout_.length();
        if (!sameLayout) token_.finish();
        header_.assign(token_.data(), token_.data() + token_.length());
        const std::size_t common =
            std::min<std::size_t>({header_.size(), layout_.length(), source_.size()});
        for (std::size_t i = FltRecordView::kHeaderSize; i < common; ++i) {
            if (header_[i] == layout_.data()[i]) header_[i] = source_[i];
        }
        if (sameLayout) {
            header_.resize(common);
            header_.insert(header_.end(), source_.begin() + static_cast<std::ptrdiff_t>(common),
                           source_.end());
        }
        FltRecordView::stateLength(header_);
        return header_;
    }

    void convertRecord(FltStream& stream) {
        if (recode(stream.token())) {
            stream.writeToken(stream.token());
            ++decoded_;
        } else {
            stream.writeVerbatim(reader_.bytes());
            ++copied_;
        }
    }

    /// Puts the current record into `token` as the new revision lays it out. Returns false when
    /// that is no other way, for one without a class, and for one that its class refuses.
    bool recode(FltToken& token) {
        const std::uint16_t opcode = reader_.opcode();
        std::unique_ptr<FltRecord>& record = records_[opcode];
        if (!record) record = fltCreateRecord(opcode);
        // A header further on says nothing about this file.
        if (!record || opcode == kFltHeader) return false;
        try {
            record->readToken(reader_.token(), sourceRevision_);
            // Not `FltRecord::write`, which would give a name to what has none.
            record->writeToken(layout_, sourceRevision_);
            record->writeToken(token, options_.revision);
        } catch (const diagnostics::AviaryAssertion&) {
            return false;
        }
        if (std::ranges::equal(bytesOf(token), bytesOf(layout_))) return false;
        if (opcode == kFltFace) {
            static_cast<const FltFace&>(*record).writeFileToken(token, options_.revision);
        }
        return true;
    }

    static std::span<const std::uint8_t> bytesOf(const FltToken& token) {
        return {token.data(), token.length()};
    }

    const ConvertOptions& options_;
    std::span<const std::uint8_t> bytes_;
    FltFileReader reader_;
    std::uint32_t sourceRevision_ = 0;
    std::span<const std::uint8_t> source_;  ///< of the header
    std::vector<std::uint8_t> header_;
    FltToken token_;
    std::map<std::uint16_t, std::unique_ptr<FltRecord>> records_;  ///< one of each class, reused
    FltToken layout_;
    std::size_t decoded_ = 0;
    std::size_t copied_ = 0;
};

}  // namespace

void convert(const ConvertOptions& options, std::ostream& out, std::ostream& notes) {
    const FltFileBytes file = FltFileBytes::load(options.input);
    base::FileReplacement temporary(options.output);
    Converter converter(options, file);
    {
        FltStream stream;  // closed before its file is moved or removed
        converter.run(stream, temporary.name());
    }
    temporary.takePlace();
    out << converter.decoded() << " records written at revision " << options.revision << ", "
        << converter.copied() << " copied as they were\n";
    noteStrayBytes(converter.strayBytes(), notes);
}

}  // namespace fltool
