// The host's scene into OpenFlight files.
#pragma once

#include <cstdint>

class ImpExpReport;
class Interface;

namespace interchange {

struct ExportOptions {
    /// Format revision x 100, one of those that `fltIsWritable` allows; 0 for that of the
    /// database's header record, or the nearest that can be written.
    std::uint32_t revision = 0;
    /// Only selected nodes with what lies below them and the nodes above them, and so the instance
    /// definitions that these refer to.
    bool selectedOnly = false;
};

/// Writes one database of the host's scene to the file at `path` (UTF-8).
///
/// The database is the node with a header record (the one above the first selected node, or the
/// first there is) and everything below it; nodes that hang on the root outside of any database go
/// with it, and without any database they make up one of their own. Nodes that count as OpenFlight
/// nodes only by what they show (meshes, lights, groups) are written as such; others are passed
/// over, and their children, placed as before, take their place.
///
/// What was imported and not edited comes back as it was read. The file is written beside `path`
/// and takes its place when it is complete; before that, and after anything but success, a file
/// that was there is as it was.
///
/// Tells `report` how far it is, and at the end either a summary of what was written or the reason
/// why it could not be. Gives IMPEXP_SUCCESS, IMPEXP_FAIL or IMPEXP_CANCEL. Changes nothing in the
/// scene; nothing leaves by exception.
int exportFile(const char* path, const ExportOptions& options, ImpExpReport& report,
               Interface& host) noexcept;

}  // namespace interchange
