// Decides what a file says about a node.
#pragma once

#include "nodelayout.h"
#include "nodereader.h"
#include "recordmerge.h"
#include "scenecontent.h"

class FltLightSource;

namespace interchange {

/// A node on its way into the file. Its layout is begun and is only added to.
struct NodeSource {
    std::uint32_t index;  ///< in the plan
    const SourceRecords& kept;
    FltRecord* record;   ///< with what was edited; null for a kind without a class
    std::string name{};  ///< what its record calls the node, once that is written
};

/// What becomes of a part of a node that may have been read.
enum class PartFate : std::uint8_t {
    kept,      ///< it comes back as it was read
    replaced,  ///< it is another now, or was not there
    gone,
};

/// Compares nodes with what was read of them.
class NodeDecider {
public:
    NodeDecider(const Plan& plan, SceneContent& content) : plan_(plan), content_(content) {}

    /// What becomes of the node's transforms; `place` is what replaces them. A light's position and
    /// direction are in its record as well as in the scene: those that were not edited follow the
    /// scene, and the record is changed.
    PartFate decidePlace(const NodeSource& source, Matrix3& place);

    /// Adds all that stands behind the node's record, with `place` saying what becomes of the
    /// layout's place.
    void decide(const NodeSource& source, PartFate place, NodeLayout& layout);

    /// The same for a mesh that stands for several faces, none of which was read, and gets a record
    /// of another kind: its polygons and the nodes below it stand in the level behind that.
    void decideNewMesh(const NodeSource& source, PartFate place, NodeLayout& layout);

private:
    PartFate decideLightPlace(const NodeSource& source, const Matrix3& kept, Matrix3& place);
    void setFurtherFaces(const NodeSource& source, NodeLayout& layout);

    const Plan& plan_;
    SceneContent& content_;
    RecordMerger merger_;
};

}  // namespace interchange
