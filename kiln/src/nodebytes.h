// How much memory things of a scene take.
#pragma once

#include <kiln/inode.h>

#include <cstddef>

namespace kiln {

/// About what a node takes with its chunks, its name, and its object if no other node shows it.
std::size_t bytesOf(const INode& node) noexcept;

}  // namespace kiln
