// A tree control of another process, looked at from here.
#pragma once

#include <framework/win32.h>

#include <string>

class RemoteTree {
public:
    RemoteTree(HWND tree, HANDLE process);
    ~RemoteTree();
    RemoteTree(const RemoteTree&) = delete;
    RemoteTree& operator=(const RemoteTree&) = delete;

    /// The first item with that label, null when there is none.
    HTREEITEM find(const std::string& label) const;
    bool isSelected(const std::string& label) const;
    bool isExpanded(const std::string& label) const;
    bool isBelow(const std::string& label, const std::string& parent) const;
    /// The labels of the selected items in their order, with blanks between them.
    std::string selected() const;
    HTREEITEM dropTarget() const { return next(nullptr, TVGN_DROPHILITE); }
    /// The middle of an item's label, and of its icon, on the screen; (0, 0) for one that cannot
    /// be seen.
    POINT middle(const std::string& label) const;
    POINT icon(const std::string& label) const;

private:
    HTREEITEM next(HTREEITEM item, UINT relation) const;
    HTREEITEM following(HTREEITEM item) const;
    std::string label(HTREEITEM item) const;
    bool hasState(HTREEITEM item, UINT state) const;
    RECT labelArea(const std::string& label) const;
    POINT onScreen(POINT at) const;
    LRESULT send(UINT message, WPARAM wParam, const void* argument) const;

    HWND tree_;
    HANDLE process_;
    void* memory_;  ///< of the other process, for what messages point to
};
