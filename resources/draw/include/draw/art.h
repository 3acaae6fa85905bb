#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace draw {

// One finished picture file.
struct ArtFile {
    std::string name;  // file name without a folder, such as "group.bmp"
    std::vector<std::uint8_t> bytes;
};

// Every bitmap and icon that the resource scripts name, drawn afresh. The same bytes every time.
// Throws `std::bad_alloc` only.
std::vector<ArtFile> drawAll();

}  // namespace draw
