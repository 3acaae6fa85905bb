// What stands behind the record of a node in a file.
#pragma once

#include <interchange/fileindex.h>

#include <kiln/geometry.h>
#include <quillon/fltface.h>

#include <cstdint>
#include <string>
#include <vector>

namespace interchange {

/// One thing to write.
struct LayoutStep {
    enum class Kind : std::uint8_t {
        record,      ///< `record` as it is
        longId,      ///< that of the layout
        comment,     ///< that of the layout
        place,       ///< that of the layout
        palettes,    ///< the vertex palette and new palette entries, unless they stand already
        lightEntry,  ///< `record`, a light source palette entry, with the edits of its lights
        uvList,      ///< `record`, if it fits the vertex list written last
        push,        ///< `record`, or an empty one of `opcode`
        pop,         ///< `opcode`
        polygon,     ///< the vertex list of the node's first polygon
        list,        ///< one of `opcode` over `count` of the layout's `offsets`, from `first` on
        faces,       ///< the node's polygons from `first` on, each as a face
        children,    ///< the next `count` of the nodes below
        subfaces,    ///< the same below a face, where each mesh is one face
    };
    Kind kind = Kind::record;
    std::uint16_t opcode = 0;
    std::uint32_t first = 0;
    std::uint32_t count = 0;
    std::uint32_t corners = 0;  ///< of a list; where vertices morph, half of `count`
    FileBytes record{};
};

/// What is decided about one node, once, before anything behind its record is written. Refers to
/// what is kept on the node.
struct NodeLayout {
    std::vector<LayoutStep> steps;       ///< in file order
    std::vector<std::uint32_t> offsets;  ///< of vertices, in the vertex palette
    std::string longId;
    std::string comment;
    Matrix3 place;
    FltFace face;       ///< what its polygons have in common that are faces without a node
    Matrix3 facePlace;  ///< where those are, if their node does not move them
};

}  // namespace interchange
