#include "baretree.h"

#include <commctrl.h>

#include <cstdint>

namespace bench {
namespace {

// The platform's macros cast in ways that the compiler warns of.
LRESULT send(HWND window, UINT message, WPARAM wParam = 0, const void* argument = nullptr) {
    return SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(argument));
}

}  // namespace

BareTree::BareTree(HWND model) {
    RECT area{};
    GetClientRect(model, &area);
    const auto style = static_cast<DWORD>(GetWindowLongPtrW(model, GWL_STYLE));
    frame_ = CreateWindowExW(0, L"#32770", L"Bare tree", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 800, 0,
                             area.right + 40, area.bottom + 60, nullptr, nullptr, nullptr, nullptr);
    tree_ = CreateWindowExW(static_cast<DWORD>(GetWindowLongPtrW(model, GWL_EXSTYLE)), WC_TREEVIEWW,
                            L"", style, 0, 0, area.right, area.bottom, frame_, nullptr, nullptr,
                            nullptr);
    send(tree_, TVM_SETIMAGELIST, TVSIL_NORMAL,
         reinterpret_cast<const void*>(send(model, TVM_GETIMAGELIST, TVSIL_NORMAL)));
    paints_ = std::make_unique<PaintCounter>(tree_);
}

BareTree::~BareTree() {
    paints_.reset();
    DestroyWindow(frame_);
}

Cost BareTree::measure(const std::function<void()>& work) {
    return paints_->measure([&] {
        send(tree_, WM_SETREDRAW, FALSE);
        work();
        send(tree_, WM_SETREDRAW, TRUE);
        InvalidateRect(tree_, nullptr, TRUE);
    });
}

Cost BareTree::fill(const SampleTree& nodes) {
    items_.assign(nodes.size(), nullptr);
    return measure([&] {
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const SampleNode& node = nodes[i];
            TVINSERTSTRUCTW insert{};
            insert.hParent =
                node.parent < 0 ? TVI_ROOT : items_[static_cast<std::size_t>(node.parent)];
            insert.hInsertAfter = TVI_LAST;
            insert.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
            insert.item.pszText = const_cast<wchar_t*>(node.wideName.c_str());
            insert.item.lParam = reinterpret_cast<LPARAM>(node.node);
            insert.item.iImage = insert.item.iSelectedImage = node.image;
            items_[i] = reinterpret_cast<HTREEITEM>(send(tree_, TVM_INSERTITEMW, 0, &insert));
        }
    });
}

Cost BareTree::expandAll(const SampleTree& nodes) {
    return measure([&] { sendBottomUp(nodes, TVE_EXPAND); });
}

Cost BareTree::collapseAll(const SampleTree& nodes) {
    return measure([&] {
        // With the root first the others are out of view, which the control is much faster with.
        send(tree_, TVM_EXPAND, TVE_COLLAPSE, items_.front());
        sendBottomUp(nodes, TVE_COLLAPSE);
    });
}

void BareTree::sendBottomUp(const SampleTree& nodes, WPARAM code) {
    for (std::size_t i = nodes.size(); i-- > 0;)
        if (nodes[i].hasChildren) send(tree_, TVM_EXPAND, code, items_[i]);
}

Cost BareTree::clear() {
    return measure([&] { send(tree_, TVM_DELETEITEM, 0, TVI_ROOT); });
}

Cost BareTree::deleteChildren() {
    return measure([&] {
        const HTREEITEM root = items_.front();
        while (const LRESULT child = send(tree_, TVM_GETNEXTITEM, TVGN_CHILD, root))
            send(tree_, TVM_DELETEITEM, 0, reinterpret_cast<const void*>(child));
    });
}

}  // namespace bench
