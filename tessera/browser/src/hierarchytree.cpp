#include "hierarchytree.h"

#include "attributestore.h"
#include "recordkinds.h"

#include <framework/strings.h>
#include <resources/resource.h>

#include <cstdlib>

using framework::loadString;

namespace tessera {
namespace {

constexpr COLORREF kTreeBackground = 0xe1e1e1;
constexpr COLORREF kTransparent = 0xffffff;

/// The icons as they are drawn for one scaling of the display.
struct IconSize {
    int percent;
    int width;
    int height;
    const wchar_t* strip;  ///< null for the bitmaps that the record kinds name
};
constexpr IconSize kIconSizes[] = {{100, 16, 15, nullptr},
                                   {125, 20, 19, L"TREEICONS125"},
                                   {150, 24, 23, L"TREEICONS150"},
                                   {200, 32, 30, L"TREEICONS200"}};

/// Icons, and how many times each of their pixels is repeated.
struct IconChoice {
    IconSize size;
    int times;
};

/// Those that come nearest to the scaling.
IconChoice iconsFor(int percent) {
    constexpr int kMostTimes = 4;
    IconChoice best{kIconSizes[0], 1};
    for (int times = 1; times <= kMostTimes; ++times)
        for (const IconSize& size : kIconSizes)
            if (std::abs(times * size.percent - percent) <
                std::abs(best.times * best.size.percent - percent))
                best = {size, times};
    return best;
}

}  // namespace

void HierarchyTree::initialise(CWnd& form) {
    SubclassDlgItem(IDC_TREE, form.Handle());
    Add(nullptr, loadString(IDS_SCENE_ROOT), 0, kindRowByIcon(IconKind::kSceneRoot));
    SetBackground(kTreeBackground);
    constexpr int kCount = static_cast<int>(kRecordKindCount);
    const auto [size, times] = iconsFor(Scaled(100));
    images_.Create(times * size.width, times * size.height, ILC_COLOR24 | ILC_MASK, kCount, kCount);
    if (size.strip)
        images_.AddStrip(size.strip, kCount, kTransparent);
    else
        for (const RecordKind& row : kRecordKinds) images_.AddResource(row.bitmap, kTransparent);
    images_.SetOverlayImage(kOverlayRow, 1);
    SetImageList(images_.Handle());
    // Not every version makes room for icons that are higher than the text.
    const auto room = static_cast<WPARAM>(times * size.height + 1);
    if (Send(TVM_GETITEMHEIGHT) < static_cast<LRESULT>(room)) Send(TVM_SETITEMHEIGHT, room);
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

void HierarchyTree::endFilling() {
    if (filling_ && onGivenUp && Refill().isGivenUp()) {
        onGivenUp();
        Refill().beginAnew();
    }
    filling_.reset();
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
