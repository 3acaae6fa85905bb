#include "transformdialog.h"

#include "../app/commands.h"
#include "tooltips.h"

#include <framework/cwaitcursor.h>
#include <kiln/undo.h>
#include <workbench/numbers.h>
#include <workbench/texts.h>
#include <workbench/transforms.h>

#include <string>
#include <utility>

using framework::CWaitCursor, framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

// The lines; each has fields for x, y and z, and a button.
enum Row { kPlace, kMove, kRotate, kScale, kRowCount };

constexpr int fieldOf(int row, int axis) {
    return IDC_TRANSFORM_FIELDS + row * 3 + axis;
}

}  // namespace

void TransformDialog::toggle(HWND owner, const RECT& area) {
    if (IsVisible()) return Hide();
    if (!HasWindow()) {
        if (!Create(IDD_TRANSFORM, owner)) return;
        const RECT own = WindowRect();
        const LONG left = std::max(area.right - widthOf(own), area.left),
                   top = std::max(area.bottom - heightOf(own), area.top);
        MoveTo({left, top, left + widthOf(own), top + heightOf(own)});
    }
    Show(SW_SHOWNORMAL);
    shown_.reset();
    refresh();
    ::SetFocus(Item(fieldOf(kPlace, 0)));
}

bool TransformDialog::OnInitDialog() {
    setRow(kMove, {});
    setRow(kRotate, {});
    setRow(kScale, {1, 1, 1});
    SetItemText(IDC_TRANSFORM_STEP, shortNumber(snap_.step));
    EnableToolTips();
    return true;
}

void TransformDialog::setRow(int row, const Point3& point) {
    const double values[] = {point.x, point.y, point.z};
    for (int axis = 0; axis < 3; ++axis) SetItemText(fieldOf(row, axis), shortNumber(values[axis]));
}

// What is being typed stays, unless the node has moved.
void TransformDialog::refresh() {
    if (!IsVisible()) return;
    CheckItem(IDC_TRANSFORM_SNAP, snap_.isOn);
    const std::optional<Point3> place = selectedPlace(host_);
    for (int row = 0; row < kRowCount; ++row) {
        EnableItem(IDC_TRANSFORM_APPLY + row, place.has_value());
        for (int axis = 0; axis < 3; ++axis) EnableItem(fieldOf(row, axis), place.has_value());
    }
    if (place && place != shown_) setRow(kPlace, *place);
    shown_ = place;
}

void TransformDialog::followLanguage() {
    if (HasWindow()) FollowLanguage();
}

std::optional<double> TransformDialog::numberIn(int id) {
    if (const std::optional<double> value = numberOf(ItemText(id))) return value;
    ::MessageBeep(MB_ICONWARNING);
    ::SetFocus(Item(id));
    ::SendMessageW(Item(id), EM_SETSEL, 0, -1);
    return std::nullopt;
}

std::optional<Point3> TransformDialog::pointIn(int row) {
    double values[3];
    for (int axis = 0; axis < 3; ++axis) {
        std::optional<double> value = numberIn(fieldOf(row, axis));
        if (value && row == kScale && *value == 0) {
            SetItemText(fieldOf(row, axis), "");
            value = numberIn(fieldOf(row, axis));
        }
        if (!value) return std::nullopt;
        values[axis] = *value;
    }
    return Point3{values[0], values[1], values[2]};
}

void TransformDialog::apply(int row) {
    static constexpr TextId kSteps[] = {TextId::kStepMove, TextId::kStepMove, TextId::kStepRotate,
                                        TextId::kStepScale};
    const std::optional<Point3> point = pointIn(row);
    if (!point || host_.GetSelNodeCount() == 0) return;
    if (snap_.isOn && !numberIn(IDC_TRANSFORM_STEP)) return;
    const double step = snap_.isOn ? snap_.step : 0;
    const CWaitCursor wait;
    UndoScope scope(textOf(kSteps[row]).c_str());
    if (row == kPlace) moveSelectedTo(host_, onGrid(*point, step));
    if (row == kMove) moveSelectedTo(host_, onGrid(*selectedPlace(host_) + *point, step));
    if (row == kRotate) rotateSelected(host_, *point);
    if (row == kScale) scaleSelected(host_, *point);
    scope.Commit();
    shown_.reset();
    refresh();
}

void TransformDialog::OnOK() {
    const int id = ::GetDlgCtrlID(::GetFocus());
    const int row = (id - IDC_TRANSFORM_FIELDS) / 3;
    if (id >= IDC_TRANSFORM_FIELDS && row < kRowCount) apply(row);
}

bool TransformDialog::takeGrid(int id, UINT code) {
    if (id == IDC_TRANSFORM_SNAP && code == BN_CLICKED) {
        snap_.isOn = IsItemChecked(IDC_TRANSFORM_SNAP);
        return true;
    }
    if (id != IDC_TRANSFORM_STEP || code != EN_CHANGE) return false;
    if (const std::optional<double> step = numberOf(ItemText(id)); step && *step > 0)
        snap_.step = *step;
    return true;
}

bool TransformDialog::OnCommand(int id, UINT code, HWND control) {
    if (takeGrid(id, code)) return true;
    const int row = id - IDC_TRANSFORM_APPLY;
    if (row < 0 || row >= kRowCount || code != BN_CLICKED)
        return CDialog::OnCommand(id, code, control);
    apply(row);
    return true;
}

bool TransformDialog::OnNotify(int, NMHDR& header, LRESULT&) {
    static constexpr TextId kRowTips[] = {TextId::kTipPlace, TextId::kTipMove, TextId::kTipRotate,
                                          TextId::kTipScale};
    return answerToolTip(header, [](int id) {
        const int field = id - IDC_TRANSFORM_FIELDS, button = id - IDC_TRANSFORM_APPLY;
        if (field >= 0 && field < 3 * kRowCount) return textOf(kRowTips[field / 3]);
        if (button >= 0 && button < kRowCount) return textOf(kRowTips[button]);
        const bool isGrid = id == IDC_TRANSFORM_SNAP || id == IDC_TRANSFORM_STEP;
        return isGrid ? textOf(TextId::kTipGrid) : std::string();
    });
}

}  // namespace workbench
