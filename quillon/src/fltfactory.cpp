#include <quillon/fltbsp.h>
#include <quillon/fltclipregion.h>
#include <quillon/fltcomment.h>
#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfileheader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltheader.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltlod.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/fltxref.h>

namespace {

// The classes, each known by its own opcode.
template <typename... Records>
std::unique_ptr<FltRecord> create(std::uint16_t opcode) {
    std::unique_ptr<FltRecord> record;
    static_cast<void>(
        ((opcode == Records::kOpcode && (record = std::make_unique<Records>(), true)) || ...));
    return record;
}

}  // namespace

std::unique_ptr<FltRecord> fltCreateRecord(std::uint16_t opcode) {
    return create<FltHeader, FltGroup, FltObject, FltFace, FltDof, FltComment, FltBsp,
                  FltInstanceRef, FltInstanceDef, FltXRef, FltLod, FltSwitch, FltClipRegion,
                  FltLightSource, FltLightSourcePalette, FltLightPoint>(opcode);
}

std::unique_ptr<FltRecord> fltCreateFileRecord(std::uint16_t opcode) {
    if (opcode == FltFileHeader::kOpcode) return std::make_unique<FltFileHeader>();
    return fltCreateRecord(opcode);
}
