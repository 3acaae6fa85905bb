// Creating OpenFlight nodes in the host's scene.
#pragma once

#include <cstdint>

class INode;
class Interface;

namespace tessera {

/// Makes a host dummy node that is an OpenFlight node of kind `opcode`, stored at `revision`
/// (OpenFlight revision x 100), at the world's origin, below `parent` (null for the top level),
/// with a default record if the kind has one and a unique name made from the kind's prefix. Returns
/// the node, which belongs to the scene, or null when the host makes none or does not attach it.
/// In that case, and when something throws (names and transforms need memory), the scene is as it
/// was. Data that cannot be stored is no failure: the node is then a plain helper.
INode* createFltNode(Interface& host, std::uint16_t opcode, std::uint32_t revision, INode* parent);

/// Deletes the name maker, which is otherwise kept from the first creation on. The module calls it
/// before the host ends.
void releaseNameMaker() noexcept;

}  // namespace tessera
