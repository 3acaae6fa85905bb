// OpenFlight files into the host's scene.
#pragma once

#include <interchange/fileindex.h>

#include <string>

class ImpExpReport;
class INode;
class Interface;

namespace interchange {

/// Reads the file at `path` (UTF-8) into the host's scene, below one new node under the root that
/// stands for the database and carries its header record.
///
/// Every OpenFlight node becomes a host node with kind block, record and comment: faces and light
/// points are meshes (those of light points have colored vertices and no faces), light sources are
/// lights, all others dummies. Tells `report` how far it is, and at the end either a summary of
/// what was read or the reason why it could not be. After success Aviary knows the file's name.
///
/// Returns IMPEXP_SUCCESS, IMPEXP_FAIL or IMPEXP_CANCEL; after the last two the scene is as it was.
int importFile(const char* path, ImpExpReport& report, Interface& host) noexcept;

/// Builds the nodes of `file`, whose bytes must still be there, and returns the one that stands
/// for the database. It is named after its long identifier, its ID, or `fileName` (UTF-8) without
/// its extension where the file says nothing or only "db", and remembers that name of its file.
/// No node stays behind when it throws: `FltFileError` for a record that cannot be kept,
/// `Cancelled`, `std::bad_alloc`.
INode* buildScene(const FileIndex& file, const std::string& fileName, ImpExpReport& report,
                  Interface& host);

/// Thrown when the user has cancelled.
struct Cancelled {};

/// What was read, for the user: "imported 3 nodes (1 group, 1 face, 1 header)", and what was not.
std::string summaryOf(const FileIndex& file);

}  // namespace interchange
