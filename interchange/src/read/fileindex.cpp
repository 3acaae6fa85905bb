#include <interchange/fileindex.h>
#include "../texts.h"

#include "filecursor.h"
#include "recordrole.h"

#include <quillon/fltfileheader.h>
#include <quillon/fltlevelwalk.h>
#include <quillon/fltrevision.h>
#include <quillon/fltswitch.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <algorithm>
#include <string>

namespace interchange {

namespace {

bool holdsPoints(std::uint16_t kind) {
    return kind == kFltFace || fltIsLightPoint(kind);
}

/// An open level, or the file around all of them.
struct Level {
    std::uint32_t offset = 0;    ///< of the record that began it
    std::uint32_t owner = 0;     ///< node that it belongs to, and under which its nodes go
    std::uint32_t current = 0;   ///< node that the next attached record or push is about
    std::uint32_t children = 0;  ///< nodes that stand directly in it
};

class FileIndexReader {
public:
    explicit FileIndexReader(FileBytes bytes) : cursor_(bytes) { index_.bytes = bytes; }

    FileIndex read() {
        readHeader();
        while (cursor_.next()) {
            const RecordRole role = roleOf(cursor_.opcode());
            handle(role);
            if (role != RecordRole::kContinuation)
                inOwnList_ = role == RecordRole::kVertexList && inOwnList_;
        }
        checkEnd();
        return std::move(index_);
    }

private:
    // ------------------------------------------------------------ start and end

    void readHeader() {
        using Cause = FltFileError::Cause;
        const FileBytes bytes = index_.bytes;
        if (bytes.empty()) refuseFile(0, text(TextId::kEmptyFile), Cause::kTruncated);
        if (bytes.size() >= kNone) {
            refuseFile(kNone, text(TextId::kHugeFile));
        }
        if (FltRecordView::statedOpcode(bytes, 0) != kFltHeader) {
            refuseFile(0, text(TextId::kNoHeader),
                       bytes.size() < sizeof(FltOpcode) ? Cause::kTruncated : Cause::kDamaged);
        }
        if (!cursor_.next()) cursor_.refuse();
        FltFileHeader header;
        const std::size_t revisionEnd = header.lengthThrough(&header.formatRevision);
        if (cursor_.end() < revisionEnd) {
            refuseFile(0, text(TextId::kShortHeader));
        }
        header.readBytes(cursor_.record().bytes(), 0);
        index_.revision = static_cast<std::uint32_t>(header.formatRevision);
        if (!fltIsReadable(index_.revision)) {
            refuseFile(revisionEnd - sizeof header.formatRevision,
                       text(TextId::kOldRevision, {std::to_string(header.formatRevision)}),
                       Cause::kUnsupportedRevision);
        }
        addNode(kNone);
    }

    void checkEnd() {
        index_.strayBytes = static_cast<std::uint32_t>(cursor_.strayBytes());
        if (levels_.depth() == 0) return;
        if (index_.strayBytes != 0) cursor_.refuse();
        const std::size_t count = levels_.depth();
        refuseFile(cursor_.end(),
                   text(count == 1 ? TextId::kOpenLevel : TextId::kOpenLevels,
                        {std::to_string(count), std::to_string(level().offset)}),
                   cursor_.left() < FltRecordView::kHeaderSize ? FltFileError::Cause::kTruncated
                                                               : FltFileError::Cause::kDamaged);
    }

    // ------------------------------------------------------------ nodes and their attached records

    Level& level() { return levels_.depth() == 0 ? file_ : levels_.innermost().level; }

    void handle(RecordRole role) {
        if (role == RecordRole::kUnknown) ++index_.unknownRecords;
        if (role == RecordRole::kPush) {
            push();
        } else if (role == RecordRole::kPop) {
            pop();
        } else if (levels_.isOpaque()) {
            addAttached(level().owner, kNone);
        } else if (role == RecordRole::kNode) {
            beginNode();
        } else if (handlePart(role)) {
            addAttached(level().current, 0);
        }
    }

    /// Handles a record that adds to the node before it, or to the file as a whole. Whether it is a
    /// attached record of the node.
    bool handlePart(RecordRole role) {
        switch (role) {
            case RecordRole::kLongId:
                addLongId();
                break;
            case RecordRole::kVertexPalette:
                addVertexPalette();
                return false;
            case RecordRole::kVertex:
                return false;
            case RecordRole::kVertexList:
                beginList();
                break;
            case RecordRole::kContinuation:
                if (inOwnList_) addCorners();
                return !inOwnList_;
            case RecordRole::kColorPalette:
                if (index_.colorPalette == 0) index_.colorPalette = cursor_.offset();
                break;
            case RecordRole::kLightPalette:
                index_.lights.push_back(cursor_.offset());
                break;
            case RecordRole::kTexture:
                index_.textures.push_back(cursor_.offset());
                break;
            default:
                break;
        }
        return true;
    }

    void beginNode() {
        if (cursor_.opcode() == kFltSwitch) checkSwitch();
        ++level().children;
        const std::uint32_t node = addNode(level().owner);
        level().current = node;
    }

    std::uint32_t addNode(std::uint32_t parent) {
        FileNode node;
        node.kind = cursor_.opcode();
        node.parent = parent;
        node.record = cursor_.offset();
        makeRoom(index_.nodes, 1, nodesBefore_);
        index_.nodes.push_back(node);
        return static_cast<std::uint32_t>(index_.nodes.size() - 1);
    }

    /// A switch says how many mask words it has; it must have them.
    void checkSwitch() const {
        const FltSwitch::StatedMasks stated = FltSwitch::statedMasks(cursor_.record().bytes());
        if (stated.arePresent()) return;
        refuseFile(cursor_.offset(),
                   text(TextId::kSwitchMasks,
                        {std::to_string(stated.masks), std::to_string(stated.wordsPerMask),
                         std::to_string(stated.wordsPresent)}));
    }

    /// Attaches the palette's record and passes its vertices, which stand behind it.
    void addVertexPalette() {
        addAttached(level().current, 0);
        index_.vertexPalette = cursor_.offset();
        for (FltRecordView next = cursor_.following();
             !next.empty() && FltVertex::isVertex(next.opcode()); next = cursor_.following()) {
            cursor_.moveTo(next);
        }
        index_.vertexPaletteEnd = cursor_.end();
        nodesBefore_ = index_.nodes.size();
        cornersBefore_ = index_.corners.size();
    }

    void addLongId() {
        FileNode& node = index_.nodes[level().current];
        ++index_.longIds;
        if (node.longId == 0) node.longId = cursor_.offset();
    }

    void addAttached(std::uint32_t owner, std::uint32_t children) {
        if (index_.nodes[owner].isPlain) listAttachedOfPlain(owner);
        append(owner, cursor_.offset(), children);
    }

    /// Puts what a plain node has into its chain.
    void listAttachedOfPlain(std::uint32_t owner) {
        FileNode& node = index_.nodes[owner];
        node.isPlain = false;
        append(owner, behind(node.record), 0);
        append(owner, node.list, 0);
        append(owner, behind(node.list), 0);
    }

    std::uint32_t behind(std::uint32_t record) const {
        return static_cast<std::uint32_t>(index_.recordAt(record).end());
    }

    void append(std::uint32_t owner, std::uint32_t record, std::uint32_t children) {
        const auto index = static_cast<std::uint32_t>(index_.attached.size());
        index_.attached.push_back({record, kNone, children});
        FileNode& node = index_.nodes[owner];
        if (node.lastAttached == kNone) {
            node.firstAttached = index;
        } else {
            index_.attached[node.lastAttached].next = index;
        }
        node.lastAttached = index;
    }

    // ------------------------------------------------------------ levels

    void push() {
        if (levels_.depth() >= kDeepestLevel) {
            refuseFile(cursor_.offset(), text(TextId::kTooDeep, {std::to_string(kDeepestLevel)}));
        }
        const std::uint32_t owner = levels_.isOpaque() ? level().owner : level().current;
        if (passPlainLevel(owner)) return;
        levels_.meet(cursor_.opcode(), {cursor_.offset(), owner, owner, 0});
        addAttached(owner, levels_.isOpaque() ? kNone : 0);
    }

    /// Nearly all levels are that of a polygon and hold one vertex list and nothing else: passes
    /// such a level at once when it begins here, right behind the node's record, and is all that
    /// the node has so far.
    bool passPlainLevel(std::uint32_t owner) {
        const FileNode& node = index_.nodes[owner];
        if (!holdsPoints(node.kind) || node.firstAttached != kNone || node.isPlain) return false;
        if (cursor_.opcode() != kFltPushLevel || cursor_.offset() != behind(node.record))
            return false;
        const FltRecordView list = cursor_.following();
        if (list.empty() || list.opcode() != kFltVertexList) return false;
        if (FltVertexOffsets(list.body()).size() == 0) return false;
        const FltRecordView pop = cursor_.after(list);
        if (pop.empty() || pop.opcode() != kFltPopLevel) return false;
        cursor_.moveTo(list);
        beginCorners(owner);
        cursor_.moveTo(pop);
        index_.nodes[owner].isPlain = true;
        return true;
    }

    void pop() {
        using Levels = decltype(levels_);
        const std::uint16_t opcode = cursor_.opcode();
        if (levels_.meet(opcode) == Levels::Step::kUnmatched) {
            const std::string name = fltOpcodeName(opcode);
            if (levels_.depth() == 0) refuseFile(cursor_.offset(), text(TextId::kNoLevel, {name}));
            refuseFile(cursor_.offset(),
                       text(TextId::kOtherLevel, {name, std::to_string(level().offset)}));
        }
        const Levels::Open& left = levels_.left();
        addAttached(left.level.owner, left.isOpaque ? kNone : left.level.children);
    }

    // ------------------------------------------------------------ corners

    /// Faces and light points have one vertex list each, in the first level below them; a second
    /// one has no meaning.
    void beginList() {
        inOwnList_ = false;
        const Level& here = level();
        if (levels_.depth() == 0 || here.current != here.owner) return;
        const FileNode& node = index_.nodes[here.owner];
        if (holdsPoints(node.kind) && node.list == 0) beginCorners(here.owner);
    }

    void beginCorners(std::uint32_t owner) {
        FileNode& node = index_.nodes[owner];
        node.list = cursor_.offset();
        node.firstCorner = static_cast<std::uint32_t>(index_.corners.size());
        listOwner_ = owner;
        inOwnList_ = true;
        // A morphing list has two vertices for each corner, the undisturbed one first.
        offsetsPerCorner_ = FltVertexOffsets::perCorner(cursor_.opcode());
        addCorners();
    }

    void addCorners() {
        const FltVertexOffsets offsets(cursor_.record().body());
        makeRoom(index_.corners, offsets.size(), cornersBefore_);
        for (std::size_t i = 0; i < offsets.size(); i += offsetsPerCorner_) {
            const std::uint64_t vertex = std::uint64_t{index_.vertexPalette} + offsets[i];
            if (!index_.isVertexAt(vertex)) refuseOffset(offsets[i]);
            index_.corners.push_back(static_cast<std::uint32_t>(vertex));
        }
        FileNode& node = index_.nodes[listOwner_];
        node.cornerCount = static_cast<std::uint32_t>(index_.corners.size()) - node.firstCorner;
    }

    [[noreturn]] void refuseOffset(std::uint32_t paletteOffset) const {
        refuseFile(cursor_.offset(), text(TextId::kNoVertex, {std::to_string(paletteOffset)}));
    }

    /// Makes room for `more`, and when there is none left, for as many as the whole file has if it
    /// goes on as it does since its vertex palette, before which the list had `before` entries.
    template <typename T>
    void makeRoom(std::vector<T>& list, std::size_t more, std::size_t before) const {
        if (list.capacity() - list.size() >= more) return;
        // Not 0: what asks for room is a record of its own, and stands behind the palette.
        const std::size_t passed = cursor_.end() - index_.vertexPaletteEnd;
        const double expected = 1.01 * static_cast<double>(list.size() - before) *
                                (static_cast<double>(cursor_.left()) / static_cast<double>(passed));
        list.reserve(list.size() + std::max(list.size(), static_cast<std::size_t>(expected)) +
                     more);
    }

    FileIndex index_;
    FileCursor cursor_;
    FltLevelWalk<Level> levels_;
    Level file_;
    std::size_t nodesBefore_ = 0;  ///< nodes that stand before the vertex palette
    std::size_t cornersBefore_ = 0;
    std::uint32_t listOwner_ = kNone;
    std::size_t offsetsPerCorner_ = 1;
    bool inOwnList_ = false;  ///< whether the record before, not counting continuations, was the
                              ///< vertex list of `listOwner_`
};

}  // namespace

FileIndex readFileIndex(FileBytes bytes) {
    return FileIndexReader(bytes).read();
}

}  // namespace interchange
