#include "nodedecider.h"

#include "../lights.h"
#include "../names.h"
#include "../transforms.h"

#include <fltkilnutil/kilnflt.h>
#include <interchange/textencoding.h>
#include <kiln/inode.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltvertex.h>

#include <algorithm>
#include <utility>

namespace interchange {

namespace {

using Kind = LayoutStep::Kind;

/// The parts of a node that stand right behind its record, unless they were read from another
/// place.
struct Parts {
    PartFate longId = PartFate::gone;
    PartFate comment = PartFate::gone;
    PartFate place = PartFate::gone;
};

PartFate fateOf(const std::string& text, bool isAsRead) {
    if (isAsRead) return PartFate::kept;
    return text.empty() ? PartFate::gone : PartFate::replaced;
}

/// Compares the node's name and comment with what was read; those that are new go into `layout`.
void decideTexts(const NodeSource& source, INode& node, Parts& parts, NodeLayout& layout) {
    CommentText comments;
    std::string name = source.name;
    bool hasLongId = false;
    for (const SourceRecord& entry : source.kept.attached) {
        if (entry.isOpaque) continue;
        if (entry.record.opcode() == kFltLongId && !std::exchange(hasLongId, true)) {
            const std::string longId = textOf(entry.record.body());
            if (!longId.empty()) name = longId;
        } else if (entry.record.opcode() == kFltComment) {
            comments.add(entry.record.body());
        }
    }
    layout.longId = node.GetName();
    parts.longId =
        fateOf(layout.longId, layout.longId == name || layout.longId == source.kept.givenName);
    layout.comment.clear();
    static_cast<void>(fltGetComment(&node, layout.comment));
    parts.comment = fateOf(layout.comment, layout.comment == comments.result());
}

/// Puts together the steps of one node.
class LayoutBuilder {
public:
    LayoutBuilder(const PlanNode& node, std::uint32_t index, SceneContent& content,
                  const SourceRecords& kept, const Parts& parts, NodeLayout& layout)
        : node_(node),
          index_(index),
          content_(content),
          kept_(kept),
          parts_(parts),
          layout_(layout),
          childrenLeft_(node.children) {}

    /// Lays the node out around its attached records.
    void build();
    /// Lays out a record with one level, for polygons and nodes below.
    void buildNewMesh();

private:
    /// What the attached records that were read have no place for yet.
    enum class Missing : std::uint8_t { nothing, polygon, faces };

    bool isFace() const { return node_.kind == FltNodeKind::Face; }
    std::uint32_t polygons() const { return content_.polygons.count(index_); }
    std::uint16_t childLevel() const { return isFace() ? kFltPushSubface : kFltPushLevel; }

    void findLevels();
    void addParts();
    void addAttached(std::uint32_t entry);
    void addPush(const SourceRecord& entry);
    void addPop(const SourceRecord& entry);
    void addList(const SourceRecord& entry, bool isOwn);
    void addPart(PartFate& fate, Kind part, const SourceRecord& entry);
    void addMissing(std::uint16_t level);
    void addChildren(std::uint32_t count);
    void addLevel(std::uint16_t opcode, std::uint32_t children);
    void addFurtherFaces();
    LayoutStep& add(Kind kind) { return layout_.steps.emplace_back(LayoutStep{kind}); }
    void addOf(Kind kind, std::uint16_t opcode) { add(kind).opcode = opcode; }
    void addOf(Kind kind, const SourceRecord& entry) { add(kind).record = entry.record.bytes(); }

    const PlanNode& node_;
    std::uint32_t index_;
    SceneContent& content_;
    const SourceRecords& kept_;
    Parts parts_;
    NodeLayout& layout_;
    std::uint32_t childrenLeft_;
    bool areSubfaces_ = isFace();
    Missing missing_ = Missing::nothing;
    bool hasKeptChildren_ = true;        ///< as many as were read
    std::uint32_t levelForAll_ = kNone;  ///< otherwise: the push of the level that gets them
    std::uint32_t ownList_ = kNone;      ///< the attached record that is the node's own vertex list
    std::size_t firstListed_ = 0;        ///< in the layout's offsets: vertices without a list yet
};

/// When there are more or fewer children than were read, nobody knows which belong where, and all
/// go into one level.
void LayoutBuilder::findLevels() {
    std::uint64_t children = 0;
    std::uint32_t firstLevel = kNone;
    std::uint32_t firstList = kNone;
    for (std::uint32_t i = 0; i < kept_.attached.size(); ++i) {
        const SourceRecord& entry = kept_.attached[i];
        if (entry.isOpaque) continue;
        const std::uint16_t opcode = entry.record.opcode();
        children += entry.children;
        if (opcode == childLevel() && firstLevel == kNone) firstLevel = i;
        if (isVertexList(opcode) && firstList == kNone) firstList = i;
    }
    hasKeptChildren_ = children == node_.children;
    if (!hasKeptChildren_) levelForAll_ = firstLevel;
    if (hasOwnList(node_.kind)) ownList_ = firstList;
    if (polygons() == 0) return;
    if (!hasOwnList(node_.kind)) missing_ = Missing::faces;
    if (hasOwnList(node_.kind) && firstList == kNone) missing_ = Missing::polygon;
}

void LayoutBuilder::build() {
    findLevels();
    addParts();
    for (std::uint32_t i = 0; i < kept_.attached.size(); ++i) addAttached(i);
    if (node_.kind == FltNodeKind::Header) add(Kind::palettes);
    if (missing_ == Missing::polygon && isFace()) addLevel(kFltPushLevel, 0);
    if (missing_ != Missing::nothing || childrenLeft_ != 0) addLevel(childLevel(), childrenLeft_);
    if (isFace() && polygons() > 1) addFurtherFaces();
}

void LayoutBuilder::buildNewMesh() {
    addParts();
    areSubfaces_ = false;
    missing_ = Missing::faces;
    addLevel(kFltPushLevel, childrenLeft_);
}

/// Those that have no place among the attached records.
void LayoutBuilder::addParts() {
    const auto addNew = [this](PartFate& fate, Kind part, auto&& isPlace) {
        const auto hasPlace = [&](const SourceRecord& entry) {
            return !entry.isOpaque && isPlace(entry.record.opcode());
        };
        if (fate != PartFate::replaced || std::ranges::any_of(kept_.attached, hasPlace)) return;
        add(part);
        fate = PartFate::gone;
    };
    addNew(parts_.longId, Kind::longId, [](std::uint16_t code) { return code == kFltLongId; });
    addNew(parts_.comment, Kind::comment, [](std::uint16_t code) { return code == kFltComment; });
    addNew(parts_.place, Kind::place, isTransform);
}

void LayoutBuilder::addAttached(std::uint32_t index) {
    const SourceRecord& entry = kept_.attached[index];
    const std::uint16_t opcode = entry.record.opcode();
    const bool hasVertices = firstListed_ != layout_.offsets.size();
    if (FltVertex::isVertex(opcode)) {
        layout_.offsets.push_back(content_.vertices.add(entry.record.bytes()));
    } else if (isVertexList(opcode) || (opcode == kFltContinuation && hasVertices)) {
        addList(entry, index == ownList_);
    } else if (fltClosingOpcode(opcode) != 0) {
        addPush(entry);
    } else if (fltIsPop(opcode)) {
        addPop(entry);
    } else if (entry.isOpaque) {
        addOf(Kind::record, entry);
    } else if (opcode == kFltLongId) {
        addPart(parts_.longId, Kind::longId, entry);
    } else if (opcode == kFltComment) {
        addPart(parts_.comment, Kind::comment, entry);
    } else if (isTransform(opcode)) {
        addPart(parts_.place, Kind::place, entry);
    } else if (opcode == kFltVertexPalette) {
        add(Kind::palettes);
    } else if (opcode == kFltLightSourcePalette) {
        addOf(Kind::lightEntry, entry);
    } else {
        addOf(opcode == kFltUvList ? Kind::uvList : Kind::record, entry);
    }
}

/// An attached record, or what takes its place; the latter once.
void LayoutBuilder::addPart(PartFate& fate, Kind part, const SourceRecord& entry) {
    if (fate == PartFate::kept) addOf(Kind::record, entry);
    if (fate != PartFate::replaced) return;
    add(part);
    fate = PartFate::gone;
}

void LayoutBuilder::addPush(const SourceRecord& entry) {
    if (!entry.isOpaque && node_.kind == FltNodeKind::Header) add(Kind::palettes);
    addOf(Kind::push, entry);
    if (!entry.isOpaque) addMissing(entry.record.opcode());
}

void LayoutBuilder::addPop(const SourceRecord& entry) {
    if (!entry.isOpaque && hasKeptChildren_) addChildren(entry.children);
    if (!entry.isOpaque && entry.push == levelForAll_) addChildren(childrenLeft_);
    addOf(Kind::pop, entry.record.opcode());
}

/// A vertex list that was read, over the vertices before it. The node's own one has the corners of
/// its mesh, when that has any.
void LayoutBuilder::addList(const SourceRecord& entry, bool isOwn) {
    const std::size_t first = std::exchange(firstListed_, layout_.offsets.size());
    const std::size_t count = firstListed_ - first;
    std::size_t corners = count;
    if (isOwn && polygons() != 0) {
        const auto own = content_.polygons.corners(index_, 0);
        if (entry.record.opcode() != kFltMorphVertexList || count != 2 * own.size()) {
            add(Kind::polygon);
            return;
        }
        // Pairs, of which the mesh has the undisturbed corners.
        corners = own.size();
        for (std::size_t i = 0; i < corners; ++i) layout_.offsets[first + 2 * i] = own[i];
    }
    LayoutStep& step = add(Kind::list);
    step.opcode = entry.record.opcode();
    step.first = static_cast<std::uint32_t>(first);
    step.count = static_cast<std::uint32_t>(count);
    step.corners = static_cast<std::uint32_t>(corners);
}

/// The corners, or faces of a mesh that hangs on a node of another kind.
void LayoutBuilder::addMissing(std::uint16_t level) {
    if (level != kFltPushLevel) return;
    if (missing_ == Missing::polygon) add(Kind::polygon);
    if (missing_ == Missing::faces) add(Kind::faces);
    missing_ = Missing::nothing;
}

void LayoutBuilder::addChildren(std::uint32_t count) {
    count = std::min(count, childrenLeft_);
    if (count == 0) return;
    add(areSubfaces_ ? Kind::subfaces : Kind::children).count = count;
    childrenLeft_ -= count;
}

void LayoutBuilder::addLevel(std::uint16_t opcode, std::uint32_t children) {
    addOf(Kind::push, opcode);
    addMissing(opcode);
    addChildren(children);
    addOf(Kind::pop, fltClosingOpcode(opcode));
}

/// Those of a face's polygons that its record does not stand for.
void LayoutBuilder::addFurtherFaces() {
    const bool areSubfaces = content_.lookOf(index_).isSuperFace;
    if (areSubfaces) addOf(Kind::push, kFltPushSubface);
    add(Kind::faces).first = 1;
    if (areSubfaces) addOf(Kind::pop, kFltPopSubface);
}

}  // namespace

// ------------------------------------------------------------ places

PartFate NodeDecider::decidePlace(const NodeSource& source, Matrix3& place) {
    const PlanNode& node = plan_.nodes[source.index];
    const Matrix3 kept = keptPlace(source.kept);
    // A header cannot be moved in a file: the nodes below it are.
    if (node.kind == FltNodeKind::Header) {
        const bool isAsRead = node.node != nullptr && node.node->GetLocalTM(0) == kept;
        return isAsRead ? PartFate::kept : PartFate::gone;
    }
    place = placeInFile(plan_, node);
    if (node.kind == FltNodeKind::LightSource) return decideLightPlace(source, kept, place);
    return place == kept ? PartFate::kept : PartFate::replaced;
}

PartFate NodeDecider::decideLightPlace(const NodeSource& source, const Matrix3& kept,
                                       Matrix3& place) {
    auto& light = static_cast<FltLightSource&>(*source.record);
    const FltRecord* const read = merger_.base(source.kept.record, source.kept.revision);
    const FltLightSource before =
        read != nullptr ? static_cast<const FltLightSource&>(*read) : FltLightSource();
    if (place == placeOf(before) * kept || !hasSamePlace(light, before)) return PartFate::kept;
    if (kept.IsIdentity() && moveTo(light, place)) return PartFate::kept;
    place = Inverse(placeOf(light)) * place;
    return PartFate::replaced;
}

// ------------------------------------------------------------ layouts

/// What polygons look like that have no node and no record.
void NodeDecider::setFurtherFaces(const NodeSource& source, NodeLayout& layout) {
    const PlanNode& node = plan_.nodes[source.index];
    const bool isFace = node.kind == FltNodeKind::Face;
    if (content_.polygons.count(source.index) < (isFace ? 2U : 1U)) return;
    layout.face = isFace ? static_cast<const FltFace&>(*source.record) : FltFace();
    layout.facePlace = {};
    if (!isFace) return;
    std::ranges::fill(layout.face.asciiId, '\0');
    settlePackedColors(layout.face, static_cast<const FltFace*>(
                                        merger_.base(source.kept.record, source.kept.revision)));
    // Beside the node's own face its transform does not reach them; subfaces it does.
    if (!content_.lookOf(source.index).isSuperFace) layout.facePlace = placeInFile(plan_, node);
}

void NodeDecider::decide(const NodeSource& source, PartFate place, NodeLayout& layout) {
    const PlanNode& node = plan_.nodes[source.index];
    Parts parts;
    parts.place = place;
    if (node.node != nullptr) decideTexts(source, *node.node, parts, layout);
    setFurtherFaces(source, layout);
    LayoutBuilder(node, source.index, content_, source.kept, parts, layout).build();
}

void NodeDecider::decideNewMesh(const NodeSource& source, PartFate place, NodeLayout& layout) {
    const PlanNode& node = plan_.nodes[source.index];
    Parts parts;
    parts.place = place;
    decideTexts(source, *node.node, parts, layout);
    setFurtherFaces(source, layout);
    layout.facePlace = {};  // they stand below the node
    LayoutBuilder(node, source.index, content_, source.kept, parts, layout).buildNewMesh();
}

}  // namespace interchange
