// A dialog with a grid in it, laid out as a table of properties, that records what the grid tells.
#pragma once

#include "input.h"

#include <framework/cdialog.h>
#include <grid/cgridctrl.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <vector>

namespace gridtest {

inline constexpr UINT kDialog = 300;
inline constexpr int kBefore = 1001;
inline constexpr int kAfter = 1002;
inline constexpr int kGrid = 1012;

struct Edited {
    grid::CellId cell;
    std::string text;
    LPARAM data;
    friend bool operator==(const Edited&, const Edited&) = default;
};

inline std::ostream& operator<<(std::ostream& out, const Edited& edited) {
    return out << "(" << edited.cell.row << ", " << edited.cell.column << ") '" << edited.text
               << "' " << edited.data;
}

class PropertyGrid : public grid::CGridCtrl {
public:
    std::vector<std::string> choices{"Always", "Never", "Near", "Night"};

    int printed = 0;
    /// How often each message has come.
    std::map<UINT, int> messages;

protected:
    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override {
        ++messages[message];
        return grid::CGridCtrl::WindowProc(message, wParam, lParam);
    }
    void FillList(int, int, grid::CInPlaceList& list) override {
        for (const std::string& choice : choices) list.Add(choice);
    }
    void OnPrint() override { ++printed; }
};

class Host : public framework::CDialog {
public:
    PropertyGrid grid;
    std::vector<Edited> edits;
    std::vector<grid::CellId> begun;
    std::function<LRESULT(const Edited&)> onEdit;
    bool refuseEditing = false;

    /// A heading row and column, and `rows` rows with the texts "name n" and "value n", data n.
    void Fill(int rows);

protected:
    bool OnInitDialog() override { return grid.SubclassDlgItem(kGrid, Handle()); }
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;
};

/// The texts that are drawn on a device context that records them.
std::vector<std::wstring> drawnTexts(const std::function<void(HDC)>& draw);

/// The dialog on the screen with six rows of properties, the grid having the focus.
class GridTest : public ::testing::Test {
protected:
    void SetUp() override;

    grid::CGridCtrl& grid() { return host.grid; }
    POINT middleOf(int row, int column);
    void clickCell(int row, int column, std::initializer_list<WORD> modifiers = {});
    grid::CellId focus() { return grid().FocusCell(); }

    Host host;
};

}  // namespace gridtest

namespace grid {

inline std::ostream& operator<<(std::ostream& out, const CellId& cell) {
    return out << "(" << cell.row << ", " << cell.column << ")";
}

inline std::ostream& operator<<(std::ostream& out, const CellRange& range) {
    return out << range.first << " to " << range.last;
}

}  // namespace grid
