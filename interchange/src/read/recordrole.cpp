#include "recordrole.h"

#include <quillon/fltopcode.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltvertex.h>

#include <array>

namespace interchange {

namespace {

RecordRole roleOfPart(std::uint16_t opcode) {
    switch (opcode) {
        case kFltLongId:
            return RecordRole::kLongId;
        case kFltVertexPalette:
            return RecordRole::kVertexPalette;
        case kFltVertexList:
        case kFltMorphVertexList:
            return RecordRole::kVertexList;
        case kFltContinuation:
            return RecordRole::kContinuation;
        case kFltColorPalette:
            return RecordRole::kColorPalette;
        case kFltLightSourcePalette:
            return RecordRole::kLightPalette;
        case kFltTexture:
            return RecordRole::kTexture;
        default:
            return FltVertex::isVertex(opcode) ? RecordRole::kVertex : RecordRole::kOther;
    }
}

RecordRole roleOfType(const FltRecordType& type) {
    switch (type.place) {
        case FltRecordPlace::kNode:
            return RecordRole::kNode;
        case FltRecordPlace::kLevel:
            return type.level.by > 0 ? RecordRole::kPush : RecordRole::kPop;
        default:
            return roleOfPart(type.opcode);
    }
}

/// The roles by opcode; everything beyond is unknown.
using Roles = std::array<RecordRole, 256>;

Roles makeRoles() {
    Roles roles{};
    for (const FltRecordType& type : fltRecordTypes()) roles.at(type.opcode) = roleOfType(type);
    return roles;
}

const Roles kRoles = makeRoles();

}  // namespace

RecordRole roleOf(std::uint16_t opcode) noexcept {
    return opcode < kRoles.size() ? kRoles[opcode] : RecordRole::kUnknown;
}

}  // namespace interchange
