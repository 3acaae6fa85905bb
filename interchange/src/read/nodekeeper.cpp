#include "nodekeeper.h"

#include <kiln/kiln.h>
#include <quillon/fltface.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <algorithm>
#include <utility>

namespace interchange {

namespace {

/// Whether `record` says what `written` says, which knows only the fields of our own. Zeros that
/// one has more than the other say nothing, unless they are more than padding: a longer record has
/// room for what we do not know.
bool saysNoMore(FileBytes record, FileBytes written) {
    if (record.size() > fltPaddedLength(written.size())) return false;
    const std::size_t common = std::min(record.size(), written.size());
    const auto isZero = [](std::uint8_t byte) { return byte == 0; };
    return std::ranges::equal(record.first(common).subspan(FltRecordView::kHeaderSize),
                              written.first(common).subspan(FltRecordView::kHeaderSize)) &&
           std::ranges::all_of(record.subspan(common), isZero) &&
           std::ranges::all_of(written.subspan(common), isZero);
}

bool isLitFace(const FileNode& source, const FltRecord* record) {
    return source.kind == kFltFace && fltIsLit(static_cast<const FltFace&>(*record).lightMode);
}

}  // namespace

void NodeKeeper::keep(INode& node, const FileNode& source, const Made& made) {
    if (made.mesh != nullptr) {
        const FileBytes tails =
            tails_.bytesFor(*made.mesh, isLitFace(source, made.record), made.vertices);
        if (!tails.empty()) storeSourceChunk(node, SourceChunk::corners, tails);
    }
    const bool losesVertices =
        made.mesh != nullptr &&
        static_cast<std::uint32_t>(made.mesh->verts.Count()) < source.cornerCount;
    const bool keepsRecord = needsRecord(source, made.record);
    // A header's record is always kept, which says nothing of how its program writes levels.
    const bool keepsAttached =
        (keepsRecord && source.kind != kFltHeader) || losesVertices || !hasPlainAttached(source);
    if (!keepsRecord && made.madeUpName.empty() && !keepsAttached) return;
    kept_.begin(file_.revision);
    if (keepsRecord) kept_.nodeRecord(file_.recordAt(source.record).bytes());
    if (!made.madeUpName.empty()) kept_.givenName(made.madeUpName);
    if (source.isPlain && keepsAttached) {
        keepAttachedOfPlain(source, losesVertices);
    } else if (keepsAttached) {
        keepAttached(source, losesVertices);
    }
    storeSourceChunk(node, SourceChunk::records, kept_.bytes());
}

/// Whether the node's record says something that ours does not hold. A light source's is always
/// kept, to tell a light that was moved in the scene from one whose position was edited, and a
/// header's, which comes back in the length that it had.
bool NodeKeeper::needsRecord(const FileNode& source, const FltRecord* record) {
    if (record == nullptr || source.kind == kFltLightSource || source.kind == kFltHeader) {
        return true;
    }
    // Also where its packed colors are zeros, which is what a copy in the scene has for them.
    if (source.kind == kFltFace &&
        (static_cast<const FltFace&>(*record).flags & kFltSurfacePackedColors) != 0) {
        return true;
    }
    record->writeToken(written_, file_.revision);
    return !saysNoMore(file_.recordAt(source.record).bytes(),
                       {written_.data(), std::size_t{written_.length()}});
}

/// Whether the node's attached records are those that export makes of the node without being told:
/// a level for its children, or one for its corners.
bool NodeKeeper::hasPlainAttached(const FileNode& source) const {
    if (source.isPlain) return true;
    const AttachedRange attached = file_.attachedTo(source);
    auto entry = attached.begin();
    if (entry == attached.end()) return true;
    const auto opcode = [&] { return file_.recordAt(entry->record).opcode(); };
    if (opcode() != kFltPushLevel) return false;
    ++entry;  // a pop is still to come
    const bool hasList = entry->record == source.list;
    if (hasList) {
        if (opcode() == kFltMorphVertexList || source.cornerCount == 0) return false;
        ++entry;
    }
    if (opcode() != kFltPopLevel) return false;
    const bool hasChildren = entry->children != 0;
    if (++entry != attached.end()) return false;
    return source.kind == kFltFace ? hasList && !hasChildren : hasList || hasChildren;
}

void NodeKeeper::keepAttachedOfPlain(const FileNode& source, bool losesVertices) {
    const std::size_t push = file_.recordAt(source.record).end();
    kept_.record(file_.recordAt(static_cast<std::uint32_t>(push)).bytes());
    keepList(file_.recordAt(source.list), true, losesVertices);
    kept_.marker(kFltPopLevel, 0);
}

void NodeKeeper::keepAttached(const FileNode& source, bool losesVertices) {
    bool inList = false;
    for (const AttachedRecord& entry : file_.attachedTo(source)) {
        const FltRecordView record = file_.recordAt(entry.record);
        const std::uint16_t opcode = record.opcode();
        const bool wasInList = std::exchange(inList, isVertexList(opcode));
        if (fltIsPop(opcode)) {
            keepPop(opcode, entry.children);
        } else if (isVertexList(opcode)) {
            keepList(record, entry.record == source.list, losesVertices);
        } else if (opcode == kFltContinuation && wasInList) {
            keepVertices(record);
            inList = true;
        } else if (opcode == kFltVertexPalette) {
            if (entry.children != kNone && entry.record == file_.vertexPalette)
                kept_.marker(opcode);
        } else if (!FltVertex::isVertex(opcode)) {
            kept_.record(record.bytes());
        }
    }
}

/// Outside of levels that hold no nodes a pop says how many children its level has.
void NodeKeeper::keepPop(std::uint16_t opcode, std::uint32_t children) {
    if (children == kNone) {
        kept_.marker(opcode);
    } else {
        kept_.marker(opcode, children);
    }
}

void NodeKeeper::keepList(const FltRecordView& record, bool isOwn, bool losesVertices) {
    if (isOwn && !losesVertices && record.opcode() == kFltVertexList) {
        kept_.marker(kFltVertexList);
    } else {
        keepVertices(record);
    }
}

/// Keeps the vertices that a list or its continuation names, then the list with their numbers. One
/// that names something else stays behind as an empty list.
void NodeKeeper::keepVertices(const FltRecordView& list) {
    const FltVertexOffsets offsets(list.body());
    const auto vertexOf = [&](std::size_t i) {
        return std::uint64_t{file_.vertexPalette} + offsets[i];
    };
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        if (!file_.isVertexAt(vertexOf(i))) {
            kept_.marker(list.opcode());
            return;
        }
    }
    for (std::size_t i = 0; i < offsets.size(); ++i) {
        kept_.record(file_.recordAt(static_cast<std::uint32_t>(vertexOf(i))).bytes(),
                     kLongestVertex);
    }
    kept_.numbers(list.opcode(), static_cast<std::uint32_t>(offsets.size()));
}

}  // namespace interchange
