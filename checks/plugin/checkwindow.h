// The window of the checks: what to check for, and what was found.
#pragma once

#include <checks/check.h>
#include <checks/findinglist.h>
#include <checks/scenesource.h>
#include <framework/anchoredcontrols.h>
#include <framework/cdialog.h>
#include <kiln/scenewatch.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class INode;
class Interface;

namespace checks {

/// A modeless window beside the host's. A check runs in slices between the messages of the host, so
/// that it stays alive, and is begun anew when the scene changes meanwhile. What was found follows
/// the scene: findings go with their nodes and when they are mended, and the scene is checked again
/// once it has been left alone for a moment.
class CheckWindow : public framework::CDialog {
public:
    CheckWindow();
    ~CheckWindow() override;

    /// Shows the window in front, and checks the scene unless what it shows is right already.
    void open(Interface& host);
    /// Speaks the host's language of now.
    void followLanguage();

    /// What was found, in one line.
    std::string countsText() const;
    /// Called when that line is another.
    std::function<void()> onCounts;

protected:
    bool OnInitDialog() override;
    bool PreTranslateMessage(MSG& message) override;
    void OnSize(UINT type, int width, int height) override;
    void OnMinMaxInfo(MINMAXINFO& info) override;
    void OnTimer(UINT_PTR timer) override;
    void OnDestroy() override;
    void OnOK() override;
    void OnCancel() override;
    void OnClose() override { Hide(); }
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;

private:
    struct Run;

    // Running.
    std::optional<Target> chosenTarget();
    void chooseOwnFile();
    void start();
    void start(Target target);
    void advance();
    void end();
    void stop();
    void sceneChanged();
    void look();

    // The list.
    HWND list() const noexcept;
    void nameColumns();
    void fitColumns();
    void listTargets();
    void listRules();
    void filter();
    void sortBy(int column);
    void refresh();
    void showCounts();
    void say(const std::string& text);
    void enableActions();
    std::string cell(const FindingList::Row& row, int column) const;
    void draw(NMLVCUSTOMDRAW& drawn, LRESULT& result) const;
    int focusedRow() const;
    /// The findings of the rows that are selected, so many at most.
    std::vector<std::size_t> selectedFindings(std::size_t most = SIZE_MAX) const;
    bool areAllSelected() const;
    /// The next selected row behind `row`; `areAll` is what `areAllSelected` says.
    int selectedBehind(int row, bool areAll) const;
    void noteFocus();
    void fold(int row, bool folded);

    // What is done with findings.
    void goTo();
    void mend(const std::vector<std::size_t>& indices);
    void mendSelected();
    void mendKind();
    void copy();
    void save();
    void selectFound();
    void listFound();
    std::optional<std::vector<INode*>> askQuery();
    void showReport(Report report);
    void backToFindings();
    void select(const std::vector<INode*>& nodes);

    // The window.
    void layout();
    void widen();

    Interface* host_ = nullptr;
    std::unique_ptr<SceneWatch> watch_;
    std::unique_ptr<Run> run_;
    bool wanted_ = false;  ///< a check, once the scene is left alone
    bool checked_ = false;
    bool stale_ = false;              ///< the scene has changed since
    Target target_;                   ///< of what is listed
    std::vector<std::string> files_;  ///< targets of the user's own
    FindingList findings_;
    std::optional<Report> aside_;     ///< of the check, while the list has what a query has found
    std::optional<Finding> focused_;  ///< the one that has the focus, if that is no heading
    bool isRefreshing_ = false;
    SIZE smallest_{};  ///< of the window
    framework::AnchoredControls controls_;
    HFONT headingFont_ = nullptr;
};

}  // namespace checks
