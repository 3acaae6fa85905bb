#include "module_internal.h"

#include <framework/cimagelist.h>
#include <framework/gdi.h>
#include <framework/module.h>

namespace framework {

CImageList::CImageList(CImageList&& other) noexcept : list_(std::exchange(other.list_, nullptr)) {}

CImageList& CImageList::operator=(CImageList&& other) noexcept {
    if (this != &other) {
        Delete();
        list_ = std::exchange(other.list_, nullptr);
    }
    return *this;
}

bool CImageList::Create(int width, int height, UINT flags, int initial, int grow) {
    Delete();
    ensureCommonControls();
    list_ = ::ImageList_Create(width, height, flags, initial, grow);
    return list_ != nullptr;
}

void CImageList::Delete() noexcept {
    if (list_) ::ImageList_Destroy(std::exchange(list_, nullptr));
}

int CImageList::Count() const noexcept {
    return list_ ? ::ImageList_GetImageCount(list_) : 0;
}

int CImageList::Add(HBITMAP bitmap, COLORREF mask) const {
    return list_ ? ::ImageList_AddMasked(list_, bitmap, mask) : -1;
}

int CImageList::AddResource(UINT bitmapId, COLORREF mask) const {
    return AddResource(MAKEINTRESOURCEW(bitmapId), 1, mask);
}

int CImageList::AddStrip(const wchar_t* name, int count, COLORREF mask) const {
    return AddResource(name, count, mask);
}

int CImageList::AddResource(const wchar_t* name, int count, COLORREF mask) const {
    int width = 0;
    int height = 0;
    if (!list_ || !::ImageList_GetIconSize(list_, &width, &height)) return -1;
    const GdiBitmap bitmap(static_cast<HBITMAP>(::LoadImageW(
        resourceInstance(), name, IMAGE_BITMAP, count * width, height, LR_CREATEDIBSECTION)));
    return bitmap ? Add(bitmap.get(), mask) : -1;
}

bool CImageList::SetOverlayImage(int image, int overlay) const {
    // In the library that made the list: a process may have several versions of it.
    HMODULE library = nullptr;
    ::GetModuleHandleExW(
        GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
        reinterpret_cast<LPCWSTR>(&::ImageList_Create), &library);
    const auto setOverlay =
        platformFunction<BOOL WINAPI(HIMAGELIST, int, int)>(library, "ImageList_SetOverlayImage");
    return list_ && setOverlay && setOverlay(list_, image, overlay);
}

void CImageList::Draw(HDC dc, int image, POINT at, UINT style) const {
    if (list_) ::ImageList_Draw(list_, image, dc, at.x, at.y, style);
}

bool CImageList::BeginDrag(int image, POINT hotSpot) const {
    return list_ && ::ImageList_BeginDrag(list_, image, hotSpot.x, hotSpot.y);
}

bool CImageList::SetDragCursorImage(int image, POINT hotSpot) const {
    return list_ && ::ImageList_SetDragCursorImage(list_, image, hotSpot.x, hotSpot.y);
}

bool CImageList::DragEnter(HWND window, POINT at) {
    return ::ImageList_DragEnter(window, at.x, at.y) != FALSE;
}

bool CImageList::DragMove(POINT at) {
    return ::ImageList_DragMove(at.x, at.y) != FALSE;
}

bool CImageList::DragLeave(HWND window) {
    return ::ImageList_DragLeave(window) != FALSE;
}

bool CImageList::DragShow(bool shown) {
    return ::ImageList_DragShowNolock(shown) != FALSE;
}

void CImageList::EndDrag() {
    ::ImageList_EndDrag();
}

}  // namespace framework
