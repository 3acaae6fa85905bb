// The host's scene into OpenFlight files.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class INode;
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
    /// One of `databasesOf`, as anything else is refused; null where there are not several.
    INode* database = nullptr;
    /// Only this node with what lies below it, directly below the header of its database, and the
    /// instance definitions that it refers to; null for the whole database. What is selected and
    /// `database` do not matter then.
    INode* top = nullptr;
};

/// The databases that an export may mean, in the scene's order: nodes with a header record that are
/// not within another one; where only what is selected is to be written, those that hold some of
/// it, if any do. `options.database` does not matter.
std::vector<INode*> databasesOf(Interface& host, const ExportOptions& options);

/// The name of the file that the database was read from, UTF-8, without its folder; empty for one
/// that was made in the scene.
std::string sourceFileOf(const INode& database);

/// What `exportFile` would leave out of the file: each thing in words for the user, in the host's
/// language, one a line; empty for nothing. Throws where there is nothing to write.
std::string leftOutOf(const ExportOptions& options, Interface& host);

/// Writes one database of the host's scene to the file at `path` (UTF-8).
///
/// The database is the node with a header record and everything below it; of several, the one that
/// `options` names. Nodes that hang on the root outside of any database go with it, and without any
/// database they make up one of their own. Nodes that count as OpenFlight nodes only by what they
/// show (meshes, lights, groups) are written as such; others are passed over, and their children,
/// placed as before, take their place.
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
