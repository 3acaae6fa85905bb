#include "jointswindow.h"

#include "../app/commands.h"
#include "tooltips.h"
#include "viewport.h"

#include <framework/cwaitcursor.h>
#include <kiln/undo.h>
#include <workbench/numbers.h>
#include <workbench/texts.h>

#include <commctrl.h>

#include <algorithm>
#include <cmath>
#include <utility>

using framework::CWaitCursor, framework::heightOf, framework::widthOf;

namespace workbench {
namespace {

constexpr int kSteps = 10'000;    // of a slider
constexpr int kThumbLength = 18;  // in pixels at 100 %
constexpr UINT_PTR kPlayTimer = 1;
constexpr UINT kMillisecondsOfPlay = 25;

int fieldOf(std::size_t motion) {
    return IDC_JOINTS_FIELDS + static_cast<int>(motion);
}

/// Which of the numbers from `first` on an id is, if it is one of them.
std::optional<std::size_t> numberFrom(int first, int id) {
    const int number = id - first;
    if (number < 0 || number >= static_cast<int>(NodeJoint::kMotions)) return std::nullopt;
    return static_cast<std::size_t>(number);
}

}  // namespace

void JointsWindow::toggle(HWND owner, const RECT& area) {
    if (IsVisible()) return close();
    if (!HasWindow()) {
        if (!Create(IDD_JOINTS, owner)) return;
        const RECT own = WindowRect();
        const LONG top = std::max(area.bottom - heightOf(own), area.top);
        MoveTo({area.left, top, area.left + widthOf(own), top + heightOf(own)});
    }
    Show(SW_SHOWNORMAL);
    known_ = false;
    rows_ = {};
    refresh();
    const auto free =
        std::ranges::find_if(rows_, [](const auto& row) { return row && row->range; });
    const auto motion = static_cast<int>(free - rows_.begin());
    ::SetFocus(Item(free == rows_.end() ? IDC_JOINTS_PLAY : IDC_JOINTS_SLIDERS + motion));
}

bool JointsWindow::OnInitDialog() {
    for (std::size_t i = 0; i < kMotions; ++i) {
        const HWND slider = Item(IDC_JOINTS_SLIDERS + static_cast<int>(i));
        ::SendMessageW(slider, TBM_SETRANGEMIN, FALSE, 0);
        ::SendMessageW(slider, TBM_SETRANGEMAX, FALSE, kSteps);
        ::SendMessageW(slider, TBM_SETPAGESIZE, 0, kSteps / 10);
        ::SendMessageW(slider, TBM_SETTHUMBLENGTH, static_cast<WPARAM>(Scaled(kThumbLength)), 0);
    }
    EnableToolTips();
    return true;
}

void JointsWindow::close() {
    play_.reset();
    goBack();
    Hide();
}

void JointsWindow::forget() {
    play_.reset();
    poses_.clear();
    played_.clear();
    joints_.clear();
    known_ = false;
}

void JointsWindow::followLanguage() {
    if (!HasWindow()) return;
    FollowLanguage();
    rows_ = {};
    showTitle();
    showRows();
    showButtons();
}

// ---------------------------------------------------------------- what is shown

void JointsWindow::refresh() {
    if (!IsVisible() || scene_.isHeld()) return;
    if (!known_ || watch_.HasChanged()) findJoints();
    showTitle();
    showRows();
    showButtons();
}

void JointsWindow::findJoints() {
    watch_.Take();
    known_ = true;
    joints_ = selectedJoints(host_);
    reach_ = reach();
}

/// About how far what is selected reaches: so far it may have to be moved.
double JointsWindow::reach() const {
    const render::Box box = scene_.selectedBox();
    return box.empty() ? 0 : length(box.max - box.min);
}

void JointsWindow::showTitle() {
    std::string title;
    if (joints_.empty())
        title = textOf(TextId::kNoJoint);
    else if (joints_.size() == 1)
        title = joints_.front().name;
    else
        title = textOf(TextId::kJoints, {joints_.front().name, std::to_string(joints_.size() - 1)});
    if (ItemText(IDC_JOINTS_TITLE) != title) SetItemText(IDC_JOINTS_TITLE, title);
}

/// The keyboard stays on a control that takes it.
void JointsWindow::enable(int id, bool enabled) {
    if (!enabled && ::GetFocus() == Item(id)) ::SetFocus(Item(IDC_JOINTS_PLAY));
    EnableItem(id, enabled);
}

void JointsWindow::showRows() {
    for (std::size_t i = 0; i < kMotions; ++i) showRow(i);
}

// Several joints show the first one's values. What is being typed stays, unless it has moved.
void JointsWindow::showRow(std::size_t motion) {
    Row now;
    if (!joints_.empty()) {
        const KnownJoint& first = joints_.front();
        const auto pose = shownPoses().find(first.node);
        now.range = rangeOf(first.joint, motion, reach_);
        now.value = pose == shownPoses().end() ? first.joint.values[motion] : pose->second[motion];
    }
    const int number = static_cast<int>(motion);
    const HWND slider = Item(IDC_JOINTS_SLIDERS + number);
    const bool isFree = now.range && !isPlaying();
    enable(IDC_JOINTS_SLIDERS + number, isFree);
    enable(fieldOf(motion), isFree);
    EnableItem(IDC_JOINTS_LABELS + number, now.range.has_value());
    std::optional<Row>& shown = rows_[motion];
    if (!shown || shown->range != now.range) {
        const bool isLimited = now.range && joints_.front().joint.motions[motion].isLimited;
        std::string limits;
        if (isLimited)
            limits = shortNumber(now.range->least, 4) + " … " + shortNumber(now.range->greatest, 4);
        else if (now.range)
            limits = textOf(TextId::kNoLimits);
        else if (!joints_.empty())
            limits = textOf(TextId::kNotFree);
        SetItemText(IDC_JOINTS_LIMITS + number, limits);
        const double step = joints_.empty() ? 0 : joints_.front().joint.motions[motion].step;
        const double all = now.range ? now.range->greatest - now.range->least : 1;
        const double share = step > 0 && step < all ? step / all : 0.01;
        ::SendMessageW(slider, TBM_SETLINESIZE, 0, std::max(1L, std::lround(share * kSteps)));
    } else if (shown->value == now.value) {
        return;
    }
    SetItemText(fieldOf(motion), joints_.empty() ? "" : shortNumber(now.value));
    const double share = now.range ? (now.range->clamp(now.value) - now.range->least) /
                                         (now.range->greatest - now.range->least)
                                   : 0;
    ::SendMessageW(slider, TBM_SETPOS, TRUE, std::lround(share * kSteps));
    shown = now;
}

void JointsWindow::showButtons() {
    const bool isMoved = !poses_.empty() && !isPlaying();
    enable(IDC_JOINTS_KEEP, isMoved);
    enable(IDC_JOINTS_BACK, isMoved);
    const std::string play = textOf(isPlaying() ? TextId::kStopPlaying : TextId::kPlay);
    if (ItemText(IDC_JOINTS_PLAY) != play) SetItemText(IDC_JOINTS_PLAY, play);
}

// ---------------------------------------------------------------- moving

void JointsWindow::show(render::Poses poses, render::FilePoses inFiles) {
    scene_.pose(std::move(poses), std::move(inFiles));
    viewport_.redraw();
}

void JointsWindow::moveTo(std::size_t motion, double value) {
    if (isPlaying() || joints_.empty()) return;
    for (const KnownJoint& known : joints_) {
        const std::optional<MotionRange> range = rangeOf(known.joint, motion, reach_);
        if (!range) continue;
        auto& pose = poses_.try_emplace(known.node, known.joint.values).first->second;
        pose[motion] = range->clamp(value);
    }
    show(poses_);
    showRow(motion);
    showButtons();
}

void JointsWindow::OnHScroll(UINT, int, HWND control) {
    const auto motion = numberFrom(IDC_JOINTS_SLIDERS, ::GetDlgCtrlID(control));
    if (!control || !motion || !rows_[*motion] || !rows_[*motion]->range) return;
    const auto place = static_cast<double>(::SendMessageW(control, TBM_GETPOS, 0, 0));
    const MotionRange& range = *rows_[*motion]->range;
    // In round numbers that are finer than a step of the slider.
    const double unit =
        std::pow(10, std::floor(std::log10((range.greatest - range.least) / kSteps)));
    const double value = std::lerp(range.least, range.greatest, place / kSteps);
    moveTo(*motion, std::round(value / unit) * unit);
}

// A value beyond the limits becomes the nearest one that is not.
void JointsWindow::takeField(std::size_t motion) {
    const std::optional<double> value = numberOf(ItemText(fieldOf(motion)));
    if (!value) {
        ::MessageBeep(MB_ICONWARNING);
        ::SetFocus(Item(fieldOf(motion)));
        ::SendMessageW(Item(fieldOf(motion)), EM_SETSEL, 0, -1);
        return;
    }
    rows_[motion].reset();
    moveTo(motion, *value);
    ::SendMessageW(Item(fieldOf(motion)), EM_SETSEL, 0, -1);
}

void JointsWindow::OnOK() {
    if (const auto motion = numberFrom(IDC_JOINTS_FIELDS, ::GetDlgCtrlID(::GetFocus())))
        takeField(*motion);
}

bool JointsWindow::OnCommand(int id, UINT code, HWND control) {
    if (numberFrom(IDC_JOINTS_FIELDS, id)) return true;
    if (code != BN_CLICKED) return CDialog::OnCommand(id, code, control);
    switch (id) {
        case IDC_JOINTS_KEEP:
            keep();
            return true;
        case IDC_JOINTS_BACK:
            goBack();
            return true;
        case IDC_JOINTS_PLAY:
            isPlaying() ? endPlay() : beginPlay();
            return true;
        default:
            return CDialog::OnCommand(id, code, control);
    }
}

void JointsWindow::keep() {
    const CWaitCursor wait;
    UndoScope step(textOf(TextId::kStepSetJoints).c_str());
    if (!keepPoses(host_, poses_)) return void(::MessageBeep(MB_ICONWARNING));
    step.Commit();
    goBack();
}

void JointsWindow::goBack() {
    poses_.clear();
    show({});
    refresh();
}

// ---------------------------------------------------------------- playing

void JointsWindow::beginPlay() {
    if (scene_.isHeld()) return;
    const CWaitCursor wait;
    findJoints();
    const render::Box box = scene_.model().box();
    constexpr double kShareOfScene = 0.1;
    const double ofScene = box.empty() ? 1 : length(box.max - box.min) * kShareOfScene;
    filesPlayed_ = scene_.fileTops();
    play_.emplace(allJoints(host_, filesPlayed_), poses_, ofScene);
    begun_ = ::GetTickCount64();
    ::SetTimer(Handle(), kPlayTimer, kMillisecondsOfPlay, nullptr);
    OnTimer(kPlayTimer);
}

void JointsWindow::endPlay() {
    ::KillTimer(Handle(), kPlayTimer);
    play_.reset();
    show(poses_);
    refresh();
}

// Joints that come, go or get other limits meanwhile are looked for again, and so are those of
// files that have been read.
void JointsWindow::OnTimer(UINT_PTR id) {
    if (id != kPlayTimer) return;
    if (!isPlaying()) return void(::KillTimer(Handle(), kPlayTimer));
    if (scene_.isHeld()) return;
    if (watch_.HasChanged() || scene_.fileTops() != filesPlayed_) {
        const ULONGLONG begun = begun_;
        beginPlay();
        begun_ = begun;
        return;
    }
    const double seconds = static_cast<double>(::GetTickCount64() - begun_) / 1000;
    played_ = play_->at(seconds);
    show(played_, play_->inFilesAt(seconds));
    refresh();
}

// ---------------------------------------------------------------- tips

bool JointsWindow::OnNotify(int, NMHDR& header, LRESULT&) {
    return answerToolTip(header, [this](int id) { return tipOf(id); });
}

std::string JointsWindow::tipOf(int id) const {
    if (numberFrom(IDC_JOINTS_SLIDERS, id)) return textOf(TextId::kTipJointSlider);
    if (numberFrom(IDC_JOINTS_FIELDS, id)) return textOf(TextId::kTipJointField);
    switch (id) {
        case IDC_JOINTS_KEEP:
            return textOf(TextId::kTipJointsKeep);
        case IDC_JOINTS_BACK:
            return textOf(TextId::kTipJointsBack);
        case IDC_JOINTS_PLAY:
            return textOf(isPlaying() ? TextId::kTipJointsStop : TextId::kTipJointsPlay);
        default:
            return {};
    }
}

}  // namespace workbench
