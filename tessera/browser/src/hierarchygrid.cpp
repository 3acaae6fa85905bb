// The form's attribute grid.
#include "hierarchy.h"

namespace tessera {

void Hierarchy::initialiseGrid() {}
void Hierarchy::fitColumns() {}
void Hierarchy::reduceGrid() {}
void Hierarchy::showAttributes(const FltAttrGroup&) {}
std::optional<int> Hierarchy::searchedAttribute() {
    return std::nullopt;
}

}  // namespace tessera
