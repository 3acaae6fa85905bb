#include "geometrypanel.h"

#include "resource.h"

#include <base/utf16.h>
#include <framework/cwaitcursor.h>
#include <framework/module.h>
#include <quillon/fltunits.h>

#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

using framework::CWaitCursor, framework::ModuleScope, framework::moduleInstance;

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

void GeometryPanel::BeginEditParams(Interface* host, IUtil*) {
    const ModuleScope scope;
    host_ = host;
    try {
        page_ = host->AddRollupPage(moduleInstance(), IDD_GEOMETRY, handleMessage,
                                    textOf(TextId::kGeometry).c_str(), 0, 0, kRollupCategory);
        if (page_ != nullptr) fill(page_);
    } catch (...) {
        page_ = nullptr;  // no page until the utility is opened again
    }
}

void GeometryPanel::EndEditParams(Interface* host, IUtil*) {
    const ModuleScope scope;
    try {
        host->DeleteRollupPage(std::exchange(page_, nullptr));
    } catch (...) {
        // The host failed to delete its own page; there is nothing to do about it here.
    }
}

void GeometryPanel::fill(HWND page) const {
    ::SetDlgItemTextW(page, IDC_WELD_DISTANCE, L"0.001");
    ::SetDlgItemTextW(page, IDC_NORMALS_ANGLE, L"30");
    for (const TextId name : kUnitNames)
        ::SendDlgItemMessageW(page, IDC_UNITS, CB_ADDSTRING, 0,
                              reinterpret_cast<LPARAM>(base::toWide(textOf(name)).c_str()));
    ::SendDlgItemMessageW(page, IDC_UNITS, CB_SETCURSEL, 0, 0);
}

INT_PTR CALLBACK GeometryPanel::handleMessage(HWND page, UINT message, WPARAM wParam,
                                              LPARAM lParam) {
    const ModuleScope scope;
    GeometryPanel& panel = instance();
    try {
        switch (message) {
            case WM_INITDIALOG:
                return TRUE;
            case WM_MOUSEMOVE:
            case WM_LBUTTONDOWN:
            case WM_LBUTTONUP:
                panel.host_->RollupMouseMessage(page, message, wParam, lParam);
                return TRUE;
            case WM_COMMAND:
                switch (LOWORD(wParam)) {
                    case IDC_WELD_DISTANCE:
                    case IDC_NORMALS_ANGLE:
                        // Keys that are typed here are not the host's.
                        if (HIWORD(wParam) == EN_SETFOCUS) DisableAccelerators();
                        if (HIWORD(wParam) == EN_KILLFOCUS) EnableAccelerators();
                        break;
                    case IDC_WELD:
                        panel.weld();
                        break;
                    case IDC_NORMALS:
                        panel.computeNormals();
                        break;
                    case IDC_TRIANGULATE:
                        panel.carryOut(GeometryAction::kTriangulate);
                        break;
                    case IDC_FLIP:
                        panel.carryOut(GeometryAction::kFlip);
                        break;
                    case IDC_DROP_DEGENERATE:
                        panel.carryOut(GeometryAction::kDropDegenerate);
                        break;
                    case IDC_FIT_BOUNDS:
                        panel.carryOut(GeometryAction::kFitBounds);
                        break;
                    case IDC_CHANGE_UNITS:
                        panel.changeUnits();
                        break;
                    default:
                        break;
                }
                return TRUE;
            default:
                return FALSE;
        }
    } catch (...) {
        ::MessageBeep(MB_ICONWARNING);
        return FALSE;
    }
}

std::string GeometryPanel::textOfItem(int id) const {
    wchar_t text[64] = L"";
    ::GetDlgItemTextW(page_, id, text, static_cast<int>(std::size(text)));
    return base::toUtf8(text);
}

void GeometryPanel::say(const std::string& text) const {
    ::SetDlgItemTextW(page_, IDC_OUTCOME, base::toWide(text).c_str());
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
    ::SetFocus(::GetDlgItem(page_, field));
    ::SendDlgItemMessageW(page_, field, EM_SETSEL, 0, -1);
}

void GeometryPanel::carryOut(GeometryAction action, double value) {
    std::vector<INode*> tops;
    for (int i = 0; i < host_->GetSelNodeCount(); ++i) tops.push_back(host_->GetSelNode(i));
    if (tops.empty()) return refuse(TextId::kNothingSelected);
    const CWaitCursor wait;
    say(checks::carryOut(*host_, action, tops, value));
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
    const LRESULT chosen = ::SendDlgItemMessageW(page_, IDC_UNITS, CB_GETCURSEL, 0, 0);
    if (chosen < 0 || static_cast<std::size_t>(chosen) >= std::size(kFltUnits)) return;
    INode* const header =
        databaseOf(*host_, host_->GetSelNodeCount() > 0 ? host_->GetSelNode(0) : nullptr);
    if (header == nullptr) return refuse(TextId::kNoDatabase);
    const CWaitCursor wait;
    try {
        say(checks::changeUnits(*host_, header, kFltUnits[chosen].value));
    } catch (const std::invalid_argument&) {
        refuse(TextId::kCannotChangeUnits);
    }
}

}  // namespace checks
