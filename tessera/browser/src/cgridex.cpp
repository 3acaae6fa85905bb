#include "cgridex.h"

#include "formbusy.h"
#include "valuetext.h"

#include <framework/strings.h>
#include <resources/resource.h>

using framework::loadString;
using grid::CGridCtrl, grid::CInPlaceList;

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
    SetRowCount(1);
    SetColumnCount(2);
    SetFixedRowCount(1);
    SetFixedColumnCount(1);
    NameColumns();
}

void Hierarchy::CGridEx::NameColumns() {
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
