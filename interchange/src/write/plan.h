// Which nodes of the scene go into a file, and how they hang together there.
#pragma once

#include <interchange/export.h>
#include <interchange/fileindex.h>

#include <fltkilnutil/nodekind.h>
#include <kiln/geometry.h>

#include <stdexcept>
#include <string>
#include <vector>

class INode;

namespace interchange {

/// A scene that cannot be written, in words for the user.
class ExportError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct PlanNode {
    INode* node = nullptr;  ///< null for a header that the scene does not have
    FltNodeKind kind{};
    std::uint32_t end = 0;        ///< index behind the last node below this one
    std::uint32_t children = 0;   ///< nodes directly below
    std::uint32_t above = kNone;  ///< index into `Plan::above`
};

struct Plan {
    std::vector<PlanNode> nodes;  ///< parents before children, in the scene's order; header first
    /// Transforms of nodes that are passed over, by which those below them are moved too.
    std::vector<Matrix3> above;
    std::size_t otherDatabases = 0;  ///< left out
};

/// Throws `ExportError` when there is nothing to write, or it nests too deeply.
Plan planExport(const ExportOptions& options, Interface& host);

/// A node's place in the file, relative to the node above it there.
Matrix3 placeInFile(const Plan& plan, const PlanNode& node);

}  // namespace interchange
