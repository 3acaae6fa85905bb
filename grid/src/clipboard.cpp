// Cells as text: rows end with a line end, cells within a row stand between tabs, and a text that
// holds either, or a quote, stands in double quotes with its own quotes doubled.
#include "tabbedtext.h"

#include <base/utf16.h>
#include <grid/cgridctrl.h>

#include <cstring>

namespace grid {

namespace {

class OpenClipboardScope {
public:
    explicit OpenClipboardScope(HWND owner) noexcept : open_(::OpenClipboard(owner)) {}
    ~OpenClipboardScope() {
        if (open_) ::CloseClipboard();
    }
    OpenClipboardScope(const OpenClipboardScope&) = delete;
    OpenClipboardScope& operator=(const OpenClipboardScope&) = delete;
    explicit operator bool() const noexcept { return open_; }

private:
    bool open_;
};

bool putOnClipboard(HWND owner, const std::string& text) {
    const std::wstring wide = base::toWide(text);
    const size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
    const OpenClipboardScope clipboard(owner);
    if (!clipboard) return false;
    const HGLOBAL memory = ::GlobalAlloc(GMEM_MOVEABLE, bytes);
    if (!memory) return false;
    if (void* const place = ::GlobalLock(memory)) {
        std::memcpy(place, wide.c_str(), bytes);
        ::GlobalUnlock(memory);
        ::EmptyClipboard();
        if (::SetClipboardData(CF_UNICODETEXT, memory)) return true;
    }
    ::GlobalFree(memory);
    return false;
}

std::string textFromClipboard(HWND owner) {
    const OpenClipboardScope clipboard(owner);
    const HANDLE memory = clipboard ? ::GetClipboardData(CF_UNICODETEXT) : nullptr;
    const void* const place = memory ? ::GlobalLock(memory) : nullptr;
    if (!place) return {};
    const std::wstring_view whole(static_cast<const wchar_t*>(place),
                                  ::GlobalSize(memory) / sizeof(wchar_t));
    std::string text = base::toUtf8(whole.substr(0, whole.find(L'\0')));
    ::GlobalUnlock(memory);
    return text;
}

}  // namespace

std::string CGridCtrl::RangeText(const CellRange& range) const {
    std::string text;
    if (!IsValid(range.first) || !IsValid(range.last)) return text;
    for (int row = range.first.row; row <= range.last.row; ++row) {
        for (int column = range.first.column; column <= range.last.column; ++column) {
            if (column > range.first.column) text += '\t';
            text += quotedForTabs(Find({row, column})->Text());
        }
        if (row < range.last.row) text += "\r\n";
    }
    return text;
}

bool CGridCtrl::SetRangeText(CellId at, std::string_view text) {
    const HWND self = Handle();
    bool changed = false;
    CellId cell = at;
    for (const std::vector<std::string>& row : splitTabs(text)) {
        cell.column = at.column;
        for (const std::string& value : row) {
            if (IsValid(cell) && CanEdit(cell) && CellText(cell.row, cell.column) != value) {
                changed = ChangeText(cell, value) || changed;
                if (self && FromHandle(self) != this) return changed;
            }
            ++cell.column;
        }
        ++cell.row;
    }
    return changed;
}

bool CGridCtrl::Copy() const {
    return CopyRange(selection_);
}

bool CGridCtrl::CopyRange(const CellRange& range) const {
    return !range.IsEmpty() && putOnClipboard(Handle(), RangeText(range));
}

bool CGridCtrl::Cut() {
    return Copy() && ClearSelection();
}

bool CGridCtrl::Paste() {
    if (selection_.IsEmpty() || !editable_) return false;
    const std::string text = textFromClipboard(Handle());
    const auto rows = splitTabs(text);
    if (rows.empty()) return false;
    if (rows.size() == 1 && rows.front().size() == 1)
        return FillRange(selection_, rows.front().front());
    return SetRangeText(selection_.first, text);
}

bool CGridCtrl::ClearSelection() {
    return editable_ && FillRange(selection_, {});
}

bool CGridCtrl::FillRange(const CellRange& range, const std::string& text) {
    const HWND self = Handle();
    const CellRange filled = range;
    bool changed = false;
    if (filled.IsEmpty()) return false;
    for (int row = filled.first.row; row <= filled.last.row; ++row) {
        for (int column = filled.first.column; column <= filled.last.column; ++column) {
            const CellId cell{row, column};
            if (!CanEdit(cell) || CellText(row, column) == text) continue;
            changed = ChangeText(cell, text) || changed;
            if (self && FromHandle(self) != this) return changed;
        }
    }
    return changed;
}

}  // namespace grid
