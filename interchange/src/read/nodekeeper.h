// What a file says of its nodes beyond their OpenFlight data, for export to write back.
#pragma once

#include "../sourcerecords.h"
#include "../vertices.h"

#include <interchange/fileindex.h>

#include <quillon/flttoken.h>

#include <string_view>

class FltRecord;
class INode;

namespace interchange {

/// Keeps on each node what the scene would lose. One object serves all nodes of a file.
class NodeKeeper {
public:
    explicit NodeKeeper(const FileIndex& file) : file_(file) {}

    /// What has been made of a node.
    struct Made {
        const FltRecord* record = nullptr;    ///< its record; null for a kind without a class
        const Mesh* mesh = nullptr;           ///< of a face or light points; null for others
        std::span<const FileBytes> vertices;  ///< those of the mesh, or one that stands for all
        std::string_view madeUpName;          ///< empty when the file says the name
    };

    /// Keeps on `node` what `source` says and `made` does not. A node that says no more has
    /// nothing kept on it.
    void keep(INode& node, const FileNode& source, const Made& made);

private:
    bool needsRecord(const FileNode& source, const FltRecord* record);
    bool hasPlainAttached(const FileNode& source) const;
    void keepAttached(const FileNode& source, bool losesVertices);
    void keepAttachedOfPlain(const FileNode& source, bool losesVertices);
    void keepPop(std::uint16_t opcode, std::uint32_t children);
    void keepList(const FltRecordView& record, bool isOwn, bool losesVertices);
    void keepVertices(const FltRecordView& list);

    const FileIndex& file_;
    SourceRecordsWriter kept_;
    VertexTails tails_;
    FltToken written_;
};

}  // namespace interchange
