#include "newfaces.h"

#include "bytes.h"
#include "colors.h"
#include "filepalettes.h"
#include "layouts.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/inode.h>
#include <kiln/mesh.h>
#include <quillon/fltheader.h>
#include <quillon/flttext.h>
#include <quillon/flttoken.h>

#include <string>

namespace interchange {

namespace {

constexpr COLORREF kWhite = 0xFFFFFF;

}  // namespace

bool isColorless(const FltFace& face) noexcept {
    return (face.flags & kFaceNoColor) != 0 &&
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

FileBytes layOutNewFace(FltFace face, const NewFace& look, FltHeader& header,
                        std::uint32_t revision, std::vector<std::uint8_t>& bytes) {
    if (face.asciiId[0] == '\0') {
        fltSetText(face.asciiId, std::string(1, 'f').append(std::to_string(header.nextFaceId++)));
    }
    if (face.materialIndex < 0) face.materialIndex = look.material;
    // Lights shine on what is shown in the scene, unless its record says otherwise.
    if (look.isUnwritten) face.lightMode = look.color ? kLitByFaceColor : kLitByVertexColor;
    FltToken token;
    face.writeToken(token, revision);
    bytes.assign(token.data(), token.data() + token.length());
    if (look.color && isColorless(face)) {
        put32(&bytes[kFaceFlags], (face.flags & ~kFaceNoColor) | kFacePackedColor);
        put32(&bytes[kFacePackedPrimary], packedColorOf(*look.color));
    }
    return bytes;
}

}  // namespace interchange
