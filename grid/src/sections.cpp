// Sections of rows: folding by mouse and keyboard, and where focus and selection go then.
#include "keys.h"

#include <grid/cgridctrl.h>

namespace grid {

void CGridCtrl::SetSections(std::vector<Section> sections) {
    if (sections == Sections()) return;
    EndEdit(true);
    std::erase_if(sections, [this](const Section& section) { return section.first < fixedRows_; });
    lines_.SetSections(std::move(sections));
    lines_.Limit(rowCount_);
    SectionsChanged();
}

void CGridCtrl::FoldSection(std::size_t section, bool folded) {
    if (section >= Sections().size() || Sections()[section].folded == folded) return;
    EndEdit(true);
    lines_.Fold(section, folded);
    SectionsChanged();
}

// What was selected stays so; a heading that has come to stand for some of it stands for all its
// rows.
void CGridCtrl::SectionsChanged() {
    StopTracking();
    focus_ = Shown(focus_);
    anchor_ = Shown(anchor_);
    if (!selection_.IsEmpty()) selection_ = WholeSections(selection_);
    UpdateScrollBars();
    InvalidateAll();
}

// The cell that stands for a hidden one: the first of its section.
CellId CGridCtrl::Shown(CellId cell) const noexcept {
    if (cell.IsValid() && lines_.IsHidden(cell.row))
        cell.row = Sections()[*lines_.SectionOf(cell.row)].first;
    return cell;
}

CellRange CGridCtrl::WholeSections(CellRange range) const noexcept {
    range.first = Shown(range.first);
    if (lines_.IsHidden(range.last.row))
        range.last.row = Sections()[*lines_.SectionOf(range.last.row)].End() - 1;
    return range;
}

// The row so many lines below or above another one, at most the last or first that is not fixed.
// Headings of open sections are passed over.
int CGridCtrl::Step(int row, int lines) const noexcept {
    const auto isOpen = [this](const RowLines::Line& line) {
        return line.heading && !Sections()[*line.heading].folded;
    };
    const int last = LineCount() - 1;
    int line = std::clamp(lines_.LineOf(row) + lines, fixedRows_, std::max(last, fixedRows_));
    // Below the heading of an open section there is a row.
    if (isOpen(lines_.At(line))) line += lines < 0 && line > fixedRows_ ? -1 : 1;
    return lines_.At(line).row;
}

RECT CGridCtrl::LineRect(int line) const {
    const int top = LineTop(line);
    const int left = ColumnLeft(0);
    int right = left;
    for (int column = 0; column < columnCount_; ++column) right += ColumnWidth(column);
    return {left, top, right, top + RowHeight()};
}

std::optional<RECT> CGridCtrl::SectionRect(std::size_t section) const {
    if (section >= Sections().size()) return std::nullopt;
    const RECT area = LineRect(lines_.HeadingLine(section));
    if (area.bottom <= FixedHeight() || area.top >= ClientRect().bottom) return std::nullopt;
    return area;
}

std::optional<std::size_t> CGridCtrl::HeadingAt(POINT at) const noexcept {
    const int line = LineAt(at.y);
    if (line < 0 || ColumnAt(at.x) < 0) return std::nullopt;
    return lines_.At(line).heading;
}

// The section whose heading stands for the focus cell.
std::optional<std::size_t> CGridCtrl::FocusedHeading() const noexcept {
    return lines_.IsHidden(focus_.row) ? lines_.SectionOf(focus_.row) : std::nullopt;
}

void CGridCtrl::UserFolds(std::size_t section, bool folded) {
    FoldSection(section, folded);
    EnsureVisible(focus_);
    TellFocus();
    OnSectionsFolded();
}

void CGridCtrl::UserFoldsAll(bool folded) {
    for (std::size_t i = 0; i < Sections().size(); ++i) FoldSection(i, folded);
    EnsureVisible(focus_);
    TellFocus();
    OnSectionsFolded();
}

bool CGridCtrl::FoldByKey(UINT key) {
    if (isControlDown() || isDown(VK_SHIFT)) return false;
    if (const auto heading = FocusedHeading()) {
        if (key != VK_RIGHT && key != VK_RETURN && key != VK_F2) return false;
        UserFolds(*heading, false);
        MoveFocus(focus_, false);
        return true;
    }
    const auto section = SectionOf(focus_.row);
    if (key != VK_LEFT || !section || focus_.column != fixedColumns_) return false;
    UserFolds(*section, true);
    return true;
}

}  // namespace grid
