// Materials of a table, as those that have a record each.
#pragma once

#include "classes.h"

#include <algorithm>
#include <iterator>

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

}  // namespace palettes
