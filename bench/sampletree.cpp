#include "sampletree.h"

#include <fltkilnutil/kilnflt.h>
#include <framework/text.h>
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
    std::wstring wideName = toWide(name);
    return {node, parent, std::move(name), std::move(wideName), kind.image, hasChildren};
}

}  // namespace

SampleTree makeSampleTree(int count, int childCount) {
    // The n-th node's children are those from n * childCount + 1 on.
    SampleTree tree;
    std::vector<std::pair<int, int>> pending{{0, -1}};  // number, place of the parent
    while (!pending.empty()) {
        const auto [number, parent] = pending.back();
        pending.pop_back();
        const long long firstChild = static_cast<long long>(number) * childCount + 1;
        const int place = static_cast<int>(tree.size());
        tree.push_back(makeNode(number, parent, firstChild < count));
        for (long long child = firstChild + childCount; child-- > firstChild;)
            if (child < count) pending.emplace_back(static_cast<int>(child), place);
    }
    return tree;
}

}  // namespace bench
