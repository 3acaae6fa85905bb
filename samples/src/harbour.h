// A harbour town of several files, with all that a picture of a scene can show.
#pragma once

#include <filesystem>

namespace samples {

/// Writes "harbour.flt" and what it refers to below `folder`: houses with doors that turn and
/// windows that are lit by night, trees that turn to the eye, a crane, lamps, and a lighthouse
/// whose light goes round, a barrier that lifts, two boats of which one has the harbour's colors in
/// place of its own; pictures for their surfaces in several formats; and one reference to a file
/// that is not there. The same bytes every time. Throws `std::runtime_error` when a file cannot be
/// written.
void writeHarbour(const std::filesystem::path& folder);

}  // namespace samples
