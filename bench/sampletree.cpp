#include "sampletree.h"

#include <base/utf16.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/kiln.h>

#include <array>
#include <utility>

namespace bench {
namespace {

struct Kind {
    FltNodeKind kind;
    const char* name;
    int image;  // what the browser shows for it
};
constexpr Kind kRoot{FltNodeKind::Header, "header", 11};
constexpr Kind kBranch{FltNodeKind::Group, "group", 0};
constexpr std::array kLeaves = {Kind{FltNodeKind::Object, "object", 1},
                                Kind{FltNodeKind::Face, "face", 14}};

SampleNode makeNode(int number, int parent, bool hasChildren) {
    const Kind& kind = parent < 0    ? kRoot
                       : hasChildren ? kBranch
                                     : kLeaves[static_cast<std::size_t>(number) % kLeaves.size()];
    std::string name = kind.name + std::to_string(number);
    INode* const node = GetCOREInterface()->CreateObjectNode(new DummyObject, name.c_str());
    fltEnsureKind(node, kind.kind, kFltRevision);
    std::wstring wideName = base::toWide(name);
    return {node, parent, std::move(name), std::move(wideName), kind.image, hasChildren};
}

}  // namespace

SampleTree makeSampleTree(int count, int childCount) {
    SampleTree tree;
    tree.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i) {
        const int parent = i == 0 ? -1 : (i - 1) / childCount;
        const bool hasChildren = static_cast<long long>(i) * childCount + 1 < count;
        tree.push_back(makeNode(i, parent, hasChildren));
    }
    return tree;
}

SampleTree makeBranches(int branchCount, int leafCount) {
    SampleTree tree;
    tree.reserve(1 +
                 static_cast<std::size_t>(branchCount) * (1 + static_cast<std::size_t>(leafCount)));
    tree.push_back(makeNode(0, -1, true));
    for (int i = 1; i <= branchCount; ++i) tree.push_back(makeNode(i, 0, true));
    for (int branch = 1; branch <= branchCount; ++branch)
        for (int i = 0; i < leafCount; ++i)
            tree.push_back(makeNode(static_cast<int>(tree.size()), branch, false));
    return tree;
}

}  // namespace bench
