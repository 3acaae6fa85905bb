#include "recordkinds.h"

#include <framework/strings.h>
#include <quillon/fltopcode.h>
#include <resources/resource.h>

#include <algorithm>
#include <utility>

using framework::loadString;

namespace tessera {
namespace {

constexpr std::uint16_t kNoOpcode = 65535;

constexpr IconKind icon(int number) {
    return static_cast<IconKind>(number);
}

// One name for each row but the overlay's.
std::array<std::string, kRecordKindCount - 1> names;

}  // namespace

const std::array<RecordKind, kRecordKindCount> kRecordKinds = {{
    {icon(0), kFltGroup, IDB_GROUP, false},
    {icon(1), kFltObject, IDB_OBJECT, false},
    {icon(2), kFltLod, IDB_LOD, false},
    {icon(3), kFltSwitch, IDB_SWITCH, false},
    {icon(4), kFltDof, IDB_DOF, false},
    {icon(5), kFltExternalRef, IDB_XREF, false},
    {icon(10), kFltBsp, IDB_BSP, false},
    {icon(11), kFltClipRegion, IDB_CLIP, false},
    {icon(6), kFltLightPoint, IDB_LIGHT_POINT, false},
    {IconKind::kLightSource, kFltLightSource, IDB_LIGHT_SOURCE, true},
    {icon(8), kFltHeader, IDB_HEADER, false},
    {IconKind::kSceneRoot, kNoOpcode, IDB_SCENE_ROOT, false},
    {IconKind::kOmniLight, kFltLightSource, IDB_OMNI_LIGHT, false},
    {IconKind::kSpotLight, kFltLightSource, IDB_SPOT_LIGHT, false},
    {icon(16), kFltFace, IDB_FACE, false},
    {icon(14), kFltInstanceDef, IDB_INSTANCE_DEFINITION, true},
    {icon(15), kFltInstanceRef, IDB_INSTANCE_REFERENCE, true},
    {IconKind::kPlain, kNoOpcode, IDB_PLAIN, false},
    {IconKind::kNone, kNoOpcode, IDB_OVERLAY, false},
}};

int kindRowByOpcode(std::uint16_t opcode) noexcept {
    const auto found =
        std::find_if(kRecordKinds.begin(), kRecordKinds.end(),
                     [opcode](const RecordKind& row) { return row.opcode == opcode; });
    return found == kRecordKinds.end() ? -1 : static_cast<int>(found - kRecordKinds.begin());
}

int kindRowByIcon(IconKind wanted) noexcept {
    const auto found = std::find_if(kRecordKinds.begin(), kRecordKinds.end(),
                                    [wanted](const RecordKind& row) { return row.icon == wanted; });
    return found == kRecordKinds.end() ? -1 : static_cast<int>(found - kRecordKinds.begin());
}

int creatableKindCount() noexcept {
    const auto end = std::find_if(kRecordKinds.begin(), kRecordKinds.end(),
                                  [](const RecordKind& row) { return row.endsCreateList; });
    return static_cast<int>(end - kRecordKinds.begin());
}

void loadKindNames() {
    for (std::size_t row = 0; row < names.size(); ++row)
        names[row] = loadString(IDS_KIND_FIRST + static_cast<unsigned>(row));
}

void freeKindNames() noexcept {
    for (std::string& name : names) name = {};
}

const std::string& kindName(int row) noexcept {
    static const std::string kNone;
    return row >= 0 && std::cmp_less(row, names.size()) ? names[static_cast<std::size_t>(row)]
                                                        : kNone;
}

}  // namespace tessera
