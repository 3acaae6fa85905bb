#include "gridhost.h"

using grid::CGridCtrl;

namespace gridtest {

void Host::Fill(int rows) {
    grid.SetEditable(true);
    grid.SetRowCount(rows + 1);
    grid.SetColumnCount(2);
    grid.SetFixedRowCount(1);
    grid.SetFixedColumnCount(1);
    grid.SetCellText(0, 0, "属性");
    grid.SetCellText(0, 1, "值");
    for (int row = 1; row <= rows; ++row) {
        grid.SetCellText(row, 0, "name " + std::to_string(row));
        grid.SetCellText(row, 1, "value " + std::to_string(row));
        grid.SetCellData(row, 1, row);
    }
}

bool Host::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (id != kGrid) return false;
    if (header.code == LVN_BEGINLABELEDITW) {
        begun.push_back(CGridCtrl::EditedCell(header));
        result = refuseEditing;
        return true;
    }
    if (header.code != LVN_ENDLABELEDITW) return false;
    edits.push_back({CGridCtrl::EditedCell(header), CGridCtrl::EditedText(header),
                     reinterpret_cast<const NMLVDISPINFOW&>(header).item.lParam});
    const Edited edited = edits.back();
    if (onEdit) result = onEdit(edited);
    return true;
}

namespace {

int CALLBACK collectText(HDC, HANDLETABLE*, const ENHMETARECORD* record, int, LPARAM texts) {
    if (record->iType != EMR_EXTTEXTOUTW) return 1;
    const EMRTEXT& text = reinterpret_cast<const EMREXTTEXTOUTW*>(record)->emrtext;
    if (text.nChars > 0)
        reinterpret_cast<std::vector<std::wstring>*>(texts)->emplace_back(
            reinterpret_cast<const wchar_t*>(reinterpret_cast<const BYTE*>(record) +
                                             text.offString),
            text.nChars);
    return 1;
}

}  // namespace

std::vector<std::wstring> drawnTexts(const std::function<void(HDC)>& draw) {
    const HDC recorder = ::CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    draw(recorder);
    const HENHMETAFILE recorded = ::CloseEnhMetaFile(recorder);
    std::vector<std::wstring> texts;
    ::EnumEnhMetaFile(nullptr, recorded, collectText, &texts, nullptr);
    ::DeleteEnhMetaFile(recorded);
    return texts;
}

void GridTest::SetUp() {
    ASSERT_TRUE(CGridCtrl::RegisterGridClass());
    ASSERT_TRUE(host.Create(kDialog));
    host.Fill(6);
    host.grid.ExpandColumnsToFit();
    host.Show();
    ASSERT_TRUE(testinput::activate(host.Handle()));
    host.grid.SetFocus();
    testinput::pump();
}

POINT GridTest::middleOf(int row, int column) {
    const auto area = grid().CellRect({row, column});
    if (!area) {
        ADD_FAILURE() << "cell " << row << ", " << column << " is not shown";
        return {};
    }
    return {(area->left + area->right) / 2, (area->top + area->bottom) / 2};
}

void GridTest::clickCell(int row, int column, std::initializer_list<WORD> modifiers) {
    testinput::click(grid().Handle(), middleOf(row, column), 1, modifiers);
}

}  // namespace gridtest
