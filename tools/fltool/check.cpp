#include "commands.h"
#include "progress.h"
#include "vertexpalette.h"

#include <checks/check.h>
#include <checks/filesource.h>
#include <diagnostics/assertion.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltlevelwalk.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltrevision.h>
#include <quillon/fltswitch.h>

#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <utility>
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
    return type != nullptr && type->place == FltRecordPlace::kNode && opcode != kFltInstanceDef;
}

/// What is kept of a level that is open.
struct Level {
    std::size_t offset = 0;                ///< of the push
    std::optional<std::int64_t> maskBits;  ///< of the switch whose children these are
    std::size_t switchOffset = 0;
    std::int64_t children = 0;
};

class Checker {
    using Step = FltLevelWalk<Level>::Step;

public:
    explicit Checker(std::span<const std::uint8_t> bytes) : reader_(bytes) {}

    std::vector<checks::Damage> run(std::size_t size) {
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
        return std::move(found_);
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
        switch (levels_.meet(opcode, levelHere(opcode))) {
            case Step::kNone:
                if (isChild(opcode) && !levels_.isOpaque()) {
                    if (levels_.depth() != 0) ++levels_.innermost().level.children;
                    pendingBits_.reset();
                }
                break;
            case Step::kOpened:
                if (levels_.innermost().level.maskBits) pendingBits_.reset();
                break;
            case Step::kClosed:
                checkClosed();
                break;
            case Step::kUnmatched:
                if (!levels_.canClose(opcode)) return reportHere("without a push");
                // A pop may close a level further out; the ones inside were left open.
                while (levels_.meet(opcode) != Step::kClosed) abandon();
                checkClosed();
                break;
        }
    }

    /// The children of a switch stand in the first level behind it, or behind its extensions.
    Level levelHere(std::uint16_t opcode) const {
        Level level;
        level.offset = reader_.offset();
        if (opcode == kFltPushLevel && !levels_.isOpaque()) {
            level.maskBits = pendingBits_;
            level.switchOffset = pendingOffset_;
        }
        return level;
    }

    void checkClosed() {
        const Level& level = levels_.left().level;
        if (level.maskBits && level.children > *level.maskBits)
            report(level.switchOffset, "FLT_SWITCH: a switch of " + number(level.children) +
                                           " children whose masks have " + number(*level.maskBits) +
                                           " bits");
        if (!levels_.left().isOpaque) pendingBits_.reset();
    }

    void abandon() {
        report(levels_.innermost().level.offset,
               std::string(fltRecordName(levels_.innermost().opcode)) + ": without a pop");
        levels_.leave();
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
        pendingBits_ = std::int64_t{record.wordsPerMask} * FltSwitch::kMaskBitsPerWord;
        pendingOffset_ = reader_.offset();
    }

    void finish(std::size_t size) {
        if (size == 0) report(0, "an empty file");
        if (const std::size_t stray = reader_.strayBytes(); stray != 0)
            report(size - stray, strayText(stray));
        const std::string paletteFinding = palette_.finish();
        if (!paletteFinding.empty()) report(palette_.offset(), paletteFinding);
        while (levels_.depth() != 0) abandon();
    }

    /// Nothing for an empty finding.
    void reportHere(const std::string& finding) {
        if (finding.empty()) return;
        report(reader_.offset(), std::string(fltRecordName(reader_.opcode())) + ": " + finding);
    }
    void report(std::size_t offset, const std::string& finding) {
        found_.push_back({offset, finding});
    }

    FltFileReader reader_;
    std::vector<checks::Damage> found_;
    bool first_ = true;
    std::uint16_t continued_ = 0;  ///< the latest record that is no continuation
    VertexPalette palette_;
    FltLevelWalk<Level> levels_;
    std::optional<std::int64_t> pendingBits_;  ///< of a switch whose children have not begun
    std::size_t pendingOffset_ = 0;
    std::map<std::uint16_t, std::unique_ptr<FltRecord>> records_;  ///< one of each class, reused
    FltToken layout_;
};

void print(const std::vector<checks::Damage>& damages, std::ostream& out) {
    for (const checks::Damage& damage : damages)
        out << damage.offset << ": " << damage.text << '\n';
}

void print(const checks::Report& report, std::ostream& out) {
    print(report.damages, out);
    for (const checks::Finding& finding : report.findings) {
        out << finding.place << ": " << nameOf(finding.severity) << ' '
            << infoOf(finding.rule).code;
        if (!finding.node.empty()) out << ' ' << finding.node;
        out << ": " << finding.text(base::Language::kEnglish) << '\n';
    }
}

}  // namespace

std::vector<checks::Damage> damagesIn(std::span<const std::uint8_t> bytes) {
    return Checker(bytes).run(bytes.size());
}

std::size_t check(const CheckOptions& options, std::ostream& out) {
    // A target that cannot be used is told before the file is read.
    std::optional<checks::Target> target;
    if (!options.target.empty()) target = checks::findTarget(options.target);
    const FltFileBytes bytes = FltFileBytes::load(options.file);
    std::vector<checks::Damage> damages = damagesIn(bytes.bytes());
    if (!target) {
        if (options.json)
            out << checks::damagesToJson(damages, options.file);
        else
            print(damages, out);
        return damages.size();
    }
    checks::FileSource source(bytes.bytes(), options.file);
    checks::Check check(source, *target);
    check.finish();
    checks::Report report = check.report();
    report.damages = std::move(damages);
    if (options.json)
        out << checks::toJson(report, *target, options.file, "offset");
    else
        print(report, out);
    return report.damages.size() +
           static_cast<std::size_t>(report.countOf(checks::Severity::kError, *target));
}

}  // namespace fltool
