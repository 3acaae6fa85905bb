#include <fltkilnutil/kilnlight.h>

namespace {

/// The palette entry has one layout for every revision; blocks have always been written with this.
constexpr std::uint32_t kPaletteRevision = 1;

}  // namespace

void KilnLight::write(FltToken& token) const {
    palette.writeToken(token, kPaletteRevision);
}

void KilnLight::read(FltToken& token) {
    palette.readToken(token, kPaletteRevision);
}
