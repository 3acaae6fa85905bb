// The mark that a bitmap texture is to be exported to OpenFlight.
#pragma once

class Texmap;

namespace tessera {

/// Puts the mark on a bitmap texture, as its first custom attribute; true when it is there
/// afterwards. False for any other texture, or when the host cannot make the attribute.
bool addTextureAttr(Texmap* texmap) noexcept;

/// Takes the first mark away; false when there is none.
bool removeTextureAttr(Texmap* texmap) noexcept;

}  // namespace tessera
