// The grid control by itself: what 100,000 rows cost in memory, and that scrolling through them
// costs what is in view.
#include "windowbench.h"

#include <grid/cgridctrl.h>
#include <input.h>

#include <malloc.h>

#include <cstdlib>
#include <new>
#include <stdexcept>

using grid::CGridCtrl;

namespace {

// Bytes that are allocated now, by this program's own code.
std::size_t allocated = 0;

}  // namespace

void* operator new(std::size_t size) {
    void* const memory = std::malloc(size ? size : 1);
    if (!memory) throw std::bad_alloc();
    allocated += ::_msize(memory);
    return memory;
}

void operator delete(void* memory) noexcept {
    if (memory) allocated -= ::_msize(memory);
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    operator delete(memory);
}

namespace bench {
namespace {

constexpr int kFew = 100;
constexpr int kMany = 100000;
constexpr int kColumns = 2;
// The cell itself, and a share of the heading row.
constexpr double kMostCellBytes = 24.01;
constexpr double kMostOfFew = 1.3;

class GridWindow : public CGridCtrl {
public:
    explicit GridWindow(int left) {
        RegisterGridClass();
        const RECT area{left, 50, left + 400, 650};
        if (!Create(area, nullptr, 0, WS_POPUP | WS_VISIBLE | WS_BORDER))
            throw std::runtime_error("the grid could not be created");
        SetColumnCount(kColumns);
        SetFixedColumnCount(1);
        SetFixedRowCount(1);
        testinput::activate(Handle());
    }

    void Fill(int rows) {
        const UpdateScope update(*this);
        SetRowCount(rows + 1);
        for (int row = 1; row <= rows; ++row) {
            const std::string number = std::to_string(row);
            SetCellText(row, 0, std::string("caption ").append(number));
            SetCellText(row, 1, std::string("value ").append(number));
        }
        ExpandColumnsToFit();
    }
};

/// How many texts one view of the grid draws: each filled cell is one.
int cellsDrawn(const CGridCtrl& grid) {
    const HDC recorder = ::CreateEnhMetaFileW(nullptr, nullptr, nullptr, nullptr);
    grid.Send(WM_PRINTCLIENT, reinterpret_cast<WPARAM>(recorder), PRF_CLIENT);
    const HENHMETAFILE recorded = ::CloseEnhMetaFile(recorder);
    int count = 0;
    const auto countTexts = [](HDC, HANDLETABLE*, const ENHMETARECORD* record, int,
                               LPARAM texts) -> int {
        const auto* const text = reinterpret_cast<const EMREXTTEXTOUTW*>(record);
        if (record->iType == EMR_EXTTEXTOUTW && text->emrtext.nChars > 0)
            ++*reinterpret_cast<int*>(texts);
        return 1;
    };
    ::EnumEnhMetaFile(nullptr, recorded, countTexts, &count, nullptr);
    ::DeleteEnhMetaFile(recorded);
    return count;
}

constexpr int kSteps = 200;

/// One of the steps from the first row to the last, painted.
double millisecondsOfScroll(GridWindow& grid, int step) {
    const int row = 1 + static_cast<int>(static_cast<long long>(step) * grid.RowCount() / kSteps);
    // Every step must have something to paint.
    grid.SetTopLine(step % 2 == 0 ? row : 1);
    grid.Invalidate(false);
    const double time = millisecondsOf([&] {
        grid.Update();
        ::GdiFlush();
    });
    testinput::pump();
    return time;
}

double bytesPerCell(std::size_t before, int rows) {
    return static_cast<double>(allocated - before) / (static_cast<double>(rows) * kColumns);
}

}  // namespace

void gridControl() {
    GridWindow few(50);
    few.Fill(kFew);
    const int drawnFew = cellsDrawn(few);

    GridWindow many(500);
    const std::size_t before = allocated;
    many.SetRowCount(kMany + 1);
    reportWithin(kMostCellBytes, "100,000 rows: memory of an empty cell",
                 bytesPerCell(before, kMany), "bytes");
    report("100,000 rows: filling", millisecondsOf([&] { many.Fill(kMany); }), "ms");
    report("100,000 rows: memory of a cell with about 14 characters", bytesPerCell(before, kMany),
           "bytes");
    report("100,000 rows: fitting a column to its contents",
           millisecondsOf([&] { many.AutoSizeColumn(1); }), "ms");
    many.ExpandColumnsToFit();

    // In turns, so that what else goes on slows down both.
    std::vector<double> scrollFew, scrollMany;
    for (int step = 0; step < kSteps; ++step) {
        scrollFew.push_back(millisecondsOfScroll(few, step));
        scrollMany.push_back(millisecondsOfScroll(many, step));
    }
    reportRatio(kMostOfFew, "100,000 rows: painting after a scroll : 100 rows", fastest(scrollMany),
                fastest(scrollFew));
    const int drawnMany = cellsDrawn(many);
    reportWithin(drawnFew, "100,000 rows: cells drawn for a view, at most those of 100 rows",
                 drawnMany, "cells");
}

}  // namespace bench
