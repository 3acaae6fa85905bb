// Materials of a table, as those that have a record each.
#pragma once

#include "classes.h"
#include "recordpatch.h"

#include <algorithm>
#include <iterator>
#include <vector>

namespace palettes {

inline void copyMaterial(const auto& from, auto& to) {
    std::ranges::copy(from.name, std::begin(to.name));
    to.flags = from.flags;
    to.ambient = from.ambient;
    to.diffuse = from.diffuse;
    to.specular = from.specular;
    to.emissive = from.emissive;
    to.shininess = from.shininess;
    to.alpha = from.alpha;
}

/// The records that the materials of a table would be, each with its place as its index. Throws
/// `diagnostics::AviaryAssertion` for what cannot be such a table.
inline std::vector<std::vector<std::uint8_t>> recordsOfTable(const FltRecordView& record,
                                                             std::uint32_t revision) {
    FltMaterialTable table;
    table.readBytes(record.bytes(), revision);
    std::vector<std::vector<std::uint8_t>> records;
    for (const auto& each : table.materials) {
        FltMaterial material;
        material.index = static_cast<std::int32_t>(records.size());
        copyMaterial(each, material);
        records.push_back(recordBytes(material, revision));
    }
    return records;
}

}  // namespace palettes
