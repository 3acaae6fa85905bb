#include <grid/rowlines.h>

#include <algorithm>
#include <utility>

namespace grid {

void RowLines::SetSections(std::vector<Section> sections) {
    sections_.clear();
    int end = 0;
    for (Section& section : sections) {
        if (section.count <= 0 || section.first < end) continue;
        end = section.End();
        sections_.push_back(std::move(section));
    }
}

void RowLines::Limit(int rowCount) {
    std::erase_if(sections_,
                  [rowCount](const Section& section) { return section.End() > rowCount; });
}

std::optional<std::size_t> RowLines::SectionOf(int row) const noexcept {
    for (std::size_t i = 0; i < sections_.size(); ++i)
        if (sections_[i].Contains(row)) return i;
    return std::nullopt;
}

bool RowLines::IsHidden(int row) const noexcept {
    const auto section = SectionOf(row);
    return section && sections_[*section].folded;
}

int RowLines::LineOf(int row) const noexcept {
    int shift = 0;  // headings before the row, less the rows that are hidden before it
    for (const Section& section : sections_) {
        if (row < section.first) break;
        if (section.folded && row < section.End()) return section.first + shift;
        shift += section.folded ? 1 - section.count : 1;
    }
    return row + shift;
}

int RowLines::HeadingLine(std::size_t section) const noexcept {
    const Section& wanted = sections_[section];
    return LineOf(wanted.first) - (wanted.folded ? 0 : 1);
}

RowLines::Line RowLines::At(int line) const noexcept {
    int shift = 0;
    for (std::size_t i = 0; i < sections_.size(); ++i) {
        const Section& section = sections_[i];
        const int heading = section.first + shift;
        if (line < heading) break;
        if (line == heading) return {section.first, i};
        shift += section.folded ? 1 - section.count : 1;
    }
    return {line - shift, std::nullopt};
}

}  // namespace grid
