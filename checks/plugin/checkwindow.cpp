#include "checkwindow.h"

#include "resource.h"
#include "texts.h"

#include <base/replacefile.h>
#include <base/utf16.h>
#include <checks/mends.h>
#include <checks/query.h>
#include <fltkilnutil/actions.h>
#include <framework/clipboard.h>
#include <framework/cwaitcursor.h>
#include <framework/filedialog.h>
#include <framework/module.h>
#include <framework/windowplace.h>
#include <kiln/kiln.h>
#include <kiln/language.h>

#include <algorithm>
#include <array>
#include <new>
#include <utility>

using framework::CWaitCursor, framework::heightOf, framework::widthOf;

namespace checks {

namespace {

constexpr UINT_PTR kRunTimer = 1;
constexpr UINT kRunMilliseconds = 15;
constexpr std::chrono::milliseconds kSlice{12};
/// How often it is looked whether the scene is left alone again.
constexpr UINT_PTR kQuietTimer = 2;
constexpr UINT kQuietMilliseconds = 300;

constexpr int kProgressSteps = 1000;
/// The list has room for all; only a user's own file says how many.
constexpr std::size_t kListed = 100'000;

struct ColumnOf {
    TextId name;
    FindingList::Key key;
    int width;  ///< at 100 %; 0 for what is left
    bool isDescendingFirst;
};
constexpr ColumnOf kColumns[] = {
    {TextId::kColumnSeverity, FindingList::Key::kSeverity, 76, true},
    {TextId::kColumnCode, FindingList::Key::kCode, 140, false},
    {TextId::kColumnNode, FindingList::Key::kNode, 110, false},
    {TextId::kColumnText, FindingList::Key::kText, 0, false},
    {TextId::kColumnMend, FindingList::Key::kMend, 76, false},
};
constexpr int kSeverityColumn = 0, kCodeColumn = 1, kNodeColumn = 2, kTextColumn = 3,
              kMendColumn = 4;

constexpr framework::Anchor kAnchors[] = {
    {IDC_PROGRESS, 0, 1},           {IDC_FILTER, 0, 1},         {IDC_FINDINGS, 0, 1, false, true},
    {IDC_STATUS, 0, 1, true},       {IDC_FOLLOW, 1, 0, true},   {IDC_GO_TO, 0, 0, true},
    {IDC_MEND, 0, 0, true},         {IDC_MEND_ALL, 0, 0, true}, {IDC_QUERY, 0, 1, true},
    {IDC_SELECT_FOUND, 1, 0, true}, {IDC_FIND, 1, 0, true},     {IDC_QUERY_LABEL, 0, 0, true},
    {IDC_COPY, 1, 0, true},         {IDC_SAVE, 1, 0, true},
};

constexpr wchar_t kPlaceName[] = L"FltCheck";

constexpr COLORREF kErrorColor = RGB(176, 0, 32), kWarningColor = RGB(150, 84, 0);

base::Language language() {
    return static_cast<base::Language>(GetLanguage());
}

std::string textOf(Severity severity) {
    switch (severity) {
        case Severity::kError:
            return textOf(TextId::kError);
        case Severity::kWarning:
            return textOf(TextId::kWarning);
        default:
            return textOf(TextId::kHint);
    }
}

std::string textOf(Mend mend) {
    switch (mend) {
        case Mend::kSafe:
            return textOf(TextId::kMendSafe);
        case Mend::kOnRequest:
            return textOf(TextId::kMendOnRequest);
        default:
            return {};
    }
}

bool isSame(const Finding& a, const Finding& b) {
    return a.rule == b.rule && a.place == b.place && a.detail == b.detail && a.values == b.values;
}

/// The names of some nodes above, the nearest last.
std::string whereIs(INode& node) {
    constexpr int kMost = 4;
    std::string path;
    int count = 0;
    for (INode* above = node.GetParentNode(); above != nullptr && !above->IsRootNode();
         above = above->GetParentNode()) {
        if (++count > kMost) return "... / " + path;
        path = path.empty() ? above->GetName() : std::string(above->GetName()) + " / " + path;
    }
    return path;
}

bool isPressed(int key) noexcept {
    return ::GetKeyState(key) < 0;
}

}  // namespace

/// A check that is under way. The scene must not change between its slices.
struct CheckWindow::Run {
    Run(Interface& host, Target wanted)
        : target(std::move(wanted)), source(host), check(source, target) {}

    Target target;
    SceneSource source;
    Check check;
};

CheckWindow::CheckWindow() : controls_(kAnchors) {}

CheckWindow::~CheckWindow() {
    if (headingFont_ != nullptr) ::DeleteObject(headingFont_);
}

HWND CheckWindow::list() const noexcept {
    return Item(IDC_FINDINGS);
}

void CheckWindow::open(Interface& host) {
    host_ = &host;
    if (!watch_)
        watch_ = std::make_unique<SceneWatch>(
            [](void* window) { static_cast<CheckWindow*>(window)->sceneChanged(); }, this);
    if (!HasWindow() && !Create(IDD_CHECK, host.GetKilnHWND())) return;
    Show(SW_SHOWNORMAL);
    ::SetForegroundWindow(Handle());
    ::SetFocus(list());
    if (!checked_ || stale_) start();
}

bool CheckWindow::OnInitDialog() {
    constexpr DWORD kStyle = LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER;
    ::SendMessageW(list(), LVM_SETEXTENDEDLISTVIEWSTYLE, kStyle, kStyle);
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_SUBITEM;
        column.iSubItem = i;
        ::SendMessageW(list(), LVM_INSERTCOLUMNW, static_cast<WPARAM>(i),
                       reinterpret_cast<LPARAM>(&column));
    }
    // Nothing to see: it makes the rows as high as Chinese text needs. It goes with the control.
    const HIMAGELIST height = ::ImageList_Create(1, Scaled(18), ILC_COLOR32, 0, 1);
    ::SendMessageW(list(), LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(height));
    LOGFONTW font{};
    ::GetObjectW(Font(), sizeof font, &font);
    font.lfWeight = FW_BOLD;
    headingFont_ = ::CreateFontIndirectW(&font);
    for (const int id : {IDC_ERRORS, IDC_WARNINGS, IDC_HINTS, IDC_FOLLOW}) CheckItem(id, true);
    ::SendMessageW(Item(IDC_PROGRESS), PBM_SETRANGE32, 0, kProgressSteps);
    ::ShowWindow(Item(IDC_PROGRESS), SW_HIDE);
    const RECT window = WindowRect(), client = ClientRect();
    smallest_ = {widthOf(window), heightOf(window)};
    controls_.note(Handle(), {client.right, client.bottom});
    listTargets();
    nameColumns();
    listRules();
    if (!framework::restoreWindowPlace(Handle(), kPlaceName)) widen();
    layout();
    refresh();
    return true;
}

void CheckWindow::followLanguage() {
    if (!HasWindow()) return;
    const SIZE base = FollowLanguage();
    if (base.cx != 0) controls_.note(Handle(), base);
    findings_.speak(language());
    nameColumns();
    listRules();
    layout();
    refresh();
}

// The window goes with the host's; another one begins with nothing but its place.
void CheckWindow::OnDestroy() {
    framework::keepWindowPlace(Handle(), kPlaceName);
    run_.reset();
    watch_.reset();
    findings_ = {};
    aside_.reset();
    focused_.reset();
    wanted_ = checked_ = stale_ = false;
    ::DeleteObject(std::exchange(headingFont_, nullptr));
    controls_.forget();
    Default();
}

// ---------------------------------------------------------------- running

void CheckWindow::listTargets() {
    const HWND targets = Item(IDC_TARGET);
    ::SendMessageW(targets, CB_RESETCONTENT, 0, 0);
    const auto add = [&](const std::string& name) {
        ::SendMessageW(targets, CB_ADDSTRING, 0,
                       reinterpret_cast<LPARAM>(base::toWide(name).c_str()));
    };
    for (const std::string& name : targetNames()) add(name);
    for (const std::string& file : files_) add(file);
    ::SendMessageW(targets, CB_SETCURSEL,
                   files_.empty() ? 0 : targetNames().size() + files_.size() - 1, 0);
}

std::optional<Target> CheckWindow::chosenTarget() {
    const std::vector<std::string> names = targetNames();
    const auto chosen = static_cast<std::size_t>(
        std::max<LRESULT>(::SendMessageW(Item(IDC_TARGET), CB_GETCURSEL, 0, 0), 0));
    const bool isFile = chosen >= names.size();
    try {
        Target target = findTarget(isFile ? files_.at(chosen - names.size()) : names[chosen]);
        if (!isFile) target.mostFindings = kListed;
        return target;
    } catch (const TargetError& error) {
        ShowMessage(textOf(TextId::kCannotUseTarget, {error.text(language())}),
                    MB_OK | MB_ICONWARNING);
        return std::nullopt;
    }
}

void CheckWindow::chooseOwnFile() {
    const auto file = framework::askOpenFile(Handle(), textOf(TextId::kOwnFileTitle),
                                             {{textOf(TextId::kTargetFiles), "*.json"}});
    if (!file) return;
    const auto before = ::SendMessageW(Item(IDC_TARGET), CB_GETCURSEL, 0, 0);
    std::erase(files_, *file);
    files_.push_back(*file);
    listTargets();
    if (std::optional<Target> target = chosenTarget()) return start(std::move(*target));
    files_.pop_back();
    listTargets();
    ::SendMessageW(Item(IDC_TARGET), CB_SETCURSEL, static_cast<WPARAM>(before), 0);
}

void CheckWindow::start() {
    backToFindings();
    if (std::optional<Target> target = chosenTarget()) start(std::move(*target));
}

void CheckWindow::start(Target target) {
    run_.reset();
    watch_->Take();
    wanted_ = stale_ = false;
    ::KillTimer(Handle(), kQuietTimer);
    run_ = std::make_unique<Run>(*host_, std::move(target));
    EnableItem(IDC_STOP, true);
    ::SendMessageW(Item(IDC_PROGRESS), PBM_SETPOS, 0, 0);
    ::ShowWindow(Item(IDC_PROGRESS), SW_SHOW);
    ::SetTimer(Handle(), kRunTimer, kRunMilliseconds, nullptr);
    say(textOf(TextId::kRunning, {"0"}));
}

void CheckWindow::OnTimer(UINT_PTR timer) {
    if (timer == kRunTimer) advance();
    if (timer == kQuietTimer) look();
}

void CheckWindow::advance() {
    if (!run_) return;
    if (watch_->HasChanged()) {  // the nodes that it is among may have gone
        end();
        wanted_ = true;
        ::SetTimer(Handle(), kQuietTimer, kQuietMilliseconds, nullptr);
        return;
    }
    try {
        if (run_->check.advance(kSlice)) {
            target_ = std::move(run_->target);
            checked_ = true;
            Report report = run_->check.report();
            end();
            if (aside_) {  // what a query has found stays until the user goes back
                aside_ = std::move(report);
                return showCounts();
            }
            return showReport(std::move(report));
        }
    } catch (const std::bad_alloc&) {
        end();
        return say(textOf(TextId::kFailed));
    }
    const double progress = run_->check.progress();
    ::SendMessageW(Item(IDC_PROGRESS), PBM_SETPOS, static_cast<WPARAM>(progress * kProgressSteps),
                   0);
    say(textOf(TextId::kRunning, {std::to_string(static_cast<int>(progress * 100))}));
}

void CheckWindow::showReport(Report report) {
    findings_.show(std::move(report), language());
    listRules();
    refresh();
}

void CheckWindow::backToFindings() {
    if (!aside_) return;
    Report report = std::move(*aside_);
    aside_.reset();
    showReport(std::move(report));
}

void CheckWindow::end() {
    run_.reset();
    ::KillTimer(Handle(), kRunTimer);
    ::ShowWindow(Item(IDC_PROGRESS), SW_HIDE);
    if (::GetFocus() == Item(IDC_STOP)) ::SetFocus(list());
    EnableItem(IDC_STOP, false);
}

void CheckWindow::stop() {
    end();
    wanted_ = false;
    stale_ = true;
    say(textOf(TextId::kStopped));
}

// The change may be half made: the scene is read later.
void CheckWindow::sceneChanged() {
    stale_ = true;
    if (HasWindow()) ::SetTimer(Handle(), kQuietTimer, kQuietMilliseconds, nullptr);
}

// A first look takes out what has gone; one that finds nothing new begins the check that is wanted.
void CheckWindow::look() {
    if (watch_->Take()) {
        const std::vector<Finding>& found = findings_.report().findings;
        const std::size_t gone = findings_.removeIf([&](std::size_t i) {
            return found[i].place != 0 &&
                   host_->GetINodeByHandle(static_cast<DWORD>(found[i].place)) == nullptr;
        });
        if (gone != 0) refresh();
        if (run_) {
            end();
            wanted_ = true;
        }
        if (checked_ && IsItemChecked(IDC_FOLLOW)) wanted_ = true;
        stale_ = true;
        if (!IsVisible()) showCounts();
        return;
    }
    ::KillTimer(Handle(), kQuietTimer);
    if (!wanted_ || !IsVisible()) return;
    start(checked_ ? target_ : chosenTarget().value_or(Target()));
}

// ---------------------------------------------------------------- the list

void CheckWindow::nameColumns() {
    ::SendMessageW(Item(IDC_QUERY), EM_SETCUEBANNER, FALSE,
                   reinterpret_cast<LPARAM>(base::toWide(textOf(TextId::kQueryExample)).c_str()));
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i) {
        const std::wstring name = base::toWide(textOf(kColumns[i].name));
        HDITEMW heading{};
        heading.mask = HDI_FORMAT | HDI_TEXT;
        heading.pszText = const_cast<wchar_t*>(name.c_str());
        heading.fmt = HDF_LEFT | HDF_STRING;
        if (kColumns[i].key == findings_.key())
            heading.fmt |= findings_.isDescending() ? HDF_SORTDOWN : HDF_SORTUP;
        const auto header = reinterpret_cast<HWND>(::SendMessageW(list(), LVM_GETHEADER, 0, 0));
        ::SendMessageW(header, HDM_SETITEMW, static_cast<WPARAM>(i),
                       reinterpret_cast<LPARAM>(&heading));
    }
}

// The sentences have what the others leave.
void CheckWindow::fitColumns() {
    RECT area;
    ::GetClientRect(list(), &area);
    int left = static_cast<int>(area.right);
    for (const ColumnOf& column : kColumns) left -= Scaled(column.width);
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i)
        ::SendMessageW(
            list(), LVM_SETCOLUMNWIDTH, static_cast<WPARAM>(i),
            kColumns[i].width == 0 ? std::max(left, Scaled(120)) : Scaled(kColumns[i].width));
}

void CheckWindow::listRules() {
    const HWND rules = Item(IDC_RULE);
    ::SendMessageW(rules, CB_RESETCONTENT, 0, 0);
    const auto add = [&](const std::string& text, LPARAM data, bool isChosen) {
        const auto place = static_cast<WPARAM>(::SendMessageW(
            rules, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(base::toWide(text).c_str())));
        ::SendMessageW(rules, CB_SETITEMDATA, place, data);
        if (isChosen) ::SendMessageW(rules, CB_SETCURSEL, place, 0);
    };
    add(textOf(TextId::kAllRules), -1, true);
    bool isThere = false;
    const std::optional<Rule> chosen = findings_.filter().rule;
    for (const RuleInfo& rule : catalogue()) {
        const std::uint64_t count = findings_.report().countOf(rule.rule);
        if (count == 0) continue;
        isThere = isThere || rule.rule == chosen;
        add(textOf(TextId::kRuleCount, {rule.code, std::to_string(count)}),
            static_cast<LPARAM>(rule.rule), rule.rule == chosen);
    }
    ::SendMessageW(rules, CB_SETDROPPEDWIDTH, static_cast<WPARAM>(Scaled(200)), 0);
    if (chosen && !isThere) filter();
}

void CheckWindow::filter() {
    FindingList::Filter wanted;
    wanted.errors = IsItemChecked(IDC_ERRORS);
    wanted.warnings = IsItemChecked(IDC_WARNINGS);
    wanted.hints = IsItemChecked(IDC_HINTS);
    wanted.words = ItemText(IDC_FILTER);
    const HWND rules = Item(IDC_RULE);
    const LRESULT chosen = ::SendMessageW(rules, CB_GETCURSEL, 0, 0);
    if (chosen > 0)
        wanted.rule = static_cast<Rule>(
            ::SendMessageW(rules, CB_GETITEMDATA, static_cast<WPARAM>(chosen), 0));
    findings_.setFilter(std::move(wanted));
    refresh();
}

void CheckWindow::sortBy(int column) {
    const ColumnOf& by = kColumns[column];
    findings_.sortBy(by.key,
                     findings_.key() == by.key ? !findings_.isDescending() : by.isDescendingFirst);
    nameColumns();
    refresh();
}

// The finding that has the focus keeps it; where it has gone, the next one gets it.
void CheckWindow::refresh() {
    if (!HasWindow()) return;
    const auto rows = static_cast<int>(findings_.rows());
    int row = std::min(std::max(focusedRow(), 0), rows - 1);
    if (focused_) {
        const std::vector<Finding>& found = findings_.report().findings;
        const auto same = std::ranges::find_if(
            found, [&](const Finding& finding) { return isSame(finding, *focused_); });
        if (same != found.end())
            if (const auto shown = findings_.rowOf(static_cast<std::size_t>(same - found.begin())))
                row = static_cast<int>(*shown);
    }
    isRefreshing_ = true;
    // Without rows none is selected: the control may take them out one by one otherwise.
    constexpr LRESULT kMany = 256;
    if (::SendMessageW(list(), LVM_GETSELECTEDCOUNT, 0, 0) > kMany)
        ::SendMessageW(list(), LVM_SETITEMCOUNT, 0, LVSICF_NOSCROLL);
    ::SendMessageW(list(), LVM_SETITEMCOUNT, static_cast<WPARAM>(rows), LVSICF_NOSCROLL);
    LVITEMW state{};
    state.stateMask = LVIS_SELECTED | LVIS_FOCUSED;
    ::SendMessageW(list(), LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                   reinterpret_cast<LPARAM>(&state));
    if (row >= 0) {
        state.state = state.stateMask;
        ::SendMessageW(list(), LVM_SETITEMSTATE, static_cast<WPARAM>(row),
                       reinterpret_cast<LPARAM>(&state));
        ::SendMessageW(list(), LVM_ENSUREVISIBLE, static_cast<WPARAM>(row), FALSE);
    }
    isRefreshing_ = false;
    noteFocus();
    fitColumns();
    ::InvalidateRect(list(), nullptr, FALSE);
    showCounts();
    enableActions();
}

void CheckWindow::noteFocus() {
    const int row = focusedRow();
    focused_.reset();
    if (row < 0) return;
    if (const Finding* const finding = findings_.at(static_cast<std::size_t>(row)).finding)
        focused_ = *finding;
}

std::string CheckWindow::countsText() const {
    if (!checked_) return textOf(TextId::kNotChecked);
    // Nothing is checked again while nobody looks.
    if (stale_ && !IsVisible()) return textOf(TextId::kChangedSince);
    const Report& report = aside_ ? *aside_ : findings_.report();
    const auto count = [&](Severity severity) {
        return std::to_string(report.countOf(severity, target_));
    };
    return textOf(TextId::kCounts,
                  {count(Severity::kError), count(Severity::kWarning), count(Severity::kHint)});
}

void CheckWindow::showCounts() {
    std::string text =
        aside_ ? textOf(TextId::kNodesFound, {std::to_string(findings_.report().findings.size())})
               : countsText();
    const std::size_t all = findings_.report().findings.size();
    if ((checked_ || aside_) && findings_.passed() != all)
        text =
            textOf(TextId::kShown, {text, std::to_string(findings_.passed()), std::to_string(all)});
    if (!run_) say(text);
    if (onCounts) onCounts();
}

void CheckWindow::say(const std::string& text) {
    if (ItemText(IDC_STATUS) != text) SetItemText(IDC_STATUS, text);
}

void CheckWindow::enableActions() {
    const int row = focusedRow();
    const bool isRow = row >= 0;
    const bool isFinding = isRow && !selectedFindings(1).empty();
    const bool canMendKind = isRow && canMend(findings_.at(static_cast<std::size_t>(row)).rule);
    const HWND focus = ::GetFocus();
    const std::pair<int, bool> wanted[] = {{IDC_GO_TO, isFinding},
                                           {IDC_MEND, isFinding && canMendKind},
                                           {IDC_MEND_ALL, canMendKind},
                                           {IDC_COPY, isRow},
                                           {IDC_SAVE, checked_ && !aside_}};
    for (const auto& [id, enabled] : wanted) {
        if (!enabled && focus == Item(id)) ::SetFocus(list());
        EnableItem(id, enabled);
    }
}

std::string CheckWindow::cell(const FindingList::Row& row, int column) const {
    if (row.rule == kQueryFound && row.finding != nullptr && column != kNodeColumn &&
        column != kTextColumn) {
        if (column == kCodeColumn) return row.finding->values.back();
        return column == kSeverityColumn ? textOf(TextId::kFoundRow) : std::string();
    }
    if (column == kCodeColumn) return infoOf(row.rule).code;
    if (row.finding == nullptr) {
        if (column == kSeverityColumn)
            return (row.isFolded ? "+ " : "- ") + (row.rule == kQueryFound
                                                       ? textOf(TextId::kFoundRow)
                                                       : textOf(target_.severityOf(row.rule)));
        if (column == kNodeColumn) return textOf(TextId::kGroupCount, {std::to_string(row.count)});
        return column == kMendColumn ? textOf(infoOf(row.rule).mend) : std::string();
    }
    switch (column) {
        case kSeverityColumn:
            return textOf(row.finding->severity);
        case kNodeColumn:
            return row.finding->node;
        case kTextColumn:
            return findings_.sentence(row.index);
        case kMendColumn:
            return canMend(row.rule) ? textOf(infoOf(row.rule).mend) : std::string();
        default:
            return {};
    }
}

void CheckWindow::draw(NMLVCUSTOMDRAW& drawn, LRESULT& result) const {
    result = CDRF_DODEFAULT;
    const auto row = static_cast<std::size_t>(drawn.nmcd.dwItemSpec);
    switch (drawn.nmcd.dwDrawStage) {
        case CDDS_PREPAINT:
            result = CDRF_NOTIFYITEMDRAW;
            return;
        case CDDS_ITEMPREPAINT:
            result = CDRF_NOTIFYSUBITEMDRAW;
            return;
        case CDDS_ITEMPREPAINT | CDDS_SUBITEM: {
            if (row >= findings_.rows()) return;
            const FindingList::Row shown = findings_.at(row);
            const Severity severity =
                shown.rule == kQueryFound ? Severity::kHint : target_.severityOf(shown.rule);
            drawn.clrText = ::GetSysColor(COLOR_WINDOWTEXT);
            drawn.clrTextBk = ::GetSysColor(COLOR_WINDOW);
            if (drawn.iSubItem == kSeverityColumn && severity == Severity::kError)
                drawn.clrText = kErrorColor;
            if (drawn.iSubItem == kSeverityColumn && severity == Severity::kWarning)
                drawn.clrText = kWarningColor;
            if (shown.finding == nullptr) drawn.clrTextBk = ::GetSysColor(COLOR_BTNFACE);
            ::SelectObject(drawn.nmcd.hdc, shown.finding == nullptr ? headingFont_ : Font());
            result = CDRF_NEWFONT;
            return;
        }
        default:
            return;
    }
}

int CheckWindow::focusedRow() const {
    return static_cast<int>(
        ::SendMessageW(list(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED));
}

/// -1 behind the last one. Where all are selected, the control is not asked row by row.
int CheckWindow::selectedBehind(int row, bool areAll) const {
    if (areAll) return row + 1 < static_cast<int>(findings_.rows()) ? row + 1 : -1;
    return static_cast<int>(
        ::SendMessageW(list(), LVM_GETNEXTITEM, static_cast<WPARAM>(row), LVNI_SELECTED));
}

bool CheckWindow::areAllSelected() const {
    return ::SendMessageW(list(), LVM_GETSELECTEDCOUNT, 0, 0) ==
           static_cast<LRESULT>(findings_.rows());
}

std::vector<std::size_t> CheckWindow::selectedFindings(std::size_t most) const {
    std::vector<std::size_t> indices;
    const bool areAll = areAllSelected();
    for (int row = -1; indices.size() < most && (row = selectedBehind(row, areAll)) >= 0;) {
        const FindingList::Row selected = findings_.at(static_cast<std::size_t>(row));
        if (selected.finding != nullptr) indices.push_back(selected.index);
    }
    return indices;
}

void CheckWindow::fold(int row, bool folded) {
    if (row < 0) return;
    const FindingList::Row heading = findings_.at(static_cast<std::size_t>(row));
    if (!findings_.isGrouped() || (heading.finding != nullptr && !folded)) return;
    findings_.fold(heading.rule, folded);
    refresh();
}

// ---------------------------------------------------------------- what is done with findings

// Several findings select all of their nodes.
void CheckWindow::goTo() {
    const int row = focusedRow();
    if (row < 0) return;
    const FindingList::Row focused = findings_.at(static_cast<std::size_t>(row));
    if (focused.finding == nullptr) return fold(row, !focused.isFolded);
    const CWaitCursor wait;
    std::vector<INode*> nodes;
    for (const std::size_t i : selectedFindings()) {
        const auto handle = static_cast<DWORD>(findings_.report().findings[i].place);
        if (INode* const node = host_->GetINodeByHandle(handle)) nodes.push_back(node);
    }
    if (nodes.empty()) {
        ::MessageBeep(MB_OK);
        return say(textOf(TextId::kNodeGone));
    }
    select(nodes);
}

void CheckWindow::select(const std::vector<INode*>& nodes) {
    host_->ClearNodeSelection();
    for (INode* const node : nodes) host_->SelectNode(node, false);
    host_->ZoomToSelection();
}

/// What the query finds; nothing where it cannot be read or finds none, which is said.
std::optional<std::vector<INode*>> CheckWindow::askQuery() {
    try {
        const CWaitCursor wait;
        std::vector<INode*> nodes = Query(ItemText(IDC_QUERY)).find(*host_);
        if (!nodes.empty()) return nodes;
        ::MessageBeep(MB_OK);
        say(textOf(TextId::kNoNodes));
    } catch (const QueryError& error) {
        ::MessageBeep(MB_OK);
        // The field counts as it shows.
        const auto at = base::toWide(ItemText(IDC_QUERY).substr(0, error.at)).size();
        say(textOf(TextId::kBadQuery, {std::to_string(at + 1)}));
        ::SetFocus(Item(IDC_QUERY));
        ::SendMessageW(Item(IDC_QUERY), EM_SETSEL, at, static_cast<LPARAM>(at));
    }
    return std::nullopt;
}

void CheckWindow::selectFound() {
    const auto nodes = askQuery();
    if (!nodes) return;
    select(*nodes);
    say(textOf(TextId::kNodesSelected, {std::to_string(nodes->size())}));
}

// The list has the nodes in place of the findings, which come back with F5.
void CheckWindow::listFound() {
    const auto nodes = askQuery();
    if (!nodes) return;
    const CWaitCursor wait;
    Report found;
    for (INode* const node : *nodes) {
        Finding& finding = found.findings.emplace_back();
        finding.rule = kQueryFound;
        finding.severity = Severity::kHint;
        finding.place = node->GetHandle();
        finding.node = node->GetName();
        finding.values = {whereIs(*node), kindNameOf(*node)};
    }
    found.counts[static_cast<std::size_t>(kQueryFound)] = found.findings.size();
    if (!aside_) aside_ = findings_.report();
    showReport(std::move(found));
    ::SetFocus(list());
}

void CheckWindow::mend(const std::vector<std::size_t>& indices) {
    if (indices.empty()) return;
    const CWaitCursor wait;
    const std::vector<Finding>& found = findings_.report().findings;
    std::vector<bool> isMended(found.size());
    std::size_t mended = 0;
    {
        fltkilnutil::ActionScope step(fltkilnutil::Action::kMend);
        for (const std::size_t i : indices) {
            if (!checks::mend(*host_, target_, found[i])) continue;
            isMended[i] = true;
            ++mended;
        }
        step.Commit();
    }
    findings_.removeIf([&](std::size_t i) { return isMended[i]; });
    listRules();
    refresh();
    const std::size_t left = indices.size() - mended;
    if (left != 0) ::MessageBeep(MB_OK);
    say(left == 0 ? textOf(TextId::kMended, {std::to_string(mended)})
                  : textOf(TextId::kMendedSome, {std::to_string(mended), std::to_string(left)}));
}

void CheckWindow::mendSelected() {
    mend(selectedFindings());
}

void CheckWindow::mendKind() {
    const int row = focusedRow();
    if (row < 0) return;
    const Rule rule = findings_.at(static_cast<std::size_t>(row)).rule;
    const std::vector<Finding>& found = findings_.report().findings;
    std::vector<std::size_t> indices;
    for (std::size_t i = 0; i < found.size(); ++i)
        if (found[i].rule == rule) indices.push_back(i);
    mend(indices);
}

void CheckWindow::copy() {
    const CWaitCursor wait;
    std::string text;
    const bool areAll = areAllSelected();
    for (int row = -1; (row = selectedBehind(row, areAll)) >= 0;) {
        const FindingList::Row selected = findings_.at(static_cast<std::size_t>(row));
        for (int column = kSeverityColumn; column <= kTextColumn; ++column) {
            if (column != kSeverityColumn) text += '\t';
            std::string words = cell(selected, column);
            std::ranges::replace_if(
                words, [](char c) { return c == '\t' || c == '\r' || c == '\n'; }, ' ');
            text += words;
        }
        text += "\r\n";
    }
    if (!text.empty() && !framework::putOnClipboard(Handle(), text)) ::MessageBeep(MB_OK);
}

void CheckWindow::save() {
    std::size_t kind = 0;
    const auto file = framework::askSaveFile(
        Handle(), textOf(TextId::kSaveTitle),
        {{textOf(TextId::kJsonFiles), "*.json"}, {textOf(TextId::kCsvFiles), "*.csv"}}, "json", {},
        &kind);
    if (!file) return;
    const CWaitCursor wait;
    const Report& report = findings_.report();
    constexpr char kUtf8Mark[] = "\xEF\xBB\xBF";  // spreadsheets look for it
    try {
        base::replaceFile(*file, kind == 0 ? toJson(report, target_, "scene", "handle")
                                           : kUtf8Mark + toCsv(report, language(), "handle"));
    } catch (const std::exception&) {
        ShowMessage(textOf(TextId::kCannotSave, {*file}), MB_OK | MB_ICONWARNING);
    }
}

// ---------------------------------------------------------------- keys and controls

bool CheckWindow::PreTranslateMessage(MSG& message) {
    if (message.message != WM_KEYDOWN) return false;
    if (message.wParam == VK_F5) {
        start();
        return true;
    }
    if (!isPressed(VK_CONTROL) || isPressed(VK_MENU)) return false;
    if (message.wParam == 'F') {
        ::SetFocus(Item(IDC_FILTER));
        ::SendMessageW(Item(IDC_FILTER), EM_SETSEL, 0, -1);
        return true;
    }
    if (message.hwnd != list()) return false;
    if (message.wParam == 'C') {
        copy();
        return true;
    }
    if (message.wParam == 'A') {
        const CWaitCursor wait;
        LVITEMW state{};
        state.state = state.stateMask = LVIS_SELECTED;
        // The control may tell of each row, and ask for each to be drawn.
        isRefreshing_ = true;
        ::SendMessageW(list(), WM_SETREDRAW, FALSE, 0);
        ::SendMessageW(list(), LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                       reinterpret_cast<LPARAM>(&state));
        ::SendMessageW(list(), WM_SETREDRAW, TRUE, 0);
        ::InvalidateRect(list(), nullptr, TRUE);
        isRefreshing_ = false;
        noteFocus();
        enableActions();
        return true;
    }
    return false;
}

void CheckWindow::OnOK() {
    if (::GetFocus() == Item(IDC_QUERY)) return selectFound();
    goTo();
}

void CheckWindow::OnCancel() {
    if (run_ || wanted_) return stop();
    Hide();
}

bool CheckWindow::OnCommand(int id, UINT code, HWND control) {
    switch (id) {
        case IDC_OWN_FILE:
            chooseOwnFile();
            return true;
        case IDC_RUN:
            start();
            return true;
        case IDC_STOP:
            stop();
            return true;
        case IDC_ERRORS:
        case IDC_WARNINGS:
        case IDC_HINTS:
            filter();
            return true;
        case IDC_GROUPED:
            findings_.setGrouped(IsItemChecked(IDC_GROUPED));
            refresh();
            return true;
        case IDC_RULE:
            if (code == CBN_SELCHANGE) filter();
            return true;
        case IDC_FILTER:
            if (code == EN_CHANGE) filter();
            return true;
        case IDC_FOLLOW:
            if (IsItemChecked(IDC_FOLLOW) && stale_ && checked_) start(target_);
            return true;
        case IDC_GO_TO:
            goTo();
            return true;
        case IDC_MEND:
            mendSelected();
            return true;
        case IDC_MEND_ALL:
            mendKind();
            return true;
        case IDC_COPY:
            copy();
            return true;
        case IDC_FIND:
            listFound();
            return true;
        case IDC_SELECT_FOUND:
            selectFound();
            return true;
        case IDC_SAVE:
            save();
            return true;
        default:
            return CDialog::OnCommand(id, code, control);
    }
}

bool CheckWindow::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (id != IDC_FINDINGS) return false;
    switch (header.code) {
        case LVN_GETDISPINFOW: {
            LVITEMW& item = reinterpret_cast<NMLVDISPINFOW&>(header).item;
            if (!(item.mask & LVIF_TEXT) || item.cchTextMax < 1) return true;
            const auto row = static_cast<std::size_t>(item.iItem);
            const std::wstring text = row < findings_.rows()
                                          ? base::toWide(cell(findings_.at(row), item.iSubItem))
                                          : std::wstring();
            const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
            item.pszText[text.copy(item.pszText, room)] = 0;
            return true;
        }
        case LVN_COLUMNCLICK:
            sortBy(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem);
            return true;
        case LVN_ITEMCHANGED:
        case LVN_ODSTATECHANGED:
            if (isRefreshing_) return true;
            noteFocus();
            enableActions();
            return true;
        case LVN_KEYDOWN: {
            const WORD key = reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey;
            if (key == VK_LEFT || key == VK_RIGHT) fold(focusedRow(), key == VK_LEFT);
            return true;
        }
        case NM_DBLCLK:
            goTo();
            return true;
        case NM_CUSTOMDRAW:
            draw(reinterpret_cast<NMLVCUSTOMDRAW&>(header), result);
            return true;
        default:
            return false;
    }
}

// ---------------------------------------------------------------- the window

void CheckWindow::OnSize(UINT type, int, int) {
    Default();
    if (type != SIZE_MINIMIZED) layout();
}

void CheckWindow::OnMinMaxInfo(MINMAXINFO& info) {
    if (smallest_.cx != 0) info.ptMinTrackSize = {smallest_.cx, smallest_.cy};
}

// At first there is more room for the sentences than the template has, if the screen has it.
void CheckWindow::widen() {
    RECT work;
    ::SystemParametersInfoW(SPI_GETWORKAREA, 0, &work, 0);
    const RECT window = WindowRect();
    const int width = std::min(widthOf(window) + Scaled(220), widthOf(work)),
              height = heightOf(window);
    const int left = static_cast<int>(work.left) + (widthOf(work) - width) / 2;
    MoveTo({left, window.top, left + width, window.top + height});
    layout();
}

void CheckWindow::layout() {
    if (!controls_.place()) return;
    fitColumns();
    Invalidate();
}

}  // namespace checks
