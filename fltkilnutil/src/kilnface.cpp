#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnface.h>
#include <quillon/fltopcode.h>
#include <quillon/flttoken.h>

namespace {

constexpr std::uint32_t kVersion = 1;

void writeColor(FltToken& token, const FltPackedColor& color) {
    token.writeInt8(color.alpha);
    token.writeInt8(color.blue);
    token.writeInt8(color.green);
    token.writeInt8(color.red);
}

void readColor(FltToken& token, FltPackedColor& color) {
    token.readInt8(color.alpha);
    token.readInt8(color.blue);
    token.readInt8(color.green);
    token.readInt8(color.red);
}

}  // namespace

void KilnFace::write(FltToken& token) const {
    token.begin(kFltFace);
    token.writeInt32(kVersion);
    token.writeInt32(useHostNormals);
    token.writeInt32(useMaterial);
    token.writeInt32(superFace);
    writeColor(token, firstColor);
    writeColor(token, secondColor);
    token.writeInt32(keepTriangles);  // last, where version 0 ended
}

void KilnFace::read(FltToken& token) {
    diagnostics::check(token.opcode() == kFltFace, "kilnflt", 41);
    token.rewind();
    token.readInt32(version);
    token.readInt32(useHostNormals);
    token.readInt32(useMaterial);
    token.readInt32(superFace);
    readColor(token, firstColor);
    readColor(token, secondColor);
    if (version >= 1) token.readInt32(keepTriangles);
}
