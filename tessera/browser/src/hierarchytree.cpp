#include "hierarchytree.h"

#include "attributestore.h"
#include "recordkinds.h"

#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>

using framework::CWnd, framework::loadString;

namespace tessera {
namespace {

constexpr COLORREF kTreeBackground = 0xe1e1e1;
constexpr COLORREF kTransparent = 0xffffff;
constexpr int kIconWidth = 16;
constexpr int kIconHeight = 15;

}  // namespace

void HierarchyTree::initialise(CWnd& form) {
    SubclassDlgItem(IDC_TREE, form.Handle());
    Add(nullptr, loadString(IDS_SCENE_ROOT), 0, kindRowByIcon(IconKind::kSceneRoot));
    SetBackground(kTreeBackground);
    constexpr int kCount = static_cast<int>(kRecordKindCount);
    // Pixels are repeated, never mixed: at 150 % the icons are as at 100 %, from 175 % on double.
    const int times = std::max(1, (Scaled(100) + 25) / 100);
    images_.Create(times * kIconWidth, times * kIconHeight, ILC_COLOR24 | ILC_MASK, kCount, kCount);
    for (const RecordKind& row : kRecordKinds) images_.AddResource(row.bitmap, kTransparent);
    images_.SetOverlayImage(kOverlayRow, 1);
    SetImageList(images_.Handle());
}

HTREEITEM HierarchyTree::addNode(HTREEITEM parent, const char* text, NodeHandle node) {
    if (parent == TVI_ROOT) parent = nullptr;
    if (parent && !Find(parent)) return nullptr;
    const int image = parent ? iconOf(node) : kindRowByIcon(IconKind::kSceneRoot);
    return Add(parent, text ? text : "", node, image);
}

NodeHandle HierarchyTree::nodeOf(HTREEITEM item) {
    return clearing_ ? 0 : Node(item);
}

void HierarchyTree::clear(const CWnd& form) {
    if (!filling_) {
        filling_.emplace(*this);
        form.Post(kFillingEnds);
    }
    const base::ScopedValue clearing(clearing_, true);
    DeleteAll();
}

}  // namespace tessera
