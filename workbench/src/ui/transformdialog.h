// Moving, turning and scaling by typed values.
#pragma once

#include <framework/cdialog.h>
#include <kiln/geometry.h>
#include <kiln/interface.h>
#include <workbench/transforms.h>

#include <optional>

namespace workbench {

/// A window with a line for the place of what is selected, and one each for moving, turning and
/// scaling it. Enter in a field, or the line's button, carries its line out as one step of the
/// history; a number that cannot be read or used is marked instead, and nothing happens.
class TransformDialog : public framework::CDialog {
public:
    /// `snap` is what the user sets here, too; it outlives this.
    TransformDialog(Interface& host, GridSnap& snap) : host_(host), snap_(snap) {}

    /// Shows the window in the lower right corner of `area` of the screen, the first time, or hides
    /// it when it is shown.
    void toggle(HWND owner, const RECT& area);
    /// Shows where what is selected is now, and the grid; nothing while the window is not shown.
    void refresh();
    /// Speaks the language of now.
    void followLanguage();

protected:
    bool OnInitDialog() override;
    void OnClose() override { Hide(); }
    void OnOK() override;
    bool OnCommand(int id, UINT code, HWND control) override;
    bool OnNotify(int id, NMHDR& header, LRESULT& result) override;

private:
    void apply(int row);
    std::optional<Point3> pointIn(int row);
    /// The number in a field; where there is none the field is marked.
    std::optional<double> numberIn(int id);
    bool takeGrid(int id, UINT code);
    void setRow(int row, const Point3& point);

    Interface& host_;
    GridSnap& snap_;
    std::optional<Point3> shown_;  // the place in the first line
};

}  // namespace workbench
