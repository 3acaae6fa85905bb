// The grid control.
#pragma once

#include <framework/cwnd.h>
#include <grid/cell.h>
#include <grid/cinplaceeditor.h>
#include <grid/rowlines.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace grid {

class GridAccessible;

/// The window class that a dialog template names to contain a grid. `CGridCtrl::RegisterGridClass`
/// must have been called before the dialog is created.
inline constexpr wchar_t kGridWindowClass[] = L"MFCGridCtrl";

/// A table of text cells with fixed heading rows and columns, edited in place.
///
/// Use: bind it to a dialog's custom control with `SubclassDlgItem`, or `Create` it. Counts, cells,
/// widths and switches may be set before or after there is a window. Calls about a cell that does
/// not exist change nothing and return empty results.
///
/// Keys: arrows (with Ctrl: to the edge), Page Up and Down, Home and End (with Ctrl: of the grid)
/// move the focus cell, with Shift they extend the selection; Ctrl+A selects all cells that are not
/// fixed. Tab and Shift+Tab go through the cells and leave the grid at its ends, with Ctrl at once.
/// F2, Enter, typing or composing with an input method edits; Ctrl+C, X and V are the clipboard, as
/// are Ctrl+Insert, Shift+Delete and Shift+Insert; Delete clears; Ctrl+P prints. In a right-to-left
/// window the left and right arrows follow what is seen. In the first free column Left folds the
/// section of the focus cell; a folded one is unfolded by Right, Enter, F2 or the space bar.
///
/// Mouse: a click moves the focus cell, a click on the focus cell edits it, a click on a cell with
/// a list opens the list at once. Dragging selects a range; a heading selects its row or column,
/// the corner everything. A divider in the heading row resizes its column; a double click on it
/// fits the column to its contents. The right button moves the focus cell too, unless it comes down
/// on a selected cell; in a fixed column it means the row's first free cell. A click on the heading
/// of a section folds or unfolds it.
///
/// Notifications to the parent, all WM_NOTIFY:
/// - LVN_BEGINLABELEDITW (`NMLVDISPINFOW`: iItem row, iSubItem column, lParam datum) before an
///   editor opens; an answer other than 0 refuses.
/// - LVN_ENDLABELEDITW (the same with pszText) after an edit, a paste or a clearing has changed the
///   text of a cell: the cell holds the new text already. An answer below 0 refuses: the cell gets
///   the former text again. The owner may change the grid while it handles this. The text is
///   UTF-16; `EditedText` returns UTF-8. An edit that is cancelled, or ended without a change other
///   than by Enter, is not notified.
class CGridCtrl : public framework::CWnd {
public:
    /// Defers drawing and scroll bars while it lives; the outermost one then brings both up to date
    /// at once. For an owner that fills a grid.
    class UpdateScope {
    public:
        explicit UpdateScope(CGridCtrl& grid) noexcept : grid_(grid) { ++grid_.updating_; }
        ~UpdateScope();
        UpdateScope(const UpdateScope&) = delete;
        UpdateScope& operator=(const UpdateScope&) = delete;

    private:
        CGridCtrl& grid_;
    };

    CGridCtrl();
    ~CGridCtrl() override;

    /// Makes `kGridWindowClass` known to this module's dialog templates.
    static bool RegisterGridClass();

    bool Create(const RECT& area, HWND parent, UINT id,
                DWORD style = WS_CHILD | WS_VISIBLE | WS_BORDER | WS_TABSTOP);

    /// Row and column of an LVN_BEGINLABELEDITW or LVN_ENDLABELEDITW notification.
    static CellId EditedCell(const NMHDR& notification) noexcept;
    /// The new text of an LVN_ENDLABELEDITW notification, as UTF-8.
    static std::string EditedText(const NMHDR& notification);

    // Extent. Fixed rows and columns are part of the counts. New cells are empty, with the default
    // format and the edit field as editor. Removing the focus cell leaves the grid without one. An
    // open editor is cancelled. Throws std::bad_alloc and changes nothing when memory ends.

    int RowCount() const noexcept { return rowCount_; }
    int ColumnCount() const noexcept { return columnCount_; }
    void SetRowCount(int count);
    void SetColumnCount(int count);
    int FixedRowCount() const noexcept { return fixedRows_; }
    void SetFixedRowCount(int count);
    void SetFixedColumnCount(int count);
    void InsertRow(int before);
    void DeleteRow(int row);

    // Cells.

    bool IsValid(CellId cell) const noexcept;
    bool IsFixed(CellId cell) const noexcept;
    std::string CellText(int row, int column) const;
    void SetCellText(int row, int column, std::string_view text);
    /// DT_ codes of the platform.
    UINT CellFormat(int row, int column) const noexcept;
    void SetCellFormat(int row, int column, UINT format);
    /// Anything the owner wants to keep with the cell; not owned.
    LPARAM CellData(int row, int column) const noexcept;
    void SetCellData(int row, int column, LPARAM data);
    EditorKind CellEditor(int row, int column) const noexcept;
    void SetCellEditor(int row, int column, EditorKind kind);
    /// Whether the user may change the cell now: the grid is editable, the cell is shown and not
    /// fixed, and has an editor.
    bool CanEdit(CellId cell) const noexcept;

    // Sections of rows below headings that fold them away. Hidden cells are copied and printed, but
    // not edited. When the focus cell is hidden it is the first one of its section, whose heading
    // then stands for all its rows. Changing the extent drops the sections that no longer fit.

    const std::vector<Section>& Sections() const noexcept { return lines_.Sections(); }
    /// Fixed rows are in none.
    void SetSections(std::vector<Section> sections);
    void FoldSection(std::size_t section, bool folded);
    /// The same as the user does it: the focus cell stays in view, and `OnSectionsFolded` hears of
    /// it.
    void UserFolds(std::size_t section, bool folded);
    void UserFoldsAll(bool folded);
    std::optional<std::size_t> SectionOf(int row) const noexcept { return lines_.SectionOf(row); }
    /// Where a section's heading is, in client coordinates; nothing when it is not shown.
    std::optional<RECT> SectionRect(std::size_t section) const;

    // Focus and selection.

    /// The cell that the keyboard acts on; (-1, -1) when there is none. Only `SetFocusCell` makes a
    /// fixed cell the focus cell.
    CellId FocusCell() const noexcept { return focus_; }
    /// Moves the focus cell, selects it alone and scrolls it into view; an invalid cell means that
    /// there is none.
    void SetFocusCell(CellId cell);
    CellRange Selection() const noexcept;
    void SelectRange(const CellRange& range);
    /// Leaves no more selected than the focus cell, and that only while the grid has the keyboard.
    void Deselect();
    void EnsureVisible(CellId cell);
    /// The first line below the fixed rows that is shown, to keep and restore a scroll position.
    /// Without sections the lines are the rows.
    int TopLine() const noexcept { return topLine_; }
    void SetTopLine(int line);

    // Columns, in pixels.

    int ColumnWidth(int column) const noexcept;
    void SetColumnWidth(int column, int width);
    /// As wide as the widest text of the column.
    void AutoSizeColumn(int column);
    void AutoSizeColumns();
    /// Makes the columns fill the client width (a shown vertical scroll bar is not part of it):
    /// every column gets its share of it. The shares are those of the widths at the first call
    /// after the widths were last set; resizing by mouse keeps the columns filling the width.
    void ExpandColumnsToFit();
    /// A column's share, from 0 to 1; 0 while the columns need not fill the width.
    double ColumnShare(int column) const noexcept;
    int RowHeight() const;

    // Looks and switches.

    void SetBackground(COLORREF color);
    COLORREF Background() const noexcept { return background_; }
    /// Off at first.
    void SetEditable(bool on);
    /// Dragging a selected cell puts its text into the cell where it is dropped (with Shift it is
    /// moved there). Off at first.
    void SetDragAndDrop(bool on) { dragAndDrop_ = on; }
    /// On at first.
    void SetColumnResizing(bool on) { columnResizing_ = on; }
    /// The last row takes texts of several lines, except in the first column. On at first.
    void SetLastRowLines(bool on) { lastRowLines_ = on; }

    // Editing.

    /// Opens the cell's editor; false when the cell cannot be edited or the parent refuses.
    /// `firstKey` is the character that started it and replaces the text; with it, arrow and page
    /// keys end the edit too.
    bool BeginEdit(CellId cell, wchar_t firstKey = 0);
    /// Closes an open editor, keeping its text or not.
    void EndEdit(bool keep);
    /// The open editor's window, or null.
    HWND Editor() const noexcept;

    // Clipboard: cells in a row are separated by tabs, rows by line ends; a text with a tab, quote
    // or line end stands in double quotes. Changing cells goes through the notification, and cells
    // that cannot be edited are passed over. False when there was nothing to do.

    bool Copy() const;
    bool CopyRange(const CellRange& range) const;
    bool Cut();
    /// From the upper left cell of the selection on. One single text fills the whole selection.
    bool Paste();
    bool ClearSelection();
    std::string RangeText(const CellRange& range) const;
    bool SetRangeText(CellId at, std::string_view text);

    // Geometry, in client coordinates.

    /// Nothing when no part of the cell is shown.
    std::optional<RECT> CellRect(CellId cell) const;
    /// An invalid cell when there is none at the point.
    CellId CellAt(POINT at) const noexcept;

protected:
    /// Fills a list editor that is about to open for a cell. The default adds nothing.
    virtual void FillList(int /*row*/, int /*column*/, CInPlaceList&) {}
    /// Asked when no entry of the list begins with `typed`: the position of the entry that it
    /// means; -1 for none.
    virtual int FindChoice(int /*row*/, int /*column*/, std::string_view /*typed*/) { return -1; }
    /// What a cell shows beside its text, asked for when it is painted.
    struct Look {
        std::optional<COLORREF> swatch;  ///< a patch of that color at the cell's right end
        bool differs = false;            ///< a mark that the text is not that of all it stands for
        std::string note = {};           ///< pale, behind the text, as far as there is room
    };
    virtual Look LookOf(CellId /*cell*/) const { return {}; }
    /// What assistive programs are told: the grid's name, by default the window's text, and what a
    /// cell's value means.
    virtual std::string AccessibleName() const { return Text(); }
    virtual std::string DescriptionOf(CellId /*cell*/) const { return {}; }
    /// The user has folded sections, or unfolded them.
    virtual void OnSectionsFolded() {}
    /// Ctrl+P. The default asks for a printer and prints the grid under the caption of the window
    /// that it stands in.
    virtual void OnPrint();

    LRESULT WindowProc(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnDestroy() override;
    void OnSize(UINT type, int width, int height) override;
    void OnEnable(bool enabled) override;
    void OnPaint() override;
    bool OnEraseBackground(HDC) override { return true; }
    void OnSetFocus(HWND former) override;
    void OnKillFocus(HWND next) override;
    UINT OnGetDlgCode(const MSG* message) override;
    void OnKeyDown(UINT key, UINT repeat, UINT flags) override;
    void OnChar(UINT utf16, UINT repeat, UINT flags) override;
    void OnLButtonDown(UINT keys, POINT at) override;
    void OnLButtonUp(UINT keys, POINT at) override;
    void OnLButtonDblClk(UINT keys, POINT at) override;
    void OnMouseMove(UINT keys, POINT at) override;
    void OnRButtonDown(UINT keys, POINT at) override;
    void OnMouseWheel(UINT keys, int delta, POINT screen) override;
    bool OnSetCursor(HWND under, UINT hitTest, UINT message) override;
    void OnCaptureChanged(HWND gaining) override;
    void OnTimer(UINT_PTR id) override;
    void OnHScroll(UINT code, int position, HWND control) override;
    void OnVScroll(UINT code, int position, HWND control) override;
    bool OnCommand(int id, UINT code, HWND control) override;

private:
    friend class CInPlaceEdit;
    friend class CInPlaceList;
    friend class GridAccessible;

    enum class Tracking { kNone, kPressed, kSelecting, kResizing, kDragging };

    static constexpr int kDefaultColumnWidth = 64;
    // Posted to the grid itself.
    static constexpr UINT kDropRetiredEditors = WM_APP + 1;

    // Contents
    const Cell* Find(CellId cell) const noexcept;
    Cell* Find(CellId cell) noexcept;
    void ExtentChanged();
    CellId FirstFreeCell() const noexcept;
    CellId LastCell() const noexcept { return {rowCount_ - 1, columnCount_ - 1}; }
    CellRange FreeCells() const noexcept { return {FirstFreeCell(), LastCell()}; }
    void MoveFocus(CellId cell, bool extend);
    bool FillRange(const CellRange& range, const std::string& text);

    // Layout and scrolling
    HFONT GridFont() const;
    int TextMargin() const;
    int ContentWidth(int column) const;
    void RememberShares();
    void FitColumns(int from, int width);
    void ResizeColumn(int column, int width);
    int FixedHeight() const;
    int FixedWidth() const noexcept;
    int ColumnLeft(int column) const noexcept;
    int ColumnAt(int x) const noexcept;
    int DividerAt(POINT at) const;
    int LineTop(int line) const;
    int LineAt(int y) const;
    int LineCount() const noexcept { return lines_.Count(rowCount_); }
    int Step(int row, int lines) const noexcept;
    CellId Shown(CellId cell) const noexcept;
    CellRange WholeSections(CellRange range) const noexcept;
    RECT LineRect(int line) const;
    int PageRows() const;
    void InvalidateCell(CellId cell) const;
    void InvalidateAll() const;
    bool SetScrollBar(int bar, DWORD style, const SCROLLINFO& wanted) const;
    bool UpdateVerticalBar();
    bool UpdateHorizontalBar();
    int MaxTopLine() const;
    int MaxScrollX() const;
    void UpdateScrollBars();
    void ScrollTo(int topLine, int scrollX);
    int ScrolledPosition(int bar, UINT code, int step) const;

    // Painting
    void PaintGrid(HDC dc, const RECT& dirty) const;
    void PaintPane(HDC dc, const RECT& dirty, int firstLine, int endLine, int firstColumn,
                   int endColumn, const RECT& pane) const;
    void PaintCell(HDC dc, CellId id, const RECT& area) const;
    int PaintLook(HDC dc, const Look& look, const RECT& area, COLORREF textColor) const;
    void PaintHeading(HDC dc, std::size_t section) const;
    void PaintDropTarget(HDC dc) const;

    // Accessibility
    void TellFocus() const;
    void LeaveAccessible() noexcept;

    // Sections
    std::optional<std::size_t> HeadingAt(POINT at) const noexcept;
    std::optional<std::size_t> FocusedHeading() const noexcept;
    bool FoldByKey(UINT key);
    void SectionsChanged();

    // Keyboard
    std::optional<CellId> TargetOf(UINT key, bool control) const;
    bool MoveByKey(UINT key, bool control, bool extend);
    CellId TabTarget(bool backwards) const noexcept;
    void LeaveByTab(bool backwards);
    bool HandleShortcut(UINT key);
    bool HandleControlShortcut(UINT key);
    LRESULT Compose(UINT message, WPARAM wParam, LPARAM lParam);

    // Mouse
    void PressHeading(CellId cell);
    void PressCell(CellId cell, UINT keys);
    void TrackTo(POINT at);
    void StopTracking();
    CellRange DropRange() const;
    void DropAt(CellId cell);

    // Editing
    LRESULT NotifyParent(UINT code, CellId cell, const std::string& text) const;
    bool ChangeText(CellId cell, const std::string& text);
    std::optional<RECT> EditorArea(CellId cell) const;
    bool StartEdit(CellId cell, bool typing, wchar_t firstKey);
    bool OpenEdit(CellId cell, bool typing, wchar_t firstKey);
    bool OpenList(CellId cell, bool typing, wchar_t firstKey);
    std::optional<std::string> EditorText() const;
    void EditorDone(const framework::CWnd& editor, bool keep, UINT key);
    void FinishEdit(bool keep, UINT key);

    // Row by row.
    std::vector<Cell> cells_;
    int rowCount_ = 0;
    int columnCount_ = 0;
    int fixedRows_ = 0;
    int fixedColumns_ = 0;
    RowLines lines_;
    std::vector<int> widths_;
    // Each column's part of the client width; empty when the columns need not fill it.
    std::vector<double> shares_;

    CellId focus_;
    // Where the selection began.
    CellId anchor_;
    CellRange selection_;
    bool focused_ = false;

    HFONT font_ = nullptr;
    // 0 until it has been measured.
    mutable int rowHeight_ = 0;
    int topLine_ = 0;
    int scrollX_ = 0;
    int wheel_ = 0;
    framework::PaintBuffer buffer_;
    bool updatingScrollBars_ = false;
    int updating_ = 0;

    COLORREF background_ = ::GetSysColor(COLOR_WINDOW);
    bool editable_ = false;
    bool dragAndDrop_ = false;
    bool columnResizing_ = true;
    bool lastRowLines_ = true;

    Tracking tracking_ = Tracking::kNone;
    POINT pressPoint_{};
    // While the mouse is captured, its last known place.
    POINT mousePoint_{};
    CellId pressedCell_;
    bool moved_ = false;
    bool editOnRelease_ = false;
    int resizedColumn_ = -1;
    int resizedWidth_ = 0;
    CellId dropCell_;

    GridAccessible* accessible_ = nullptr;  ///< made when it is asked for; one reference

    std::unique_ptr<framework::CWnd> editor_;
    CellId editedCell_;
    // Closed, but perhaps still within one of their own message handlers.
    std::vector<std::unique_ptr<framework::CWnd>> retiredEditors_;
};

}  // namespace grid
