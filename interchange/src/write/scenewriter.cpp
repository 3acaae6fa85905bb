#include "scenewriter.h"
#include "../texts.h"

#include "../names.h"
#include "../transforms.h"

#include <base/text.h>
#include <quillon/fltcomment.h>
#include <quillon/fltfactory.h>
#include <quillon/fltheader.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltlongid.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltvertexlist.h>

#include <memory>
#include <utility>

namespace interchange {

SceneWriter::SceneWriter(const Plan& plan, SceneContent& content, ImpExpReport& report,
                         FltStream& stream)
    : plan_(plan),
      content_(content),
      stream_(stream),
      progress_(plan, report, ExportProgress::Half::writing),
      decider_(plan, content) {}

void SceneWriter::write() {
    const NodeSource source{0, nodes_.kept(plan_.nodes.front()), &stream_.header(),
                            idOf(stream_.header())};
    NodeLayout& layout = beginLayout();
    const PartFate place = decider_.decidePlace(source, layout.place);
    decider_.decide(source, place, layout);
    write(0, layout);
}

// ------------------------------------------------------------ nodes

/// What is kept on the node is gone when those below it are written: by then it is decided what
/// becomes of it.
void SceneWriter::writeNode(std::uint32_t index, bool isSubface) {
    progress_.tell(index);
    const PlanNode& node = plan_.nodes[index];
    NodeSource source{index, nodes_.kept(node), nodes_.record(node)};
    if (const auto texture = content_.textureOf(index)) {
        static_cast<FltFace&>(*source.record).textureIndex = static_cast<std::int16_t>(*texture);
    }
    if (const auto light = content_.lightOf(index)) {
        static_cast<FltLightSource&>(*source.record).paletteIndex = *light;
    }
    NodeLayout& layout = beginLayout();
    const PartFate place = decider_.decidePlace(source, layout.place);
    if (!isSubface && hasFacesOfItsOwn(source)) {
        source.name = writeNewMeshRecord(index);
        decider_.decideNewMesh(source, place, layout);
    } else {
        source.name = writeRecord(source);
        decider_.decide(source, place, layout);
    }
    write(index, layout);
}

/// Whether the node stands for several faces, none of which was read and is the node itself.
bool SceneWriter::hasFacesOfItsOwn(const NodeSource& source) const {
    return plan_.nodes[source.index].kind == FltNodeKind::Face &&
           content_.polygons.count(source.index) > 1 &&
           !content_.lookOf(source.index).isSuperFace && source.kept.revision == 0;
}

/// The record that stands for the node; returns what it calls the node.
std::string SceneWriter::writeRecord(const NodeSource& source) {
    const SourceRecords& kept = source.kept;
    if (source.record == nullptr) {
        stream_.writeVerbatim(kept.record.bytes());
        return nameInRecord(kept.record.bytes());
    }
    FltRecord& record = *source.record;
    const bool isFace = record.opcode() == kFltFace;
    if (isFace && kept.revision == 0) {
        writeNamed(static_cast<FltFace&>(record), source.index);
    } else if (kept.revision == 0) {
        record.write(stream_);
    } else if (kept.record.empty() && !isFace) {
        // One that came without a name goes without.
        record.writeToken(stream_.token(), stream_.revision());
        stream_.writeToken(stream_.token());
    } else {
        stream_.writeVerbatim(merger_.put(record, stream_.revision(), kept.record, kept.revision));
    }
    return idOf(record);
}

/// A mesh that was made in the scene: an object with its polygons, or a group where more than faces
/// hangs below it.
std::string SceneWriter::writeNewMeshRecord(std::uint32_t index) {
    const PlanNode& node = plan_.nodes[index];
    bool onlyFaces = true;
    for (std::uint32_t i = index + 1; i < node.end; i = plan_.nodes[i].end) {
        onlyFaces = onlyFaces && plan_.nodes[i].kind == FltNodeKind::Face;
    }
    const std::unique_ptr<FltRecord> record = fltCreateRecord(onlyFaces ? kFltObject : kFltGroup);
    record->write(stream_);
    return idOf(*record);
}

// ------------------------------------------------------------ layouts

/// An empty one, which stays valid while those below the node are written.
NodeLayout& SceneWriter::beginLayout() {
    if (openLayouts_ == layouts_.size()) layouts_.emplace_back();
    NodeLayout& layout = layouts_[openLayouts_];
    layout.steps.clear();
    layout.offsets.clear();
    return layout;
}

void SceneWriter::write(std::uint32_t index, const NodeLayout& layout) {
    ++openLayouts_;
    std::uint32_t nextChild = index + 1;
    for (const LayoutStep& step : layout.steps) write(step, index, layout, nextChild);
    --openLayouts_;
}

void SceneWriter::write(const LayoutStep& step, std::uint32_t index, const NodeLayout& layout,
                        std::uint32_t& nextChild) {
    using Kind = LayoutStep::Kind;
    const std::span offsets(layout.offsets);
    switch (step.kind) {
        case Kind::record:
            return stream_.writeVerbatim(step.record);
        case Kind::longId:
            return writeLongId(layout.longId);
        case Kind::comment:
            return writeComment(layout.comment);
        case Kind::place:
            return writePlace(stream_, layout.place);
        case Kind::palettes:
            return writePalettes();
        case Kind::lightEntry:
            return content_.palettes.write(stream_, FltRecordView::at(step.record, 0));
        case Kind::uvList:
            if (FltUvList::fits(step.record, listCorners_)) stream_.writeVerbatim(step.record);
            return;
        case Kind::push:
            return push(step);
        case Kind::pop:
            return pop(step.opcode);
        case Kind::polygon:
            return writePolygon(index, 0);
        case Kind::list:
            return writeList(step.opcode, offsets.subspan(step.first, step.count), step.corners);
        case Kind::faces:
            return writeFaces(index, step.first, layout);
        case Kind::children:
            return writeChildren(step.count, nextChild, false);
        case Kind::subfaces:
            return writeChildren(step.count, nextChild, true);
    }
}

void SceneWriter::writeChildren(std::uint32_t count, std::uint32_t& next, bool areSubfaces) {
    for (; count != 0; --count) {
        const std::uint32_t child = std::exchange(next, plan_.nodes[next].end);
        writeNode(child, areSubfaces);
    }
}

void SceneWriter::writeLongId(const std::string& text) {
    FltLongId record;
    record.name = base::clipUtf8(text, kLongestComment);
    record.write(stream_);
}

void SceneWriter::writeComment(const std::string& text) {
    FltComment(std::string(base::clipUtf8(text, kLongestComment)).c_str()).write(stream_);
}

void SceneWriter::push(const LayoutStep& step) {
    if (++openLevels_ > kDeepestLevel) {
        throw ExportError(text(TextId::kTooDeep, {std::to_string(kDeepestLevel)}));
    }
    if (step.record.empty()) {
        stream_.writeControl(step.opcode);
    } else {
        stream_.writeVerbatim(step.record);
    }
}

void SceneWriter::pop(std::uint16_t opcode) {
    stream_.writeControl(opcode);
    --openLevels_;
}

// ------------------------------------------------------------ vertices and faces

void SceneWriter::writeList(std::uint16_t opcode, std::span<const std::uint32_t> offsets,
                            std::size_t corners) {
    listCorners_ = corners;
    list_.clear();
    fltAppendVertexList(list_, opcode, offsets);
    stream_.writeRecords(list_);
}

void SceneWriter::writePolygon(std::uint32_t index, std::uint32_t polygon) {
    const auto corners = content_.polygons.corners(index, polygon);
    writeList(kFltVertexList, corners, corners.size());
}

/// The faces of a node's mesh from polygon `first` on, which have no node of their own.
void SceneWriter::writeFaces(std::uint32_t index, std::uint32_t first, const NodeLayout& layout) {
    for (std::uint32_t i = first; i < content_.polygons.count(index); ++i) {
        FltFace face = layout.face;
        writeNamed(face, index);
        if (!layout.facePlace.IsIdentity()) writePlace(stream_, layout.facePlace);
        push({LayoutStep::Kind::push, kFltPushLevel});
        writePolygon(index, i);
        pop(kFltPopLevel);
    }
}

/// A face of the node's mesh, which gets a name if it has none; one that was not read looks as its
/// node does.
void SceneWriter::writeNamed(FltFace& face, std::uint32_t index) {
    face.nameFor(stream_);
    layOutNewFace(face, content_.lookOf(index), stream_.revision(), stream_.token());
    stream_.writeToken(stream_.token());
}

void SceneWriter::writePalettes() {
    if (std::exchange(hasPalettes_, true)) return;
    content_.palettes.writeNew(stream_);
    if (content_.vertices.empty()) return;
    FltVertexPalette palette;
    palette.length += static_cast<std::uint32_t>(content_.vertices.size());
    palette.write(stream_);
    content_.vertices.forEachBlock([this](FileBytes records) { stream_.writeRecords(records); });
}

}  // namespace interchange
