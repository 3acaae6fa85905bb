// The mark that a bitmap texture is to be exported to OpenFlight.
#pragma once

class Texmap;

namespace tessera {

// Both work with attributes of other plug-ins and pass on what those throw.

/// Puts the mark on a bitmap texture, as its first custom attribute; true when it is there
/// afterwards. False for any other texture, or when the host cannot make the attribute.
bool addTextureAttr(Texmap* texmap);

/// Takes the first mark away; false when there is none.
bool removeTextureAttr(Texmap* texmap);

}  // namespace tessera
