// Which rows of a grid are shown, and on which line.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace grid {

/// Rows that belong together, below a heading that folds them away. The heading is a line of its
/// own and no row.
struct Section {
    int first = 0;  ///< row
    int count = 0;
    std::string title;  ///< UTF-8
    bool folded = false;

    int End() const noexcept { return first + count; }
    bool Contains(int row) const noexcept { return row >= first && row < End(); }
    friend bool operator==(const Section&, const Section&) = default;
};

/// The lines that rows and headings of sections take, counted from 0. All are equally high. There
/// are few sections: each question looks through them.
class RowLines {
public:
    /// What stands on a line. For a heading the row is the first of its section.
    struct Line {
        int row = 0;
        std::optional<std::size_t> heading;
    };

    const std::vector<Section>& Sections() const noexcept { return sections_; }
    /// In the order of their rows, which may not overlap; those that do, and empty ones, are left
    /// out.
    void SetSections(std::vector<Section> sections);
    void Fold(std::size_t section, bool folded) { sections_.at(section).folded = folded; }
    /// Leaves out the sections that have rows from `rowCount` on.
    void Limit(int rowCount);

    std::optional<std::size_t> SectionOf(int row) const noexcept;
    bool IsHidden(int row) const noexcept;
    /// The lines of a grid with so many rows.
    int Count(int rowCount) const noexcept { return LineOf(rowCount); }
    /// Where a row is; for a hidden one, its section's heading.
    int LineOf(int row) const noexcept;
    int HeadingLine(std::size_t section) const noexcept;
    Line At(int line) const noexcept;

private:
    std::vector<Section> sections_;
};

}  // namespace grid
