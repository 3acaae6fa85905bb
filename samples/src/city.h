// A tiled city of any number of files, for what works on many.
#pragma once

#include <cstddef>
#include <filesystem>

namespace samples {

/// Writes a city of `files` .flt files, 8 at least, below `folder`: "city.flt", which refers to
/// districts, they to their tiles, the tiles to shared models, and the models to one part; pictures
/// for their textures beside them. Among any ten tiles every kind of node occurs. The same bytes
/// every time. Throws `std::runtime_error` when a file cannot be written.
void writeCity(const std::filesystem::path& folder, std::size_t files);

}  // namespace samples
