#include "cgridex.h"

#include "attributemeaning.h"
#include "formbusy.h"
#include "formplace.h"
#include "valuetext.h"

#include <base/texts.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <array>
#include <cstdio>
#include <utility>

using framework::loadString;
using grid::CInPlaceList;

namespace tessera {
namespace {

constexpr int kCaptionColumn = 0;
constexpr int kValueColumn = 1;

constexpr UINT kCellFormat = DT_SINGLELINE | DT_VCENTER | DT_END_ELLIPSIS | DT_NOPREFIX;

grid::EditorKind editorOf(const FltAttrDesc& descriptor, bool readOnly) {
    if (readOnly || descriptor.visible == 0) return grid::EditorKind::kNone;
    return descriptor.type == FltAttrType::Enumeration ? grid::EditorKind::kList
                                                       : grid::EditorKind::kEdit;
}

}  // namespace

void Hierarchy::CGridEx::Reset() {
    const UpdateScope update(*this);
    set_ = nullptr;
    SetRowCount(1);
    SetColumnCount(2);
    SetFixedRowCount(1);
    SetFixedColumnCount(1);
    NameColumns();
}

void Hierarchy::CGridEx::NameColumns() {
    set_ = nullptr;  // the titles of its sections are to be renewed
    SetCellText(0, kCaptionColumn, loadString(IDS_GRID_ATTRIBUTE));
    SetCellText(0, kValueColumn, loadString(IDS_GRID_VALUE));
    // As what stands below it.
    SetCellFormat(0, kCaptionColumn, kCellFormat | DT_RIGHT);
}

void Hierarchy::CGridEx::SizeColumns() {
    AutoSizeColumns();
    SetColumnWidth(kCaptionColumn, ColumnWidth(kCaptionColumn) * 3 / 2);
    ExpandColumnsToFit();
}

void Hierarchy::CGridEx::ShowAttributes(const FltAttrGroup& set, bool readOnly) {
    const UpdateScope update(*this);
    SetRowCount(1 + static_cast<int>(fltAttrCount(set)));
    for (int row = 1; row < RowCount(); ++row) {
        FltAttrDesc& descriptor = set.descriptors[row - 1];
        SetCellText(row, kCaptionColumn, descriptor.caption ? descriptor.caption : "");
        SetCellFormat(row, kCaptionColumn, kCellFormat | DT_RIGHT);
        SetCellEditor(row, kCaptionColumn, grid::EditorKind::kNone);
        SetCellText(row, kValueColumn, descriptor.value.text());
        SetCellFormat(row, kValueColumn, kCellFormat | DT_LEFT);
        for (const int column : {kCaptionColumn, kValueColumn})
            SetCellData(row, column, reinterpret_cast<LPARAM>(&descriptor));
        RenewEditor(row - 1, descriptor, readOnly);
    }
    ShowSections(set);
}

void Hierarchy::CGridEx::ShowSections(const FltAttrGroup& set) {
    differing_.clear();
    if (std::exchange(set_, &set) == &set) return;
    std::vector<grid::Section> sections = sectionsOf(set.kind);
    if (!sections.empty()) {
        const auto [known, isNew] = folded_.try_emplace(set.kind, 0);
        if (isNew) known->second = loadFoldedSections(set.kind);
        for (std::size_t i = 0; i < sections.size(); ++i)
            sections[i].folded = (known->second >> i & 1) != 0;
    }
    SetSections(std::move(sections));
}

void Hierarchy::CGridEx::OnSectionsFolded() {
    if (!set_) return;
    std::uint32_t folded = 0;
    for (std::size_t i = 0; i < Sections().size(); ++i)
        if (Sections()[i].folded) folded |= std::uint32_t{1} << i;
    folded_[set_->kind] = folded;
    saveFoldedSections(set_->kind, folded);
}

void Hierarchy::CGridEx::MarkDiffering(std::vector<bool> differing) {
    if (differing_ == differing) return;
    differing_ = std::move(differing);
    Invalidate(false);
}

grid::CGridCtrl::Look Hierarchy::CGridEx::LookOf(grid::CellId cell) const {
    if (!set_ || cell.column != kValueColumn) return {};
    const auto attribute = static_cast<std::size_t>(cell.row - 1);
    const auto valueOf = [this](int index) { return CellText(index + 1, kValueColumn); };
    return {colorOf(set_->kind, cell.row - 1, valueOf),
            attribute < differing_.size() && differing_[attribute]};
}

std::string Hierarchy::CGridEx::AccessibleName() const {
    return loadString(IDS_HELP_GRID);
}

std::string Hierarchy::CGridEx::DescriptionOf(grid::CellId cell) const {
    if (!set_ || cell.row < 1 || cell.row >= RowCount()) return {};
    const int attribute = cell.row - 1;
    std::string unit;
    if (isLength(set_->kind, attribute)) unit = lengthUnit();
    std::string text = valueMeaning(*set_, attribute, unit);
    const Look look = LookOf({cell.row, kValueColumn});
    if (look.swatch) {
        std::array<char, 8> color{};
        std::snprintf(color.data(), color.size(), "#%02X%02X%02X", GetRValue(*look.swatch),
                      GetGValue(*look.swatch), GetBValue(*look.swatch));
        text = base::fillText(loadString(IDS_MEANING_COLOR), {text, color.data()});
    }
    if (CellEditor(cell.row, kValueColumn) == grid::EditorKind::kNone)
        text = base::fillText(loadString(IDS_MEANING_READ_ONLY), {text});
    if (look.differs) text = base::fillText(loadString(IDS_MEANING_DIFFERS), {text});
    return text;
}

std::string Hierarchy::CGridEx::Describe(int row) const {
    const std::string meaning = DescriptionOf({row, kValueColumn});
    return meaning.empty() ? meaning : CellText(row, kCaptionColumn) + ": " + meaning;
}

void Hierarchy::CGridEx::RenewEditor(int attribute, const FltAttrDesc& descriptor, bool readOnly) {
    SetCellEditor(attribute + 1, kValueColumn, editorOf(descriptor, readOnly));
}

LRESULT Hierarchy::CGridEx::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    const FormBusy busy;
    return CGridCtrl::WindowProc(message, wParam, lParam);
}

void Hierarchy::CGridEx::FillList(int row, int column, CInPlaceList& list) {
    const auto* const descriptor = reinterpret_cast<const FltAttrDesc*>(CellData(row, column));
    if (!descriptor) return;
    for (const char* choice : descriptor->choices) list.Add(choice);
}

int Hierarchy::CGridEx::FindChoice(int row, int column, std::string_view typed) {
    const auto* const descriptor = reinterpret_cast<const FltAttrDesc*>(CellData(row, column));
    return descriptor && descriptor->isYesNo() ? yesNoBegunBy(*descriptor, typed) : -1;
}

}  // namespace tessera
