#include "lookwindow.h"

#include "resource.h"
#include "texts.h"

#include <fltkilnutil/attrtext.h>
#include <kiln/kiln.h>
#include <kiln/selection.h>

#include <algorithm>
#include <utility>

namespace palettes {

namespace {

constexpr framework::Anchor kAnchors[] = {
    {IDC_LOOK_ROWS, 0, 1, false, true},
    {IDC_LOOK_STATUS, 0, 1, true},
    {IDC_LOOK_CHOOSE, 1, 0, true},
};

/// Between the index of an entry and its name.
constexpr std::string_view kBehindIndex = ": ";

std::string textOfEntry(std::int32_t index, const std::string& name) {
    return std::to_string(index).append(kBehindIndex).append(name);
}

COLORREF colorRefOf(Rgb color) {
    return RGB(color.red, color.green, color.blue);
}

/// The color that a row's value is, if it is one.
std::optional<Rgb> colorOf(const LookRow& row, const Database* database) {
    if (row.isMixed) return std::nullopt;
    if (row.keys.size() != 1) return colorIn(row.value);
    if (row.part != LookPart::kEntry || database == nullptr || !database->hasColors())
        return std::nullopt;
    const std::int32_t entry = fltParseInteger(row.value);
    if (entry < 0 || static_cast<std::size_t>(entry) >= database->colors().colors.size())
        return std::nullopt;
    return colorAt(*database, entry);
}

}  // namespace

LookWindow::LookWindow() : SceneWindow(kAnchors, IDC_LOOK_STATUS) {}
LookWindow::~LookWindow() = default;

void LookWindow::open(Interface& host) {
    FieldGrid::RegisterGridClass();
    if (create(IDD_LOOK, host)) present(grid_.Handle());
}

bool LookWindow::OnInitDialog() {
    grid_.SubclassDlgItem(IDC_LOOK_ROWS, Handle());
    grid_.begin();
    grid_.choicesOf = [this](int row) { return choicesOf(rows_[static_cast<std::size_t>(row)]); };
    grid_.onSwatch = [this] { choose(); };
    grid_.onFocus = [this] { enableActions(); };
    CheckItem(IDC_LOOK_BELOW, true);
    RegisterNotification(selectionChanged, this, NOTIFY_SELECTION_CHANGED);
    return SceneWindow::OnInitDialog();
}

void LookWindow::OnDestroy() {
    UnRegisterNotification(selectionChanged, this, NOTIFY_SELECTION_CHANGED);
    rows_.clear();
    nodes_.clear();
    SceneWindow::OnDestroy();
}

void LookWindow::selectionChanged(void* window, NotifyInfo*) {
    static_cast<LookWindow*>(window)->refreshLater();
}

void LookWindow::nameTexts() {
    grid_.nameColumns(TextId::kLookTitle);
}

void LookWindow::arranged() {
    grid_.ExpandColumnsToFit();
}

// ---------------------------------------------------------------- what is shown

std::vector<INode*> LookWindow::nodes() const {
    std::vector<INode*> found;
    for (const DWORD handle : nodes_)
        if (INode* const node = host().GetINodeByHandle(handle)) found.push_back(node);
    return found;
}

/// That of all nodes; none where there are several, whose entries are not the same.
std::unique_ptr<Database> LookWindow::database() const {
    INode* common = nullptr;
    for (INode* const node : nodes()) {
        INode* const its = databaseOf(node);
        if (its == nullptr || (common != nullptr && its != common)) return nullptr;
        common = its;
    }
    if (common == nullptr) return nullptr;
    try {
        return std::make_unique<Database>(*common);
    } catch (const Refusal&) {
        return nullptr;  // what cannot be read has no entries
    }
}

FieldRow LookWindow::shownRow(const Look& look, const Database* database, Row& row) const {
    const LookRow& its = row.look;
    FieldRow shown;
    shown.caption = its.caption;
    shown.isMixed = its.isMixed;
    if (const auto color = colorOf(its, database)) shown.swatch = colorRefOf(*color);
    if (database != nullptr && !its.keys.empty()) shown.note = look.meaning(*database, its);
    if (!its.isMixed) shown.value = its.value;
    row.isOfPalette = database != nullptr && its.palette && *its.palette != Palette::kColor;
    const std::int32_t index = fltParseInteger(its.value);
    const Entry* const entry =
        row.isOfPalette && !its.isMixed ? database->find(*its.palette, index) : nullptr;
    if (entry != nullptr && entry->counts()) {
        shown.value = textOfEntry(index, entry->name);
        shown.note.clear();
    } else if (row.isOfPalette && !its.isMixed && index == -1) {
        shown.value = textOfEntry(index, textOf(TextId::kNoEntry));
    }
    const bool hasList = row.isOfPalette || !its.choices.empty();
    if (its.canSet) shown.editor = hasList ? grid::EditorKind::kList : grid::EditorKind::kEdit;
    row.shown = shown.value;
    return shown;
}

void LookWindow::readScene() {
    const std::vector<INode*> selected = SelectedNodes(host());
    const std::vector<INode*> found = lookNodes(selected, IsItemChecked(IDC_LOOK_BELOW));
    nodes_.clear();
    for (INode* const node : found) nodes_.push_back(node->GetHandle());
    const Look look(found);
    const std::unique_ptr<Database> database = this->database();
    rows_.clear();
    for (const bool isAlternate : {false, true}) {
        if (database == nullptr || look.surfaces() == 0) break;
        const LookColor color = look.color(*database, isAlternate);
        LookRow& row = rows_.emplace_back().look;
        row.caption = textOf(isAlternate ? TextId::kAlternateColor : TextId::kColor);
        row.isAlternate = isAlternate;
        row.isMixed = color.isMixed;
        row.canSet = true;
        if (color.color) row.value = textOfColor(*color.color);
    }
    for (const LookRow& row : look.rows()) rows_.push_back({row, {}, false});
    std::vector<FieldRow> shown;
    for (Row& row : rows_) shown.push_back(shownRow(look, database.get(), row));
    grid_.show(std::move(shown));
    enableActions();
    if (selected.empty()) return say(textOf(TextId::kNothingSelected));
    const std::string counts = textOf(
        TextId::kNodesShown, {std::to_string(found.size()), std::to_string(look.surfaces())});
    say(database != nullptr ? counts : textOf(TextId::kNoNames, {counts}));
}

std::vector<std::string> LookWindow::choicesOf(const Row& row) const {
    if (!row.isOfPalette) return row.look.choices;
    std::vector<std::string> choices{textOfEntry(-1, textOf(TextId::kNoEntry))};
    const std::unique_ptr<Database> its = database();
    if (its == nullptr) return choices;
    std::vector<const Entry*> entries;
    for (const Entry& entry : its->entries(*row.look.palette))
        if (entry.counts()) entries.push_back(&entry);
    std::ranges::sort(entries, {}, &Entry::index);
    for (const Entry* const entry : entries)
        choices.push_back(textOfEntry(entry->index, entry->name));
    return choices;
}

const LookWindow::Row* LookWindow::focused() const noexcept {
    const auto row = static_cast<std::size_t>(grid_.focusedRow());
    return row < rows_.size() ? &rows_[row] : nullptr;
}

void LookWindow::enableActions() {
    const Row* const row = focused();
    const bool canChoose = row != nullptr && row->look.canSet &&
                           (row->isColor() || row->isOfPalette || !row->look.choices.empty());
    if (!canChoose && ::GetFocus() == Item(IDC_LOOK_CHOOSE)) grid_.SetFocus();
    EnableItem(IDC_LOOK_CHOOSE, canChoose);
}

// ---------------------------------------------------------------- edits

bool LookWindow::setValue(const Row& row, const std::string& value) {
    std::size_t count = 0;
    const bool isSet = attempt([&, row] {
        if (!row.look.keys.empty()) {
            const std::string_view text = value;
            count = setLook(nodes(), row.look,
                            row.isOfPalette ? text.substr(0, text.find(kBehindIndex)) : text);
            return;
        }
        const auto color = colorIn(value);
        if (!color) throw Refusal(CoreText::kBadValue, {row.look.caption, value});
        count = setLookColor(nodes(), row.look.isAlternate, *color);
    });
    if (isSet) say(textOf(TextId::kLookSet, {std::to_string(count)}));
    return isSet;
}

// Another color, or one of the list.
void LookWindow::choose() {
    if (focused() == nullptr) return;
    const Row row = *focused();
    if (!row.isColor()) {
        grid_.SetFocus();
        return grid_.edit(grid_.focusedRow());
    }
    const auto color = askColor(colorIn(row.look.value).value_or(Rgb{255, 255, 255}));
    if (color) setValue(row, textOfColor(*color));
}

// ---------------------------------------------------------------- commands

void LookWindow::OnOK() {
    if (grid_.HasFocus()) grid_.edit(grid_.focusedRow());
}

bool LookWindow::OnCommand(int id, UINT code, HWND control) {
    switch (id) {
        case IDC_LOOK_BELOW:
            refresh();
            return true;
        case IDC_LOOK_CHOOSE:
            choose();
            return true;
        default:
            return SceneWindow::OnCommand(id, code, control);
    }
}

bool LookWindow::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (id != IDC_LOOK_ROWS || header.code != LVN_ENDLABELEDITW) return false;
    const auto place = static_cast<std::size_t>(grid::CGridCtrl::EditedCell(header).row) - 1;
    if (place >= rows_.size()) return false;
    const Row row = rows_[place];
    const std::string value = grid::CGridCtrl::EditedText(header);
    result = value == row.shown || setValue(row, value) ? 0 : -1;
    return true;
}

}  // namespace palettes
