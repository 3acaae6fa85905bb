// A generated file of terrain, for what is measured with large files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace bench {

/// Patches of terrain in groups of objects, textured and with normals; neighbouring faces share
/// their vertices.
struct Terrain {
    int groups = 100;

    static constexpr int kObjectsPerGroup = 120;
    static constexpr int kColumns = 6;  // of quadrilaterals in an object
    static constexpr int kRows = 7;

    int objects() const { return groups * kObjectsPerGroup; }
    int faces() const { return objects() * kColumns * kRows; }
    std::size_t vertices() const;
    /// Where a vertex stands in the file, from the start of the palette.
    static std::uint32_t offsetOf(std::size_t vertex);
};

/// Writes it to `path`; ends the program when it cannot.
void writeTerrain(const Terrain& terrain, const std::string& path);

}  // namespace bench
