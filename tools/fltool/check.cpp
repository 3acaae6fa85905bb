#include "commands.h"
#include "progress.h"
#include "vertexpalette.h"

#include <diagnostics/assertion.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltrevision.h>
#include <quillon/fltswitch.h>

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

namespace fltool {

namespace {

std::string number(std::int64_t value) {
    return std::to_string(value);
}

bool isVertexList(std::uint16_t opcode) {
    return opcode == kFltVertexList || opcode == kFltMorphVertexList;
}

/// Whether the record is a child of what encloses it. A definition of instances shows nothing where
/// it stands.
bool isChild(std::uint16_t opcode) {
    const FltRecordType* const type = fltRecordType(opcode);
    return type != nullptr && type->place == FltRecordPlace::node && opcode != kFltInstanceDef;
}

/// A push that is still open.
struct OpenLevel {
    std::uint16_t opcode = 0;
    std::size_t offset = 0;
    std::optional<std::int64_t> maskBits;  ///< of the switch whose children these are
    std::size_t switchOffset = 0;
    std::int64_t children = 0;
};

class Checker {
public:
    Checker(std::span<const std::uint8_t> bytes, std::ostream& out) : reader_(bytes), out_(out) {}

    std::size_t run(std::size_t size) {
        Progress progress(size, true);
        try {
            while (reader_.next()) {
                progress.reached(reader_.offset());
                checkRecord();
            }
            finish(size);
        } catch (const FltFileError& error) {
            report(error.offset(), error.what());
        }
        return findings_;
    }

private:
    void checkRecord() {
        const std::uint16_t opcode = reader_.opcode();
        checkOrder(opcode);
        reportHere(palette_.meet(reader_));
        checkNesting(opcode);
        if (fltRecordType(opcode) == nullptr) reportHere("unknown opcode " + number(opcode));
        if (opcode != kFltContinuation) {
            continued_ = opcode;
        } else if (fltClosingOpcode(continued_) != 0 || fltIsPop(continued_)) {
            reportHere("continues a record that says nothing");
        }
        if (isVertexList(continued_)) reportHere(palette_.judgeList(reader_, continued_));
        checkFields(opcode);
        first_ = false;
    }

    void checkOrder(std::uint16_t opcode) {
        if (first_ && opcode != kFltHeader) reportHere("the file does not begin with its header");
        if (opcode != kFltHeader) return;
        if (!first_) reportHere("a header that is not the first record");
        if (first_ && !fltIsWritable(reader_.revision()))
            reportHere("format revision " + number(reader_.header().formatRevision) +
                       " is none of 1420 to 1580 and 1600 to 1660");
    }

    void checkNesting(std::uint16_t opcode) {
        if (fltClosingOpcode(opcode) != 0) {
            open(opcode);
        } else if (fltIsPop(opcode)) {
            close(opcode);
        } else if (isChild(opcode) && !inOpaqueLevel()) {
            if (!levels_.empty()) ++levels_.back().children;
            pendingBits_.reset();
        }
    }

    /// Whether what stands here is no node, but belongs to the extensions or attributes of one.
    bool inOpaqueLevel() const {
        return reader_.nesting().extension > 0 || reader_.nesting().attribute > 0;
    }

    void open(std::uint16_t opcode) {
        OpenLevel level;
        level.opcode = opcode;
        level.offset = reader_.offset();
        // The children of a switch stand in the first level behind it, or behind its extensions.
        if (opcode == kFltPushLevel && !inOpaqueLevel()) {
            level.maskBits = pendingBits_;
            level.switchOffset = pendingOffset_;
            pendingBits_.reset();
        }
        levels_.push_back(level);
    }

    void close(std::uint16_t opcode) {
        if (levels_.empty() || fltClosingOpcode(levels_.back().opcode) != opcode) {
            // A pop of another kind may close a level further out; the ones inside were left open.
            const auto match = std::find_if(
                levels_.rbegin(), levels_.rend(),
                [&](const OpenLevel& level) { return fltClosingOpcode(level.opcode) == opcode; });
            if (match == levels_.rend()) {
                reportHere("without a push");
                return;
            }
            while (fltClosingOpcode(levels_.back().opcode) != opcode) abandon();
        }
        const OpenLevel level = levels_.back();
        levels_.pop_back();
        if (level.maskBits && level.children > *level.maskBits)
            report(level.switchOffset, "FLT_SWITCH: a switch of " + number(level.children) +
                                           " children whose masks have " + number(*level.maskBits) +
                                           " bits");
        if (!inOpaqueLevel() && opcode != kFltPopExtension && opcode != kFltPopAttribute)
            pendingBits_.reset();
    }

    void abandon() {
        report(levels_.back().offset,
               std::string(fltRecordName(levels_.back().opcode)) + ": without a pop");
        levels_.pop_back();
    }

    void checkFields(std::uint16_t opcode) {
        std::unique_ptr<FltRecord>& record = records_[opcode];
        if (!record) record = fltCreateFileRecord(opcode);
        if (!record) return;
        try {
            record->readFromFile(&reader_.token());
        } catch (const diagnostics::AviaryAssertion&) {
            reportHere("counts that no record can hold");
            return;
        }
        // Headers of other programs leave out fields at their end; a comment may have any length.
        if (opcode != kFltHeader && opcode != kFltComment) {
            record->writeToken(layout_, reader_.revision());
            if (layout_.length() > reader_.length())
                reportHere("the record is " + number(reader_.length()) +
                           " bytes long, its fields " + number(layout_.length()) +
                           "; the missing ones read as zero");
        }
        if (opcode == kFltSwitch) checkSwitch(static_cast<const FltSwitch&>(*record));
    }

    void checkSwitch(const FltSwitch& record) {
        const std::int32_t masks = record.maskCount();
        if (masks == 0)
            reportHere("a switch without masks");
        else if (record.currentMask < 0 || record.currentMask >= masks)
            reportHere("current mask " + number(record.currentMask) + " of " + number(masks));
        pendingBits_ = std::int64_t{record.wordsPerMask} * 32;
        pendingOffset_ = reader_.offset();
    }

    void finish(std::size_t size) {
        if (size == 0) report(0, "an empty file");
        if (const std::size_t stray = reader_.strayBytes(); stray != 0)
            report(size - stray, strayText(stray));
        const std::string paletteFinding = palette_.finish();
        if (!paletteFinding.empty()) report(palette_.offset(), paletteFinding);
        while (!levels_.empty()) abandon();
    }

    /// Nothing for an empty finding.
    void reportHere(const std::string& finding) {
        if (finding.empty()) return;
        report(reader_.offset(), std::string(fltRecordName(reader_.opcode())) + ": " + finding);
    }
    void report(std::size_t offset, const std::string& finding) {
        out_ << offset << ": " << finding << '\n';
        ++findings_;
    }

    FltFileReader reader_;
    std::ostream& out_;
    std::size_t findings_ = 0;
    bool first_ = true;
    std::uint16_t continued_ = 0;  ///< the latest record that is no continuation
    VertexPalette palette_;
    std::vector<OpenLevel> levels_;
    std::optional<std::int64_t> pendingBits_;  ///< of a switch whose children have not begun
    std::size_t pendingOffset_ = 0;
    std::map<std::uint16_t, std::unique_ptr<FltRecord>> records_;  ///< one of each class, reused
    FltToken layout_;
};

}  // namespace

std::size_t check(const std::string& file, std::ostream& out) {
    const FltFileBytes bytes = FltFileBytes::load(file);
    return Checker(bytes.bytes(), out).run(bytes.bytes().size());
}

}  // namespace fltool
