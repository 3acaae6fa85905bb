#include "historywindow.h"

#include "../app/commands.h"
#include "tooltips.h"

#include <base/utf16.h>
#include <framework/cwaitcursor.h>
#include <workbench/historytexts.h>
#include <workbench/texts.h>

#include <algorithm>
#include <iterator>
#include <string>

using framework::CWaitCursor, framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

constexpr std::size_t kMegabyte = std::size_t{1} << 20;
constexpr std::size_t kLimits[] = {0, 64, 256, 1024, 4096};  // MB

}  // namespace

void HistoryWindow::toggle(HWND owner, const RECT& area) {
    if (IsVisible()) return Hide();
    if (!HasWindow()) {
        if (!Create(IDD_HISTORY, owner)) return;
        const RECT own = WindowRect();
        const LONG left = std::max(area.right - widthOf(own), area.left);
        MoveTo({left, area.top, left + widthOf(own), area.top + heightOf(own)});
    }
    Show(SW_SHOWNORMAL);
    refresh();
    ::SetFocus(Item(IDC_HISTORY_STEPS));
}

bool HistoryWindow::OnInitDialog() {
    const HWND list = Item(IDC_HISTORY_STEPS);
    ::SendMessageW(list, LVM_SETEXTENDEDLISTVIEWSTYLE, LVS_EX_FULLROWSELECT, LVS_EX_FULLROWSELECT);
    LVCOLUMNW column{};
    ::SendMessageW(list, LVM_INSERTCOLUMNW, 0, reinterpret_cast<LPARAM>(&column));
    // Nothing to see: it makes the lines as high as Chinese text needs. It goes with the control.
    const HIMAGELIST height = ::ImageList_Create(1, Scaled(18), ILC_COLOR32, 0, 1);
    ::SendMessageW(list, LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(height));
    listLimits();
    layout();
    EnableToolTips();
    return true;
}

// ---------------------------------------------------------------- the steps

// The control asks for the texts of the lines that it shows.
void HistoryWindow::refresh() {
    if (!IsVisible()) return;
    const HWND list = Item(IDC_HISTORY_STEPS);
    done_ = static_cast<int>(history_.doneCount());
    ::SendMessageW(list, LVM_SETITEMCOUNT, history_.stepCount() + 1, 0);
    LVITEMW state{};
    state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                   reinterpret_cast<LPARAM>(&state));
    state.state = state.stateMask;
    ::SendMessageW(list, LVM_SETITEMSTATE, static_cast<WPARAM>(done_),
                   reinterpret_cast<LPARAM>(&state));
    ::SendMessageW(list, LVM_ENSUREVISIBLE, static_cast<WPARAM>(done_), FALSE);
    ::InvalidateRect(list, nullptr, FALSE);
}

std::string HistoryWindow::lineText(int line) const {
    return line == 0 ? textOf(TextId::kHistoryStart)
                     : stepText(history_, static_cast<std::size_t>(line) - 1);
}

void HistoryWindow::goTo(int line) {
    if (line < 0) return;
    {
        const CWaitCursor wait;
        history_.goTo(static_cast<std::size_t>(line));
    }
    refresh();
}

void HistoryWindow::OnOK() {
    goTo(static_cast<int>(::SendDlgItemMessageW(Handle(), IDC_HISTORY_STEPS, LVM_GETNEXTITEM,
                                                static_cast<WPARAM>(-1), LVNI_FOCUSED)));
}

bool HistoryWindow::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (answerToolTip(header, [](int control) {
            if (control == IDC_HISTORY_STEPS) return textOf(TextId::kTipSteps);
            return control == IDC_HISTORY_LIMIT ? textOf(TextId::kTipMemory) : std::string();
        }))
        return true;
    if (id != IDC_HISTORY_STEPS) return false;
    switch (header.code) {
        case LVN_GETDISPINFOW: {
            LVITEMW& item = reinterpret_cast<NMLVDISPINFOW&>(header).item;
            if (!(item.mask & LVIF_TEXT) || item.cchTextMax < 1) return true;
            const std::wstring text = base::toWide(lineText(item.iItem));
            const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
            item.pszText[text.copy(item.pszText, room)] = 0;
            return true;
        }
        case NM_CLICK:
            goTo(reinterpret_cast<const NMITEMACTIVATE&>(header).iItem);
            return true;
        case NM_CUSTOMDRAW: {
            auto& drawn = reinterpret_cast<NMLVCUSTOMDRAW&>(header);
            result = CDRF_DODEFAULT;
            if (drawn.nmcd.dwDrawStage == CDDS_PREPAINT) result = CDRF_NOTIFYITEMDRAW;
            if (drawn.nmcd.dwDrawStage == CDDS_ITEMPREPAINT &&
                drawn.nmcd.dwItemSpec > static_cast<DWORD_PTR>(done_))
                drawn.clrText = ::GetSysColor(COLOR_GRAYTEXT);
            return true;
        }
        default:
            return false;
    }
}

// ---------------------------------------------------------------- their memory

void HistoryWindow::listLimits() {
    const HWND limits = Item(IDC_HISTORY_LIMIT);
    const std::size_t now = history_.limit() / kMegabyte;
    ::SendMessageW(limits, CB_RESETCONTENT, 0, 0);
    const auto add = [&](std::size_t megabytes) {
        const std::wstring text = base::toWide(megabytes == 0 ? textOf(TextId::kHistoryOff)
                                                              : std::to_string(megabytes) + " MB");
        const auto line = static_cast<WPARAM>(
            ::SendMessageW(limits, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(text.c_str())));
        ::SendMessageW(limits, CB_SETITEMDATA, line, static_cast<LPARAM>(megabytes));
        if (megabytes == now) ::SendMessageW(limits, CB_SETCURSEL, line, 0);
    };
    for (const std::size_t megabytes : kLimits) add(megabytes);
    if (std::ranges::find(kLimits, now) == std::end(kLimits)) add(now);
}

void HistoryWindow::setLimit() {
    const HWND limits = Item(IDC_HISTORY_LIMIT);
    const LRESULT line = ::SendMessageW(limits, CB_GETCURSEL, 0, 0);
    if (line == CB_ERR) return;
    const auto megabytes = static_cast<std::size_t>(
        ::SendMessageW(limits, CB_GETITEMDATA, static_cast<WPARAM>(line), 0));
    history_.setLimit(megabytes * kMegabyte);
    onLimit_(megabytes);
    refresh();
}

bool HistoryWindow::OnCommand(int id, UINT code, HWND control) {
    if (id != IDC_HISTORY_LIMIT || code != CBN_SELCHANGE)
        return CDialog::OnCommand(id, code, control);
    setLimit();
    return true;
}

// ---------------------------------------------------------------- the window

void HistoryWindow::followLanguage() {
    if (!HasWindow()) return;
    FollowLanguage();
    listLimits();
    layout();
    refresh();
}

void HistoryWindow::OnSize(UINT type, int, int) {
    Default();
    if (type != SIZE_MINIMIZED) layout();
}

void HistoryWindow::OnMinMaxInfo(MINMAXINFO& info) {
    info.ptMinTrackSize = {Scaled(220), Scaled(180)};
}

// The list has all the room above the line for the memory.
void HistoryWindow::layout() {
    const HWND list = Item(IDC_HISTORY_STEPS), label = Item(IDC_HISTORY_MEMORY),
               limits = Item(IDC_HISTORY_LIMIT);
    if (!list || !label || !limits) return;
    RECT labelArea, limitArea;
    ::GetWindowRect(label, &labelArea);
    ::GetWindowRect(limits, &limitArea);
    const RECT area = ClientRect();
    const int margin = Scaled(8), bottom = static_cast<int>(area.bottom) - margin;
    const int row = heightOf(limitArea), right = static_cast<int>(area.right) - margin;
    const auto put = [](HWND control, int x, int y, int width, int height) {
        ::SetWindowPos(control, nullptr, x, y, std::max(width, 0), std::max(height, 0),
                       SWP_NOZORDER | SWP_NOACTIVATE);
    };
    put(list, margin, margin, right - margin, bottom - row - 2 * margin);
    put(label, margin, bottom - (row + heightOf(labelArea)) / 2, widthOf(labelArea),
        heightOf(labelArea));
    const int left = margin + widthOf(labelArea);
    put(limits, left, bottom - row, right - left, row);
    RECT lines;
    ::GetClientRect(list, &lines);
    ::SendMessageW(list, LVM_SETCOLUMNWIDTH, 0, widthOf(lines));
    Invalidate();
}

}  // namespace workbench
