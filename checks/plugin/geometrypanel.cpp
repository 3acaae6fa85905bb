#include "geometrypanel.h"

#include "resource.h"

#include <base/utf16.h>
#include <framework/cwaitcursor.h>
#include <kiln/selection.h>
#include <quillon/fltunits.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <vector>

using framework::CWaitCursor;

namespace checks {

namespace {

constexpr int kRollupCategory = 4101;

/// In the order of `kFltUnits`.
constexpr TextId kUnitNames[] = {TextId::kMetres, TextId::kKilometres, TextId::kFeet,
                                 TextId::kInches, TextId::kNauticalMiles};
static_assert(std::size(kUnitNames) == std::size(kFltUnits));

/// The number that a text is; none that any action takes where it is no number.
double numberIn(const std::string& text) {
    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    return isNumber ? number : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

GeometryPanel& GeometryPanel::instance() {
    static GeometryPanel panel;
    return panel;
}

GeometryPanel::GeometryPanel() : UtilityPage(IDD_GEOMETRY, kRollupCategory) {}

std::string GeometryPanel::title() const {
    return textOf(TextId::kGeometry);
}

void GeometryPanel::onShown() {
    setText(IDC_WELD_DISTANCE, "0.001");
    setText(IDC_NORMALS_ANGLE, "30");
    for (const TextId name : kUnitNames)
        ::SendDlgItemMessageW(page(), IDC_UNITS, CB_ADDSTRING, 0,
                              reinterpret_cast<LPARAM>(base::toWide(textOf(name)).c_str()));
    ::SendDlgItemMessageW(page(), IDC_UNITS, CB_SETCURSEL, 0, 0);
}

void GeometryPanel::onCommand(int id, UINT code) {
    switch (id) {
        case IDC_WELD_DISTANCE:
        case IDC_NORMALS_ANGLE:
            // Keys that are typed here are not the host's.
            if (code == EN_SETFOCUS) DisableAccelerators();
            if (code == EN_KILLFOCUS) EnableAccelerators();
            break;
        case IDC_WELD:
            weld();
            break;
        case IDC_NORMALS:
            computeNormals();
            break;
        case IDC_TRIANGULATE:
            carryOut(GeometryAction::kTriangulate);
            break;
        case IDC_FLIP:
            carryOut(GeometryAction::kFlip);
            break;
        case IDC_DROP_DEGENERATE:
            carryOut(GeometryAction::kDropDegenerate);
            break;
        case IDC_FIT_BOUNDS:
            carryOut(GeometryAction::kFitBounds);
            break;
        case IDC_CHANGE_UNITS:
            changeUnits();
            break;
        default:
            break;
    }
}

std::string GeometryPanel::textOfItem(int id) const {
    wchar_t text[64] = L"";
    ::GetDlgItemTextW(page(), id, text, static_cast<int>(std::size(text)));
    return base::toUtf8(text);
}

void GeometryPanel::say(const std::string& text) const {
    setText(IDC_OUTCOME, text);
}

void GeometryPanel::say(const GeometryOutcome& outcome) const {
    const std::string changed = std::to_string(outcome.changed);
    say(outcome.passedOver == 0
            ? textOf(TextId::kNodesChanged, {changed})
            : textOf(TextId::kNodesPassedOver, {changed, std::to_string(outcome.passedOver)}));
}

void GeometryPanel::refuse(TextId why, int field) const {
    ::MessageBeep(MB_OK);
    say(textOf(why));
    if (field == 0) return;
    ::SetFocus(::GetDlgItem(page(), field));
    ::SendDlgItemMessageW(page(), field, EM_SETSEL, 0, -1);
}

void GeometryPanel::carryOut(GeometryAction action, double value) {
    const std::vector<INode*> tops = SelectedNodes(host());
    if (tops.empty()) return refuse(TextId::kNothingSelected);
    const CWaitCursor wait;
    say(checks::carryOut(host(), action, tops, value));
}

void GeometryPanel::weld() {
    const double distance = numberIn(textOfItem(IDC_WELD_DISTANCE));
    if (!(distance >= 0 && std::isfinite(distance)))
        return refuse(TextId::kBadDistance, IDC_WELD_DISTANCE);
    carryOut(GeometryAction::kWeld, distance);
}

void GeometryPanel::computeNormals() {
    const double angle = numberIn(textOfItem(IDC_NORMALS_ANGLE));
    if (!(angle >= 0 && angle <= 180)) return refuse(TextId::kBadAngle, IDC_NORMALS_ANGLE);
    carryOut(GeometryAction::kNormals, angle);
}

// Of the database that the first selected node is in.
void GeometryPanel::changeUnits() {
    const LRESULT chosen = ::SendDlgItemMessageW(page(), IDC_UNITS, CB_GETCURSEL, 0, 0);
    if (chosen < 0 || static_cast<std::size_t>(chosen) >= std::size(kFltUnits)) return;
    INode* const header =
        databaseOf(host(), host().GetSelNodeCount() > 0 ? host().GetSelNode(0) : nullptr);
    if (header == nullptr) return refuse(TextId::kNoDatabase);
    const CWaitCursor wait;
    try {
        say(checks::changeUnits(host(), header, kFltUnits[chosen].value));
    } catch (const std::invalid_argument&) {
        refuse(TextId::kCannotChangeUnits);
    }
}

}  // namespace checks
