// What a grid holds.
#pragma once

#include <framework/win32.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <string_view>

namespace grid {

/// How a cell is edited. The numbers are part of the interface.
enum class EditorKind : std::uint8_t { kNone = 0, kEdit = 1, kList = 2 };

/// The position of a cell; row and column count from 0, fixed ones included. -1 means no cell.
struct CellId {
    int row = -1;
    int column = -1;

    bool IsValid() const noexcept { return row >= 0 && column >= 0; }
    friend bool operator==(const CellId&, const CellId&) = default;
};

/// A rectangle of cells, both corners included. Empty when a corner is no cell.
struct CellRange {
    CellId first;
    CellId last;

    /// The range between two corners in any order.
    static CellRange Between(CellId a, CellId b) noexcept {
        return {{std::min(a.row, b.row), std::min(a.column, b.column)},
                {std::max(a.row, b.row), std::max(a.column, b.column)}};
    }
    bool IsEmpty() const noexcept { return !first.IsValid() || !last.IsValid(); }
    bool Contains(CellId cell) const noexcept {
        return !IsEmpty() && cell.row >= first.row && cell.row <= last.row &&
               cell.column >= first.column && cell.column <= last.column;
    }
    friend bool operator==(const CellRange&, const CellRange&) = default;
};

/// How text is drawn in a cell by default: the platform's DT_ codes.
inline constexpr UINT kDefaultFormat =
    DT_LEFT | DT_VCENTER | DT_SINGLELINE | DT_END_ELLIPSIS | DT_NOPREFIX;

/// One cell. Small, since a grid may hold hundreds of thousands: an empty text allocates nothing.
class Cell {
public:
    /// UTF-8, up to the first NUL.
    std::string_view Text() const noexcept { return text_ ? text_.get() : std::string_view(); }
    void SetText(std::string_view text);

    LPARAM data = 0;
    std::uint32_t format = kDefaultFormat;
    EditorKind editor = EditorKind::kEdit;

private:
    std::unique_ptr<char[]> text_;
};

}  // namespace grid
