#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnlightpoint.h>
#include <quillon/fltopcode.h>
#include <quillon/flttoken.h>

void KilnLightPoint::write(FltToken& token) const {
    token.begin(kFltLightPoint);
    token.writeInt32(reserved);
    token.writeInt32(mode);
    token.writeInt32(modeParameter);
}

void KilnLightPoint::read(FltToken& token) {
    diagnostics::check(token.opcode() == kFltLightPoint, "kilnflt", 121);
    token.rewind();
    token.readInt32(reserved);
    token.readInt32(mode);
    token.readInt32(modeParameter);
}
