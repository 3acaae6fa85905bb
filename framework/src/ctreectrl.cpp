#include <base/utf16.h>
#include <framework/ctreectrl.h>
#include <framework/gdi.h>

#include <algorithm>

namespace framework {

namespace {

// The platform keeps item texts of any length but returns no more than the buffer holds.
constexpr size_t kFirstTextBuffer = 260;
constexpr size_t kLastTextBuffer = 1 << 20;

LPARAM pointerTo(const void* object) noexcept {
    return reinterpret_cast<LPARAM>(object);
}

TVITEMW itemFor(HTREEITEM item, UINT mask) noexcept {
    TVITEMW description{};
    description.hItem = item;
    description.mask = mask | TVIF_HANDLE;
    return description;
}

}  // namespace

bool CTreeCtrl::Create(DWORD style, const RECT& area, HWND parent, UINT id) {
    return CreateEx(WS_EX_CLIENTEDGE, WC_TREEVIEWW, {}, style | WS_CHILD, area, parent, id);
}

HTREEITEM CTreeCtrl::Insert(std::string_view text, HTREEITEM parent, HTREEITEM after, LPARAM data,
                            int image, int selectedImage) {
    std::wstring wideText = base::toWide(text);
    TVINSERTSTRUCTW insertion{};
    insertion.hParent = parent ? parent : TVI_ROOT;
    insertion.hInsertAfter = after;
    insertion.item.mask = TVIF_TEXT | TVIF_PARAM | TVIF_IMAGE | TVIF_SELECTEDIMAGE;
    insertion.item.pszText = wideText.data();
    insertion.item.lParam = data;
    insertion.item.iImage = image;
    insertion.item.iSelectedImage = selectedImage;
    return InsertItem(insertion);
}

HTREEITEM CTreeCtrl::InsertItem(const TVINSERTSTRUCTW& insertion) {
    return reinterpret_cast<HTREEITEM>(Send(TVM_INSERTITEMW, 0, pointerTo(&insertion)));
}

bool CTreeCtrl::DeleteItem(HTREEITEM item) const {
    return item && Send(TVM_DELETEITEM, 0, pointerTo(item)) != 0;
}

bool CTreeCtrl::DeleteAll() const {
    return Send(TVM_DELETEITEM, 0, pointerTo(TVI_ROOT)) != 0;
}

int CTreeCtrl::Count() const {
    return static_cast<int>(Send(TVM_GETCOUNT));
}

std::string CTreeCtrl::ItemText(HTREEITEM item) const {
    if (!item) return {};
    std::wstring text;
    for (size_t size = kFirstTextBuffer; size <= kLastTextBuffer; size *= 4) {
        text.assign(size, L'\0');
        TVITEMW description = itemFor(item, TVIF_TEXT);
        description.pszText = text.data();
        description.cchTextMax = static_cast<int>(size);
        if (!Send(TVM_GETITEMW, 0, pointerTo(&description))) return {};
        // The control may return a buffer of its own instead of filling this one.
        const std::wstring_view given = description.pszText;
        if (given.size() + 1 < size || description.pszText != text.data())
            return base::toUtf8(given);
    }
    return base::toUtf8(text.c_str());
}

void CTreeCtrl::SetItemText(HTREEITEM item, std::string_view text) const {
    if (!item) return;
    std::wstring wideText = base::toWide(text);
    TVITEMW description = itemFor(item, TVIF_TEXT);
    description.pszText = wideText.data();
    Send(TVM_SETITEMW, 0, pointerTo(&description));
}

LPARAM CTreeCtrl::ItemData(HTREEITEM item) const {
    if (!item) return 0;
    TVITEMW description = itemFor(item, TVIF_PARAM);
    return Send(TVM_GETITEMW, 0, pointerTo(&description)) ? description.lParam : 0;
}

bool CTreeCtrl::ItemImages(HTREEITEM item, int& image, int& selectedImage) const {
    if (!item) return false;
    TVITEMW description = itemFor(item, TVIF_IMAGE | TVIF_SELECTEDIMAGE);
    if (!Send(TVM_GETITEMW, 0, pointerTo(&description))) return false;
    image = description.iImage;
    selectedImage = description.iSelectedImage;
    return true;
}

UINT CTreeCtrl::ItemState(HTREEITEM item, UINT mask) const {
    if (!item) return 0;
    TVITEMW description = itemFor(item, TVIF_STATE);
    description.stateMask = mask;
    return Send(TVM_GETITEMW, 0, pointerTo(&description)) ? description.state & mask : 0;
}

void CTreeCtrl::SetItemState(HTREEITEM item, UINT state, UINT mask) const {
    if (!item) return;
    TVITEMW description = itemFor(item, TVIF_STATE);
    description.state = state;
    description.stateMask = mask;
    Send(TVM_SETITEMW, 0, pointerTo(&description));
}

HTREEITEM CTreeCtrl::Next(HTREEITEM item, UINT relation) const {
    return reinterpret_cast<HTREEITEM>(Send(TVM_GETNEXTITEM, relation, pointerTo(item)));
}

bool CTreeCtrl::ShowsButton(HTREEITEM item) const {
    if (!item) return false;
    TVITEMW description = itemFor(item, TVIF_CHILDREN);
    return Send(TVM_GETITEMW, 0, pointerTo(&description)) && description.cChildren != 0;
}

void CTreeCtrl::SetChildren(HTREEITEM item, int children) const {
    if (!item) return;
    TVITEMW description = itemFor(item, TVIF_CHILDREN);
    description.cChildren = children;
    Send(TVM_SETITEMW, 0, pointerTo(&description));
}

bool CTreeCtrl::Select(HTREEITEM item) const {
    return Send(TVM_SELECTITEM, TVGN_CARET, pointerTo(item)) != 0;
}

bool CTreeCtrl::SelectDropTarget(HTREEITEM item) const {
    return Send(TVM_SELECTITEM, TVGN_DROPHILITE, pointerTo(item)) != 0;
}

bool CTreeCtrl::Expand(HTREEITEM item, UINT code) const {
    return item && Send(TVM_EXPAND, code, pointerTo(item)) != 0;
}

bool CTreeCtrl::EnsureVisible(HTREEITEM item) const {
    return item && Send(TVM_ENSUREVISIBLE, 0, pointerTo(item)) != 0;
}

HTREEITEM CTreeCtrl::HitTest(POINT at, UINT* flags) const {
    TVHITTESTINFO info{};
    info.pt = at;
    Send(TVM_HITTEST, 0, pointerTo(&info));
    if (flags) *flags = info.flags;
    return info.hItem;
}

bool CTreeCtrl::ItemRect(HTREEITEM item, RECT& area, bool textOnly) const {
    if (!item) return false;
    // The message takes the item in the place of the answer.
    *reinterpret_cast<HTREEITEM*>(&area) = item;
    return Send(TVM_GETITEMRECT, textOnly, pointerTo(&area)) != 0;
}

bool CTreeCtrl::IsInView(HTREEITEM item) const {
    RECT line{};
    return ItemRect(item, line, false) && line.top >= 0 && line.bottom <= ClientRect().bottom;
}

HWND CTreeCtrl::EditLabel(HTREEITEM item) const {
    return item ? reinterpret_cast<HWND>(Send(TVM_EDITLABELW, 0, pointerTo(item))) : nullptr;
}

void CTreeCtrl::EndEditLabel(bool cancel) const {
    Send(TVM_ENDEDITLABELNOW, cancel);
}

HIMAGELIST CTreeCtrl::SetImageList(HIMAGELIST list, int kind) const {
    return reinterpret_cast<HIMAGELIST>(
        Send(TVM_SETIMAGELIST, static_cast<WPARAM>(kind), pointerTo(list)));
}

CImageList CTreeCtrl::CreateDragImage(HTREEITEM item) const {
    RECT label{};
    int image = 0;
    int selectedImage = 0;
    if (!item || !ItemRect(item, label, true) || !ItemImages(item, image, selectedImage)) return {};
    const auto icons = reinterpret_cast<HIMAGELIST>(Send(TVM_GETIMAGELIST, TVSIL_NORMAL));
    int iconWidth = 0;
    int iconHeight = 0;
    if (icons) ::ImageList_GetIconSize(icons, &iconWidth, &iconHeight);

    // Beside and below the pointer's tip, which is at the picture's corner.
    const int left = Scaled(12), top = Scaled(10), air = Scaled(3);
    const int height = std::max(iconHeight, heightOf(label)) + 2 * air;
    const RECT box{left, top, left + iconWidth + widthOf(label) + 3 * air, top + height};
    std::uint32_t* pixels = nullptr;
    const GdiBitmap bitmap = makePixelBitmap(box.right, box.bottom, pixels);
    const HDC dc = bitmap ? ::CreateCompatibleDC(nullptr) : nullptr;
    if (!dc) return {};
    constexpr COLORREF kSeeThrough = RGB(255, 0, 255);
    {
        const SelectScope drawing(dc, bitmap.get());
        const SelectScope font(dc, Font());
        const RECT whole{0, 0, box.right, box.bottom};
        ::SetBkColor(dc, kSeeThrough);
        ::ExtTextOutW(dc, 0, 0, ETO_OPAQUE, &whole, nullptr, 0, nullptr);
        ::FillRect(dc, &box, ::GetSysColorBrush(COLOR_WINDOW));
        ::FrameRect(dc, &box, ::GetSysColorBrush(COLOR_HIGHLIGHT));
        if (icons)
            ::ImageList_Draw(icons, image, dc, box.left + air, top + (height - iconHeight) / 2,
                             ILD_TRANSPARENT);
        RECT text{box.left + iconWidth + 2 * air, box.top, box.right, box.bottom};
        ::SetBkMode(dc, TRANSPARENT);
        ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
        ::DrawTextW(dc, base::toWide(ItemText(item)).c_str(), -1, &text,
                    DT_SINGLELINE | DT_VCENTER | DT_NOPREFIX);
    }
    ::DeleteDC(dc);
    CImageList picture;
    picture.Create(box.right, box.bottom, ILC_COLOR24 | ILC_MASK, 1, 1);
    picture.Add(bitmap.get(), kSeeThrough);
    return picture;
}

void CTreeCtrl::SetBackground(COLORREF color) const {
    Send(TVM_SETBKCOLOR, 0, static_cast<LPARAM>(color));
}

COLORREF CTreeCtrl::Background() const {
    return static_cast<COLORREF>(Send(TVM_GETBKCOLOR));
}

}  // namespace framework
