// The list of the steps that can be undone and redone.
#pragma once

#include <framework/cdialog.h>
#include <kiln/host/history.h>

#include <functional>

namespace workbench {

/// A window beside the scene with one line for each step, from the oldest to the newest, below one
/// for the scene before all of them. The line of the present state is selected; the steps that were
/// undone are dimmed. A click or Enter goes to where a line leads. Below the list the user sets how
/// much memory the steps may use.
class HistoryWindow : public framework::CDialog {
public:
    /// `onLimit` is told of the limit that the user has set, in MB. The history outlives this.
    HistoryWindow(kiln::History& history, std::function<void(std::size_t)> onLimit)
        : history_(history), onLimit_(std::move(onLimit)) {}

    /// Shows the window in the upper right corner of `area` of the screen, the first time, or hides
    /// it when it is shown.
    void toggle(HWND owner, const RECT& area);
    /// Lists the steps that there are now; nothing while it is not shown.
    void refresh();
    /// Speaks the language of now.
    void followLanguage();

protected:
    bool OnInitDialog() override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnClose() override { Hide(); }
    void OnOK() override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;

private:
    void layout();
    void listLimits();
    void setLimit();
    void goTo(int line);
    std::string lineText(int line) const;

    kiln::History& history_;
    const std::function<void(std::size_t)> onLimit_;
    int done_ = 0;  // steps, as listed
};

}  // namespace workbench
