#include "entryrecords.h"

#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/vertextails.h>
#include <kiln/kiln.h>
#include <quillon/fltface.h>

#include <new>

namespace palettes {

using fltkilnutil::FileBytes;

void recolor(INode& node, const Recolor& colors) {
    FltFace face;
    FltNodeKind kind{};
    if (fltGetKind(&node, false, kind) && kind == FltNodeKind::Face && fltGetRecord(&node, face)) {
        const auto [before, now] = colors(face.primaryColorIndex);
        if (before != now && node.GetWireColor() == before) node.SetWireColor(now);
    }
    Object* const object = node.GetObjectRef();
    if (object == nullptr || object->ClassID() != TRIOBJ_CLASS_ID) return;
    Mesh& mesh = static_cast<TriObject*>(object)->GetMesh();
    if (mesh.colors.IsEmpty()) return;
    FileBytes tails = fltkilnutil::sourceChunk(node, fltkilnutil::SourceChunk::corners);
    const FileBytes first = fltkilnutil::vertexTailAt(tails);
    const bool isForAll = !first.empty() && first.size() == tails.size();
    bool isAnnounced = false;
    for (int i = 0; i < mesh.colors.Count(); ++i) {
        const FileBytes tail = isForAll ? first : fltkilnutil::vertexTailAt(tails);
        if (tail.empty()) break;
        if (!isForAll) tails = tails.subspan(tail.size());
        const auto index = fltkilnutil::vertexTailColorIndex(tail);
        if (!index) continue;
        const auto [before, now] = colors(*index);
        if (before == now || mesh.colors[i] != before) continue;
        if (!isAnnounced && !object->AboutToChange()) throw std::bad_alloc();
        isAnnounced = true;
        mesh.colors[i] = now;
    }
    if (isAnnounced) node.InvalidateWS();
}

}  // namespace palettes
