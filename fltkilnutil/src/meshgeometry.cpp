#include "meshoutline.h"

#include <kiln/mesh.h>

#include <cstddef>

namespace checks {

bool isOnePolygon(const Mesh& mesh) {
    const int count = mesh.verts.Count();
    if (count < 3 || mesh.faces.IsEmpty() || mesh.faces.Count() > count - 2) return false;
    constexpr DWORD kEdges[] = {EDGE_A, EDGE_B, EDGE_C};
    const auto vertices = static_cast<DWORD>(count);
    DWORD steps = 0;
    for (const Face& face : mesh.faces) {
        for (std::size_t i = 0; i < 3; ++i) {
            if ((face.flags & kEdges[i]) == 0) continue;
            const DWORD from = face.v[i], to = face.v[(i + 1) % 3];
            if (from >= vertices || to >= vertices) return false;
            for (DWORD at = from; at != to;) {
                at = at + 1 == vertices ? 0 : at + 1;
                // The outline goes around once.
                if (++steps > vertices) return false;
                const Point3& here = mesh.verts[static_cast<int>(at)];
                if (at != to && here != mesh.verts[static_cast<int>(from)] &&
                    here != mesh.verts[static_cast<int>(to)])
                    return false;
            }
        }
    }
    return steps == vertices;
}

}  // namespace checks
