// The options of a face.
#pragma once

#include <fltkilnutil/nodeoptions.h>
#include <quillon/fltpackedcolor.h>

#include <cstdint>

/// How the host mesh of a face node becomes OpenFlight faces. The booleans are 32 bits wide.
class KilnFace : public FltNodeOptions {
public:
    /// Stored as opcode 5. Always writes the current version.
    void write(FltToken& token) const override;

    /// Throws `AviaryAssertion` (`kilnflt` line 41) for another opcode. A block of version 0 has no
    /// `keepTriangles`; the member keeps its value then.
    void read(FltToken& token) override;

    std::uint32_t version = 1;         ///< of the block that was read
    std::uint32_t useHostNormals = 1;  ///< keep the normals of the host mesh
    std::uint32_t useMaterial = 0;     ///< take the color from the host material
    std::uint32_t superFace = 0;       ///< merge into one super face
    std::uint32_t keepTriangles = 0;   ///< do not merge triangles into polygons
    /// Kept for the exporter that wrote them; nothing edits them.
    FltPackedColor firstColor = FltPackedColor::fromComponents(-1, -1, -1, -1);
    FltPackedColor secondColor = FltPackedColor::fromComponents(-1, -1, -1, -1);
};
