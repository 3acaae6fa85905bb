#include "losses.h"

#include "../summary.h"

#include <quillon/fltface.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltrevision.h>
#include <quillon/flttoken.h>

namespace interchange {

namespace {

/// `record` after a trip through a file of `revision`.
template <typename Record>
Record returned(const Record& record, std::uint32_t revision) {
    FltToken token;
    record.writeToken(token, revision);
    Record back;
    back.readToken(token, revision);
    return back;
}

}  // namespace

void Losses::record(std::uint16_t opcode) {
    if (!isOlder_) return;
    const FltNewerRecord* const newer = fltNewerRecord(opcode);
    if (newer != nullptr && newer->revision > revision_) ++records_[newer];
}

void Losses::face(const FltFace& face) {
    if (!isOlder_) return;
    const FltFace after = returned(face, revision_);
    const bool losesColor =
        (face.flags & kFltSurfaceNoColor) == 0 && face.primaryColorIndex != after.primaryColorIndex;
    const bool losesAlternate = (face.flags & kFltSurfaceNoAlternateColor) == 0 &&
                                face.alternateColorIndex != after.alternateColorIndex;
    if (losesColor || losesAlternate) ++faces_;
}

void Losses::header(const FltHeader& header) {
    if (!isOlder_) return;
    FltFileHeader before(header);
    before.formatRevision = static_cast<std::int32_t>(revision_);
    const FltFileHeader after = returned(before, revision_);
    // The counters that an older revision lacks say nothing about its nodes.
    header_ = before.earthEllipsoidModel != after.earthEllipsoidModel ||
              before.utmZone != after.utmZone || before.deltaZ != after.deltaZ ||
              before.radius != after.radius || before.earthMajorAxis != after.earthMajorAxis ||
              before.earthMinorAxis != after.earthMinorAxis;
}

std::string Losses::text() const {
    std::string parts;
    const auto add = [&parts](const std::string& part) {
        parts.append(parts.empty() ? "" : ", ").append(part);
    };
    for (const auto& [newer, count] : records_) add(counted(count, newer->one, newer->many));
    if (faces_ != 0) add("colors of " + counted(faces_, "face", "faces"));
    if (header_) add("fields of the header");
    if (parts.empty()) return {};
    return ", which OpenFlight " + std::to_string(revision_ / 100) + '.' +
           std::to_string(revision_ / 10 % 10) + " cannot say in full: " + parts;
}

}  // namespace interchange
