// Writes the nodes of a scene as records.
#pragma once

#include "exportprogress.h"
#include "nodedecider.h"
#include "nodelayout.h"
#include "nodereader.h"
#include "recordmerge.h"
#include "scenecontent.h"

#include <quillon/fltstream.h>

#include <deque>
#include <string>
#include <vector>

namespace interchange {

/// Writes what a plan holds into a stream that begins with the database's header.
class SceneWriter {
public:
    /// `content` is what was collected from the plan's nodes.
    SceneWriter(const Plan& plan, SceneContent& content, ImpExpReport& report, FltStream& stream);

    /// Writes everything behind the header. Throws `ExportError` and `Cancelled`.
    void write();

private:
    void writeNode(std::uint32_t index, bool isSubface);
    bool hasFacesOfItsOwn(const NodeSource& source) const;
    std::string writeRecord(const NodeSource& source);
    std::string writeNewMeshRecord(std::uint32_t index);

    NodeLayout& beginLayout();
    void write(std::uint32_t index, const NodeLayout& layout);
    void write(const LayoutStep& step, std::uint32_t index, const NodeLayout& layout,
               std::uint32_t& nextChild);
    void writeChildren(std::uint32_t count, std::uint32_t& next, bool areSubfaces);
    void writeLongId(const std::string& text);
    void writeComment(const std::string& text);
    void push(const LayoutStep& step);
    void pop(std::uint16_t opcode);
    void writeList(std::uint16_t opcode, std::span<const std::uint32_t> offsets,
                   std::size_t corners);
    void writePolygon(std::uint32_t index, std::uint32_t polygon);
    void writeFaces(std::uint32_t index, std::uint32_t first, const NodeLayout& layout);
    void writeNamed(FltFace& face, std::uint32_t index);
    void writePalettes();

    const Plan& plan_;
    SceneContent& content_;
    FltStream& stream_;
    ExportProgress progress_;
    NodeReader nodes_;
    NodeDecider decider_;
    RecordMerger merger_;
    std::deque<NodeLayout> layouts_;  ///< of the node that is being written and those above it
    std::size_t openLayouts_ = 0;
    std::size_t openLevels_ = 0;
    std::size_t listCorners_ = 0;  ///< of the vertex list written last
    bool hasPalettes_ = false;     ///< whether they stand in the file
    std::vector<std::uint8_t> list_;
};

}  // namespace interchange
