#include "newfaces.h"

#include "filepalettes.h"
#include "recordmerge.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/inode.h>
#include <kiln/mesh.h>

namespace interchange {

namespace {

constexpr COLORREF kWhite = 0xFFFFFF;

}  // namespace

bool isColorless(const FltFace& face) noexcept {
    return (face.flags & kFltSurfaceNoColor) != 0 &&
           face.primaryColorIndex == FltFace().primaryColorIndex;
}

NewFace newFaceOf(INode& node, const Mesh& mesh, const KilnFace& options, FilePalettes& palettes) {
    NewFace look;
    look.isUnwritten = !fltHasRecord(&node);
    look.isSuperFace = options.superFace != 0;
    const COLORREF color = node.GetWireColor();
    if (options.useMaterial != 0) {
        look.material = palettes.material(color);
        look.color = kWhite;
    } else if (mesh.colors.IsEmpty() && (look.isUnwritten || color != DEFAULT_WIRE_COLOR)) {
        look.color = color;
    }
    return look;
}

void layOutNewFace(FltFace face, const NewFace& look, std::uint32_t revision, FltToken& token) {
    if (face.materialIndex < 0 && look.material >= 0) face.materialIndex = look.material;
    // Lights shine on what is shown in the scene, unless its record says otherwise.
    if (look.isUnwritten) face.lightMode = look.color ? kFltLitFaceColor : kFltLitVertexColors;
    if (look.color && isColorless(face)) {
        const auto part = [&](unsigned shift) { return static_cast<int>(*look.color >> shift); };
        face.flags = (face.flags & ~kFltSurfaceNoColor) | kFltSurfacePackedColors;
        face.packedPrimaryColor = FltPackedColor::fromComponents(part(0), part(8), part(16), -1);
        face.packedAlternateColor = {};
    } else {
        settlePackedColors(face, nullptr);
    }
    face.writeFileToken(token, revision);
}

}  // namespace interchange
