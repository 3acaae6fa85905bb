// Lists of equally large images.
#pragma once

#include <framework/win32.h>

namespace framework {

/// Owns an image list of the platform. The drag functions work on the one drag there can be.
class CImageList {
public:
    CImageList() noexcept = default;
    explicit CImageList(HIMAGELIST list) noexcept : list_(list) {}
    ~CImageList() { Delete(); }
    CImageList(CImageList&& other) noexcept;
    CImageList& operator=(CImageList&& other) noexcept;

    /// `flags` are the platform's ILC_ codes.
    bool Create(int width, int height, UINT flags, int initial, int grow);
    void Delete() noexcept;
    HIMAGELIST Handle() const noexcept { return list_; }
    int Count() const noexcept;

    /// Adds a bitmap whose pixels of color `mask` are transparent; returns its position, or -1.
    int Add(HBITMAP bitmap, COLORREF mask) const;
    /// The same for a bitmap resource of the module, which is stretched to the list's images.
    int AddResource(UINT bitmapId, COLORREF mask) const;
    /// The same for a bitmap resource with `count` images side by side.
    int AddStrip(const wchar_t* name, int count, COLORREF mask) const;

    /// Makes an image the overlay number `overlay` (from 1). The function is looked up in the
    /// loaded common controls by name; false when they do not have it.
    bool SetOverlayImage(int image, int overlay) const;

    void Draw(HDC dc, int image, POINT at, UINT style = ILD_NORMAL) const;

    bool BeginDrag(int image, POINT hotSpot) const;
    bool SetDragCursorImage(int image, POINT hotSpot) const;
    /// `at` is relative to the window's upper left corner; null is the screen.
    static bool DragEnter(HWND window, POINT at);
    static bool DragMove(POINT at);
    static bool DragLeave(HWND window);
    static bool DragShow(bool shown);
    static void EndDrag();

private:
    int AddResource(const wchar_t* name, int count, COLORREF mask) const;

    HIMAGELIST list_ = nullptr;
};

}  // namespace framework
