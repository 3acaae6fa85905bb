#include "palettewindow.h"

#include "texts.h"

#include <base/text.h>
#include <base/utf16.h>
#include <fltkilnutil/indexedcolor.h>
#include <framework/cwaitcursor.h>
#include <framework/filedialog.h>
#include <framework/gdi.h>
#include <kiln/kiln.h>
#include <kiln/searchfolders.h>
#include <kiln/selection.h>
#include <quillon/fltlightpointpalettes.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltmaterial.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <utility>

using framework::CWaitCursor, framework::heightOf, framework::widthOf;

namespace palettes {

namespace {

constexpr UINT kThumbnailMade = WM_APP + 21;
constexpr int kColorColumns = 32, kIntensities = 1 << FltColorPalette::kIntensityBits;

constexpr TextId kTabs[kPaletteCount] = {
    TextId::kColors,       TextId::kMaterials,   TextId::kTextures,  TextId::kMappings,
    TextId::kLightSources, TextId::kAppearances, TextId::kAnimations};
constexpr TextId kColumns[] = {TextId::kColumnLook, TextId::kColumnIndex, TextId::kColumnName,
                               TextId::kColumnUsers, TextId::kColumnNote};
constexpr int kWidths[] = {44, 50, 0, 50, 150};  // at 100 %; 0 for what is left

/// Entries and fields share the width: three fifths and two.
constexpr double kEntries = 0.6, kFields = 1 - kEntries;
constexpr framework::Anchor kAnchors[] = {
    {IDC_TABS, 0, 1},
    {IDC_ENTRIES, 0, kEntries, false, true},
    {IDC_SWATCHES, 0, kEntries, false, true},
    {IDC_INTENSITY, 0, kEntries, true},
    {IDC_FIELDS, kEntries, kFields, false, true},
    {IDC_STATUS, 0, 1, true},
    {IDC_ADD, 0, 0, true},
    {IDC_COPY, 0, 0, true},
    {IDC_DELETE, 0, 0, true},
    {IDC_CHOOSE, 0, 0, true},
    {IDC_COMPACT, 0, 0, true},
    {IDC_IMPORT, 0, 0, true},
    {IDC_ASSIGN, 0, 0, true},
    {IDC_SELECT_USERS, 0, 0, true},
    {IDC_PICK, 0, 0, true},
    {IDC_LIGHTS_LABEL, 0, 0, true},
    {IDC_INDEX_LIGHTS, 0, 0, true},
    {IDC_INLINE_LIGHTS, 0, 0, true},
};

std::uint8_t byteOf(float share) {
    return static_cast<std::uint8_t>(
        std::lround(255 * std::clamp(share > 0 ? share : 0, 0.F, 1.F)));
}

std::uint32_t pixelOf(float red, float green, float blue) {
    return std::uint32_t{byteOf(red)} << 16 | std::uint32_t{byteOf(green)} << 8 | byteOf(blue);
}

/// A sphere of the material, lit from the upper left, on a checkered ground where it is clear.
std::vector<std::uint32_t> sphereOf(const FltMaterial& material) {
    constexpr int kSide = Thumbnail::kSide;
    std::vector<std::uint32_t> pixels(std::size_t{kSide} * kSide);
    const float light[3] = {-0.48F, -0.6F, 0.64F};
    for (int y = 0; y < kSide; ++y) {
        for (int x = 0; x < kSide; ++x) {
            const float u = (static_cast<float>(x) + 0.5F) * 2 / kSide - 1,
                        v = (static_cast<float>(y) + 0.5F) * 2 / kSide - 1;
            const bool isLight = (x / 4 + y / 4) % 2 == 0;
            const float ground = isLight ? 0.95F : 0.8F;
            float shown[3] = {ground, ground, ground};
            const float r = u * u + v * v;
            if (r < 0.92F) {
                const float z = std::sqrt(1 - r);
                const float towards = std::max(u * light[0] + v * light[1] + z * light[2], 0.F);
                const float mirrored = std::max(2 * towards * z - light[2], 0.F);
                const float gloss =
                    material.shininess > 0
                        ? std::pow(mirrored, std::clamp(material.shininess, 1.F, 128.F))
                        : 0.F;
                const float alpha = std::clamp(material.alpha > 0 ? material.alpha : 0, 0.F, 1.F);
                const auto mix = [&](std::size_t c, float ambient, float diffuse, float specular,
                                     float emissive) {
                    const float color =
                        emissive + 0.3F * ambient + towards * diffuse + gloss * specular;
                    shown[c] = alpha * std::min(color, 1.F) + (1 - alpha) * shown[c];
                };
                mix(0, material.ambient.red, material.diffuse.red, material.specular.red,
                    material.emissive.red);
                mix(1, material.ambient.green, material.diffuse.green, material.specular.green,
                    material.emissive.green);
                mix(2, material.ambient.blue, material.diffuse.blue, material.specular.blue,
                    material.emissive.blue);
            }
            pixels[static_cast<std::size_t>(y) * kSide + static_cast<std::size_t>(x)] =
                pixelOf(shown[0], shown[1], shown[2]);
        }
    }
    return pixels;
}

}  // namespace

PaletteWindow::PaletteWindow() : SceneWindow(kAnchors, IDC_STATUS) {}
PaletteWindow::~PaletteWindow() = default;

void PaletteWindow::open(Interface& host) {
    Swatches::RegisterWindowClass(kSwatchesClass);
    grid::CGridCtrl::RegisterGridClass();
    if (!create(IDD_PALETTES, host)) return;
    if (INode* const node = databaseOf(host.GetSelNode(0))) chosen_ = node->GetHandle();
    present(showsColors() ? swatches_.Handle() : list());
}

bool PaletteWindow::OnInitDialog() {
    constexpr DWORD kStyle = LVS_EX_FULLROWSELECT | LVS_EX_LABELTIP | LVS_EX_DOUBLEBUFFER;
    ::SendMessageW(list(), LVM_SETEXTENDEDLISTVIEWSTYLE, kStyle, kStyle);
    for (int i = 0; i < static_cast<int>(std::size(kColumns)); ++i) {
        LVCOLUMNW column{};
        column.mask = LVCF_SUBITEM | LVCF_WIDTH;
        column.iSubItem = i;
        column.cx = Scaled(kWidths[i]);
        ::SendMessageW(list(), LVM_INSERTCOLUMNW, static_cast<WPARAM>(i),
                       reinterpret_cast<LPARAM>(&column));
    }
    // Nothing to see: it makes the rows as high as the pictures need. It goes with the control.
    const HIMAGELIST height =
        ::ImageList_Create(1, Scaled(Thumbnail::kSide + 4), ILC_COLOR32, 0, 1);
    ::SendMessageW(list(), LVM_SETIMAGELIST, LVSIL_SMALL, reinterpret_cast<LPARAM>(height));
    swatches_.SubclassDlgItem(IDC_SWATCHES, Handle());
    intensity_.SubclassDlgItem(IDC_INTENSITY, Handle());
    fields_.SubclassDlgItem(IDC_FIELDS, Handle());
    intensity_.show(kIntensities, kIntensities);
    intensity_.choose(kIntensities - 1);
    swatches_.colorOf = [this](int i) -> COLORREF {
        if (!data() || !data()->hasColors()) return ::GetSysColor(COLOR_BTNFACE);
        return fltkilnutil::colorRefOf(data()->colors().entry(static_cast<std::size_t>(i)));
    };
    swatches_.isShown = [this](int i) {
        return static_cast<std::size_t>(i) < foundColors_.size() &&
               foundColors_[static_cast<std::size_t>(i)];
    };
    swatches_.isMarked = [this](int i) { return usage_.of(Palette::kColor, i) != 0; };
    swatches_.onChosen = [this] {
        showIntensities();
        showFields();
        showStatus();
    };
    swatches_.onActivated = [this] { choose(); };
    intensity_.colorOf = [this](int i) {
        if (!data() || !data()->hasColors()) return COLORREF{0};
        const auto& color = data()->colors().entry(static_cast<std::size_t>(swatches_.chosen()));
        return fltkilnutil::shadeOf(color, static_cast<std::uint32_t>(i));
    };
    intensity_.onChosen = [this] { showStatus(); };
    fields_.begin();
    fields_.choicesOf = [this](int row) {
        return pictureFields_[static_cast<std::size_t>(row) - shownFields_.size()].choices;
    };
    thumbnails_ = std::make_unique<Thumbnails>(Handle(), kThumbnailMade);
    for (std::size_t i = 0; i < kPaletteCount; ++i) {
        TCITEMW tab{};
        tab.mask = TCIF_TEXT;
        wchar_t empty[] = L"";
        tab.pszText = empty;
        ::SendMessageW(Item(IDC_TABS), TCM_INSERTITEMW, i, reinterpret_cast<LPARAM>(&tab));
    }
    SceneWindow::OnInitDialog();
    showPalette(palette_);
    return true;
}

void PaletteWindow::nameTexts() {
    for (std::size_t i = 0; i < std::size(kColumns); ++i) {
        std::wstring text = base::toWide(textOf(kColumns[i]));
        LVCOLUMNW column{};
        column.mask = LVCF_TEXT;
        column.pszText = text.data();
        ::SendMessageW(list(), LVM_SETCOLUMNW, i, reinterpret_cast<LPARAM>(&column));
    }
    for (std::size_t i = 0; i < kPaletteCount; ++i) {
        std::wstring text = base::toWide(textOf(kTabs[i]));
        TCITEMW tab{};
        tab.mask = TCIF_TEXT;
        tab.pszText = text.data();
        ::SendMessageW(Item(IDC_TABS), TCM_SETITEMW, i, reinterpret_cast<LPARAM>(&tab));
    }
    fields_.nameColumns(TextId::kColumnField);
}

void PaletteWindow::OnDestroy() {
    palette_ = Palette::kColor;
    sortColumn_ = -1;
    isDescending_ = false;
    chosen_ = 0;
    thumbnails_.reset();
    data_.reset();
    rows_.clear();
    SceneWindow::OnDestroy();
}

// ---------------------------------------------------------------- what is shown

// What was read refers to the node's bytes, which may have gone with a change of the scene.
const Database* PaletteWindow::data() const {
    return isRead() ? data_.get() : nullptr;
}

INode* PaletteWindow::database() const {
    return host().GetINodeByHandle(chosen_);
}

void PaletteWindow::listDatabases() {
    const HWND choice = Item(IDC_DATABASE);
    const std::vector<INode*> found = databasesIn(*host().GetRootNode());
    ::SendMessageW(choice, CB_RESETCONTENT, 0, 0);
    databases_.clear();
    std::size_t selected = 0;
    for (INode* const node : found) {
        if (node->GetHandle() == chosen_) selected = databases_.size();
        databases_.push_back(node->GetHandle());
        ::SendMessageW(choice, CB_ADDSTRING, 0,
                       reinterpret_cast<LPARAM>(base::toWide(node->GetName()).c_str()));
    }
    chosen_ = databases_.empty() ? 0 : databases_[selected];
    ::SendMessageW(choice, CB_SETCURSEL, selected, 0);
    EnableItem(IDC_DATABASE, databases_.size() > 1);
}

void PaletteWindow::read() {
    data_.reset();
    usage_ = {};
    INode* const node = database();
    if (node == nullptr) return;
    try {
        data_ = std::make_unique<Database>(*node);
        usage_ = usageOf(*node);
    } catch (const Refusal& refusal) {
        say(refusal.text());
    }
}

void PaletteWindow::readScene() {
    thumbnails_->setFolders(SearchFolders(host()));
    listDatabases();
    read();
    showPalette(palette_);
}

void PaletteWindow::showPalette(Palette palette) {
    palette_ = palette;
    ::SendMessageW(Item(IDC_TABS), TCM_SETCURSEL, static_cast<WPARAM>(palette), 0);
    const bool colors = showsColors();
    ::ShowWindow(list(), colors ? SW_HIDE : SW_SHOW);
    swatches_.Show(colors ? SW_SHOW : SW_HIDE);
    intensity_.Show(colors ? SW_SHOW : SW_HIDE);
    swatches_.show(data() ? static_cast<int>(data()->colorCount()) : 0, kColorColumns);
    showIntensities();
    filter();
}

// Those of the color that is chosen; some colors of older files have one alone.
void PaletteWindow::showIntensities() {
    const bool hasSome =
        !data() || !data()->hasColors() ||
        data()->colors().hasIntensities(static_cast<std::size_t>(swatches_.chosen()));
    const bool hadSome = intensity_.count() != 0;
    intensity_.show(hasSome ? kIntensities : 0, kIntensities);
    if (hasSome && !hadSome) intensity_.choose(kIntensities - 1);
}

std::int32_t PaletteWindow::chosenColor() const {
    return static_cast<std::int32_t>(
        data()->colors().indexOf(static_cast<std::uint32_t>(swatches_.chosen()),
                                 static_cast<std::uint32_t>(intensity_.chosen())));
}

// The entry that has the focus keeps it, where it is still shown.
void PaletteWindow::filter() {
    const Entry* const before = focused();
    const std::size_t place = before != nullptr ? before->place : SIZE_MAX;
    rows_.clear();
    filterColors();
    if (data() && !showsColors()) {
        const std::vector<Entry>& entries = data()->entries(palette_);
        const std::string wanted = base::smallLetters(ItemText(IDC_SEARCH));
        const bool onlyUnused = IsItemChecked(IDC_UNUSED);
        for (std::size_t i = 0; i < entries.size(); ++i) {
            const Entry& entry = entries[i];
            if (onlyUnused && usersOf(entry) != 0) continue;
            if (!wanted.empty() &&
                base::smallLetters(entry.name).find(wanted) == std::string::npos &&
                std::to_string(entry.index) != wanted)
                continue;
            rows_.push_back(static_cast<std::uint32_t>(i));
        }
        if (sortColumn_ >= 0) {
            const auto column = static_cast<Column>(sortColumn_);
            const auto isLess = [&](std::uint32_t a, std::uint32_t b) {
                const Entry &first = entries[a], &second = entries[b];
                switch (column) {
                    case Column::kName:
                        return base::smallLetters(first.name) < base::smallLetters(second.name);
                    case Column::kUsers:
                        return usersOf(first) < usersOf(second);
                    case Column::kNote:
                        return noteOf(first) < noteOf(second);
                    default:
                        return first.index < second.index;
                }
            };
            std::ranges::stable_sort(rows_, isLess);
            if (isDescending_) std::ranges::reverse(rows_);
        }
    }
    isRefreshing_ = true;
    ::SendMessageW(list(), LVM_SETITEMCOUNT, rows_.size(), LVSICF_NOSCROLL);
    isRefreshing_ = false;
    focus(place);
    ::InvalidateRect(list(), nullptr, TRUE);
    fitColumns();
    showFields();
    showStatus();
}

void PaletteWindow::filterColors() {
    foundColors_.clear();
    if (!data() || !showsColors()) return;
    const std::string wanted = base::smallLetters(ItemText(IDC_SEARCH));
    const bool onlyUnused = IsItemChecked(IDC_UNUSED);
    for (std::int32_t i = 0; i < static_cast<std::int32_t>(data()->colorCount()); ++i) {
        const bool isIt = wanted.empty() || std::to_string(i) == wanted ||
                          base::smallLetters(data()->colorName(i)).find(wanted) != wanted.npos;
        foundColors_.push_back(isIt && !(onlyUnused && usage_.of(Palette::kColor, i) != 0));
    }
    const auto first = std::ranges::find(foundColors_, true);
    if (first != foundColors_.end() && !swatches_.isShown(swatches_.chosen()))
        swatches_.choose(static_cast<int>(first - foundColors_.begin()));
    showIntensities();
    swatches_.Invalidate();
}

void PaletteWindow::focus(std::size_t place) {
    if (rows_.empty() || !data()) return;
    std::size_t row = 0;
    for (std::size_t i = 0; i < rows_.size(); ++i)
        if (data()->entries(palette_)[rows_[i]].place == place) row = i;
    isRefreshing_ = true;
    LVITEMW item{};
    item.stateMask = LVIS_FOCUSED | LVIS_SELECTED;
    ::SendMessageW(list(), LVM_SETITEMSTATE, static_cast<WPARAM>(-1),
                   reinterpret_cast<LPARAM>(&item));
    item.state = item.stateMask;
    ::SendMessageW(list(), LVM_SETITEMSTATE, row, reinterpret_cast<LPARAM>(&item));
    ::SendMessageW(list(), LVM_ENSUREVISIBLE, row, FALSE);
    isRefreshing_ = false;
}

void PaletteWindow::focusIndex(std::int32_t index) {
    const Entry* const entry = data() ? data()->find(palette_, index) : nullptr;
    if (entry == nullptr) return;
    focus(entry->place);
    showFields();
    showStatus();
}

const Entry* PaletteWindow::focused() const {
    if (!data() || showsColors()) return nullptr;
    const LRESULT row =
        ::SendMessageW(list(), LVM_GETNEXTITEM, static_cast<WPARAM>(-1), LVNI_FOCUSED);
    if (row < 0 || static_cast<std::size_t>(row) >= rows_.size()) return nullptr;
    const std::vector<Entry>& entries = data()->entries(palette_);
    const std::size_t i = rows_[static_cast<std::size_t>(row)];
    return i < entries.size() ? &entries[i] : nullptr;
}

std::int32_t PaletteWindow::focusedIndex() const {
    if (showsColors()) return data() && data()->hasColors() ? swatches_.chosen() : -1;
    const Entry* const entry = focused();
    return entry != nullptr && entry->counts() ? entry->index : -1;
}

LRESULT PaletteWindow::WindowProc(UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != kThumbnailMade) return SceneWindow::WindowProc(message, wParam, lParam);
    if (palette_ != Palette::kTexture) return 0;
    ::InvalidateRect(list(), nullptr, FALSE);
    const Entry* const entry = focused();
    if (entry != nullptr && !isEditing() && thumbnails_->of(entry->name).path != picture_)
        showFields();
    return 0;
}

// ---------------------------------------------------------------- fields

void PaletteWindow::showFields() {
    shownFields_.clear();
    if (showsColors() && data() && data()->hasColors()) {
        shownFields_.push_back({kColorField, textOfColor(colorAt(*data(), swatches_.chosen()))});
        if (!data()->hasOldColors())
            shownFields_.push_back({kNameField, data()->colorName(swatches_.chosen())});
    } else if (const Entry* const entry = focused()) {
        if (const auto record = readEntry(*entry, data()->revision()))
            shownFields_ = fieldsOf(*record);
    }
    std::vector<FieldRow> rows;
    for (const Field& field : shownFields_) {
        const bool isFixed = field.name == "index" || field.name == "paletteIndex";
        rows.push_back({field.name,
                        field.value,
                        {},
                        {},
                        false,
                        isFixed ? grid::EditorKind::kNone : grid::EditorKind::kEdit});
    }
    pictureFields_.clear();
    picture_.clear();
    const Entry* const entry = palette_ == Palette::kTexture ? focused() : nullptr;
    if (entry != nullptr) {
        const Thumbnail found = thumbnails_->of(entry->name);
        picture_ = found.path;
        sides_ = {found.width, found.height};
    }
    if (!picture_.empty()) pictureFields_ = pictureFields(picture_);
    for (const PictureField& field : pictureFields_)
        rows.push_back(
            {".attr " + field.name, field.value, {}, {}, false, grid::EditorKind::kList});
    fields_.show(std::move(rows));
}

bool PaletteWindow::setValue(const std::string& field, const std::string& value) {
    return attempt([&](INode& node) {
        if (!showsColors()) {
            if (const Entry* const entry = focused())
                setField(node, palette_, *entry, field, value);
            return;
        }
        setColorField(node, swatches_.chosen(), field, value);
    });
}

bool PaletteWindow::setOfPicture(const std::string& field, const std::string& value) {
    const std::string picture = picture_;
    const bool isSet = attempt([&](INode&) { setPictureField(picture, sides_, field, value); });
    if (isSet) say(textOf(TextId::kAttributesWritten, {picture}));
    return isSet;
}

// ---------------------------------------------------------------- the list

std::uint32_t PaletteWindow::usersOf(const Entry& entry) const {
    return entry.counts() ? usage_.of(palette_, entry.index) : 0;
}

std::string PaletteWindow::noteOf(const Entry& entry) {
    std::string note;
    const auto add = [&](const std::string& text) { note += (note.empty() ? "" : ", ") + text; };
    if (entry.isDoubled) add(textOf(TextId::kDoubled));
    if (entry.isBeyond) add(textOf(TextId::kBeyond));
    if (entry.isCut) add(textOf(TextId::kCut));
    if (!entry.isText) add(textOf(TextId::kNoText));
    if (palette_ != Palette::kTexture) return note;
    const Thumbnail picture = thumbnails_->of(entry.name);
    switch (picture.state) {
        case Thumbnail::State::kMissing:
            add(textOf(TextId::kNotFound));
            break;
        case Thumbnail::State::kUnreadable:
            add(textOf(TextId::kNoPicture));
            break;
        case Thumbnail::State::kReady:
            add(textOf(TextId::kFound, {std::to_string(picture.width),
                                        std::to_string(picture.height), picture.path}));
            break;
        default:
            break;
    }
    return note;
}

std::string PaletteWindow::cell(const Entry& entry, Column column) {
    switch (column) {
        case Column::kIndex:
            return entry.hasIndex ? std::to_string(entry.index) : "-";
        case Column::kName:
            return entry.name;
        case Column::kUsers:
            return std::to_string(usersOf(entry));
        case Column::kNote:
            return noteOf(entry);
        default:
            return {};
    }
}

void PaletteWindow::drawLook(HDC dc, const RECT& area, const Entry& entry) {
    std::vector<std::uint32_t> pixels;
    COLORREF color = CLR_INVALID;
    const auto record = readEntry(entry, data()->revision());
    if (palette_ == Palette::kTexture) {
        pixels = thumbnails_->of(entry.name).pixels;
    } else if (record != nullptr && palette_ == Palette::kMaterial) {
        pixels = sphereOf(static_cast<const FltMaterial&>(*record));
    } else if (record != nullptr && palette_ == Palette::kLightSource) {
        const auto& light = static_cast<const FltLightSourcePalette&>(*record);
        color =
            RGB(byteOf(light.diffuseRed), byteOf(light.diffuseGreen), byteOf(light.diffuseBlue));
    } else if (record != nullptr && palette_ == Palette::kAppearance) {
        const std::uint32_t back = static_cast<const FltLightPointAppearance&>(*record).backColor;
        color = RGB(back & 0xFF, back >> 8 & 0xFF, back >> 16 & 0xFF);
    }
    const int side = Scaled(Thumbnail::kSide);
    const int left = static_cast<int>(area.left) + (widthOf(area) - side) / 2,
              top = static_cast<int>(area.top) + (heightOf(area) - side) / 2;
    if (!pixels.empty()) {
        const BITMAPINFO format = framework::pixelFormat(Thumbnail::kSide, Thumbnail::kSide);
        ::SetStretchBltMode(dc, COLORONCOLOR);
        ::StretchDIBits(dc, left, top, side, side, 0, 0, Thumbnail::kSide, Thumbnail::kSide,
                        pixels.data(), &format, DIB_RGB_COLORS, SRCCOPY);
    } else if (color != CLR_INVALID) {
        const RECT place{left, top, left + side, top + side};
        const framework::GdiBrush brush(::CreateSolidBrush(color));
        ::FillRect(dc, &place, brush.get());
        ::FrameRect(dc, &place, static_cast<HBRUSH>(::GetStockObject(GRAY_BRUSH)));
    }
}

void PaletteWindow::draw(NMLVCUSTOMDRAW& drawn, LRESULT& result) {
    result = CDRF_DODEFAULT;
    if (drawn.nmcd.dwDrawStage == CDDS_PREPAINT) result = CDRF_NOTIFYITEMDRAW;
    if (drawn.nmcd.dwDrawStage == CDDS_ITEMPREPAINT) result = CDRF_NOTIFYPOSTPAINT;
    if (drawn.nmcd.dwDrawStage != CDDS_ITEMPOSTPAINT || !data()) return;
    const auto row = static_cast<std::size_t>(drawn.nmcd.dwItemSpec);
    if (row >= rows_.size()) return;
    RECT area{LVIR_BOUNDS, 0, 0, 0};
    ::SendMessageW(list(), LVM_GETITEMRECT, row, reinterpret_cast<LPARAM>(&area));
    area.right = area.left + static_cast<int>(::SendMessageW(list(), LVM_GETCOLUMNWIDTH, 0, 0));
    drawLook(drawn.nmcd.hdc, area, data()->entries(palette_)[rows_[row]]);
}

void PaletteWindow::sortBy(int column) {
    isDescending_ = sortColumn_ == column && !isDescending_;
    sortColumn_ = column;
    filter();
}

void PaletteWindow::fitColumns() {
    RECT area;
    ::GetClientRect(list(), &area);
    int left = widthOf(area);
    for (const int width : kWidths) left -= Scaled(width);
    for (std::size_t i = 0; i < std::size(kWidths); ++i)
        if (kWidths[i] == 0)
            ::SendMessageW(list(), LVM_SETCOLUMNWIDTH, i, std::max(left, Scaled(70)));
}

// ---------------------------------------------------------------- the status

void PaletteWindow::showStatus() {
    enableActions();
    if (!data()) {
        if (database() == nullptr) say(textOf(TextId::kNoDatabase));
        return;
    }
    std::string text;
    if (showsColors() && !data()->hasColors() && !data()->colorRecord().empty())
        return say(textOf(TextId::kOtherColors));
    if (showsColors() && data()->hasColors()) {
        const int entry = swatches_.chosen();
        const std::string number = std::to_string(entry), index = std::to_string(chosenColor()),
                          users = std::to_string(usage_.of(Palette::kColor, entry));
        text = data()->colors().hasIntensities(static_cast<std::size_t>(entry))
                   ? textOf(TextId::kColorShown,
                            {number, std::to_string(intensity_.chosen()), index, users})
                   : textOf(TextId::kFixedColorShown, {number, index, users});
    } else {
        const std::size_t all = showsColors() ? 0 : data()->entries(palette_).size();
        text = textOf(TextId::kShown, {std::to_string(all), std::to_string(rows_.size())});
    }
    say(usage_.unseen[palette_] ? textOf(TextId::kMayBeUsed, {text}) : text);
}

void PaletteWindow::enableActions() {
    const bool isThere = data() != nullptr, colors = showsColors();
    const bool isEntry = focused() != nullptr, counts = focusedIndex() >= 0;
    const HWND focus = ::GetFocus();
    const std::pair<int, bool> wanted[] = {
        {IDC_ADD, isThere && !colors},
        {IDC_COPY, isEntry},
        {IDC_DELETE, isEntry},
        {IDC_CHOOSE, (colors && counts) || (isEntry && palette_ == Palette::kTexture)},
        {IDC_COMPACT, isThere && !colors},
        {IDC_IMPORT, isThere},
        {IDC_SELECT_USERS, counts},
        {IDC_ASSIGN, counts},
        {IDC_PICK, isThere},
        {IDC_INDEX_LIGHTS, isThere},
        {IDC_INLINE_LIGHTS, isThere}};
    for (const auto& [id, enabled] : wanted) {
        if (!enabled && focus == Item(id)) ::SetFocus(colors ? swatches_.Handle() : list());
        EnableItem(id, enabled);
    }
}

// ---------------------------------------------------------------- edits

bool PaletteWindow::attempt(const std::function<void(INode&)>& edit) {
    return SceneWindow::attempt([&] {
        INode* const node = database();
        if (node == nullptr) throw Refusal(CoreText::kNoDatabase);
        edit(*node);
    });
}

void PaletteWindow::add() {
    std::int32_t index = -1;
    if (attempt([&](INode& node) { index = addEntry(node, palette_, textOf(TextId::kNewName)); }))
        focusIndex(index);
}

void PaletteWindow::copy() {
    if (focused() == nullptr) return;
    std::int32_t index = -1;
    if (attempt([&](INode& node) { index = copyEntry(node, palette_, *focused()); }))
        focusIndex(index);
}

void PaletteWindow::remove() {
    const Entry* const entry = focused();
    if (entry == nullptr) return;
    const std::size_t place = entry->place;
    const std::int32_t index = entry->index;
    if (usersOf(*entry) != 0) {
        constexpr std::size_t kNamed = 12;
        const std::vector<INode*> users = palettes::usersOf(*database(), palette_, entry->index);
        std::string names;
        for (std::size_t i = 0; i < users.size() && i < kNamed; ++i)
            names += (i == 0 ? "" : ", ") + std::string(users[i]->GetName());
        if (users.size() > kNamed) names += " ...";
        const std::string question =
            textOf(TextId::kAskDelete, {std::to_string(users.size()), names});
        if (ShowMessage(question, MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES) return;
    }
    // The scene may have changed while the user was asked.
    const Entry* const still = focused();
    if (still == nullptr || still->place != place || still->index != index) return;
    attempt([&](INode& node) { deleteEntry(node, palette_, *still); });
}

// Another color, or another picture.
void PaletteWindow::choose() {
    if (showsColors()) {
        if (focusedIndex() < 0) return;
        const auto color = askColor(colorAt(*data(), swatches_.chosen()));
        if (color) attempt([&](INode& node) { setColor(node, swatches_.chosen(), *color); });
        return;
    }
    const Entry* const entry = focused();
    if (entry == nullptr || palette_ != Palette::kTexture) return;
    const std::size_t place = entry->place;
    const auto file = framework::askOpenFile(
        Handle(), textOf(TextId::kPictureTitle),
        {{textOf(TextId::kPictures),
          "*.rgb;*.rgba;*.sgi;*.int;*.inta;*.bw;*.png;*.jpg;*.jpeg;*.tga;*.bmp;*.gif;*.dds"},
         {textOf(TextId::kAllFiles), "*.*"}},
        host().GetDir(KILN_IMPORT_DIR));
    if (!file) return;
    focus(place);
    setValue("fileName", *file);
}

void PaletteWindow::compactAll() {
    std::size_t changed = 0;
    if (attempt([&](INode& node) { changed = compact(node, palette_); }))
        say(textOf(TextId::kCompacted, {std::to_string(changed)}));
}

void PaletteWindow::importFile() {
    const auto file = framework::askOpenFile(
        Handle(), textOf(TextId::kImportTitle),
        {{textOf(TextId::kOpenFlight), "*.flt"}, {textOf(TextId::kAllFiles), "*.*"}},
        host().GetDir(KILN_IMPORT_DIR));
    if (!file) return;
    std::size_t added = 0;
    if (attempt([&](INode& node) { added = importEntries(node, palette_, *file); }))
        say(textOf(TextId::kImported, {std::to_string(added)}));
}

// ---------------------------------------------------------------- users

void PaletteWindow::selectUsers() {
    const CWaitCursor wait;
    const std::vector<INode*> users = palettes::usersOf(*database(), palette_, focusedIndex());
    if (users.empty()) {
        ::MessageBeep(MB_OK);
        return say(textOf(TextId::kNobody));
    }
    host().ClearNodeSelection();
    for (INode* const node : users) host().SelectNode(node, false);
    host().ZoomToSelection();
    say(textOf(TextId::kUsersSelected, {std::to_string(users.size())}));
}

void PaletteWindow::assignToSelection() {
    const std::vector<INode*> nodes = SelectedNodes(host());
    if (nodes.empty()) {
        ::MessageBeep(MB_OK);
        return say(textOf(TextId::kNothingSelected));
    }
    const std::int32_t index =
        showsColors() && focusedIndex() >= 0 ? chosenColor() : focusedIndex();
    std::size_t count = 0;
    if (attempt([&](INode& node) { count = assign(node, nodes, palette_, index); }))
        say(textOf(TextId::kAssigned, {std::to_string(count)}));
}

// Of what is selected, and of what hangs below it, the first node that uses the palette counts.
void PaletteWindow::pick() {
    const CWaitCursor wait;
    std::int32_t index = -1;
    for (int i = 0; index < 0 && i < host().GetSelNodeCount(); ++i) {
        INode* const top = host().GetSelNode(i);
        if (databaseOf(top) != database()) continue;
        ForEachInSubtree(top, [&](INode& node) {
            index = indexUsedBy(node, palette_);
            return index < 0 ? WalkStep::kOn : WalkStep::kEnd;
        });
    }
    if (index < 0) {
        ::MessageBeep(MB_OK);
        return say(textOf(TextId::kNothingUsed));
    }
    if (!showsColors()) {
        SetItemText(IDC_SEARCH, "");
        CheckItem(IDC_UNUSED, false);
        filter();
        return focusIndex(index);
    }
    const auto entry = data()->colors().entryOf(static_cast<std::uint32_t>(index));
    if (!entry) return;
    swatches_.choose(static_cast<int>(*entry));
    showIntensities();
    intensity_.choose(index % kIntensities);
    showFields();
    showStatus();
}

void PaletteWindow::convertLights(ConvertedLightPoints (*convert)(std::span<INode* const>)) {
    const std::vector<INode*> nodes = SelectedNodes(host());
    if (nodes.empty()) {
        ::MessageBeep(MB_OK);
        return say(textOf(TextId::kNothingSelected));
    }
    ConvertedLightPoints converted;
    if (!attempt([&](INode&) { converted = convert(nodes); })) return;
    const std::string done = std::to_string(converted.done);
    say(converted.passedOver == 0
            ? textOf(TextId::kLightsConverted, {done})
            : textOf(TextId::kLightsPassedOver, {done, std::to_string(converted.passedOver)}));
}

// ---------------------------------------------------------------- commands

// Ctrl+Tab goes through the palettes wherever the focus is.
bool PaletteWindow::PreTranslateMessage(MSG& message) {
    const bool isControl = ::GetKeyState(VK_CONTROL) < 0, isShift = ::GetKeyState(VK_SHIFT) < 0;
    if (message.message != WM_KEYDOWN || message.wParam != VK_TAB || !isControl) return false;
    const auto step = isShift ? kPaletteCount - 1 : 1;
    showPalette(static_cast<Palette>((static_cast<std::size_t>(palette_) + step) % kPaletteCount));
    if (::GetFocus() == nullptr || !::IsWindowVisible(::GetFocus()))
        ::SetFocus(showsColors() ? swatches_.Handle() : list());
    return true;
}

// Enter in the list goes to the entry's fields.
void PaletteWindow::OnOK() {
    if (::GetFocus() != list() || fields_.RowCount() < 2) return;
    fields_.SetFocus();
    fields_.SetFocusCell({1, 1});
}

bool PaletteWindow::OnCommand(int id, UINT code, HWND control) {
    switch (id) {
        case IDC_DATABASE: {
            if (code != CBN_SELCHANGE) return true;
            const LRESULT chosen = ::SendMessageW(Item(IDC_DATABASE), CB_GETCURSEL, 0, 0);
            if (chosen >= 0) chosen_ = databases_[static_cast<std::size_t>(chosen)];
            refresh();
            return true;
        }
        case IDC_SEARCH:
            if (code == EN_CHANGE && data()) filter();
            return true;
        case IDC_UNUSED:
            filter();
            return true;
        case IDC_ADD:
            add();
            return true;
        case IDC_COPY:
            copy();
            return true;
        case IDC_DELETE:
            remove();
            return true;
        case IDC_CHOOSE:
            choose();
            return true;
        case IDC_COMPACT:
            compactAll();
            return true;
        case IDC_IMPORT:
            importFile();
            return true;
        case IDC_SELECT_USERS:
            selectUsers();
            return true;
        case IDC_ASSIGN:
            assignToSelection();
            return true;
        case IDC_PICK:
            pick();
            return true;
        case IDC_INDEX_LIGHTS:
            convertLights(indexLightPoints);
            return true;
        case IDC_INLINE_LIGHTS:
            convertLights(inlineLightPoints);
            return true;
        default:
            return SceneWindow::OnCommand(id, code, control);
    }
}

bool PaletteWindow::OnNotify(int id, NMHDR& header, LRESULT& result) {
    if (id == IDC_TABS && header.code == TCN_SELCHANGE) {
        showPalette(static_cast<Palette>(::SendMessageW(Item(IDC_TABS), TCM_GETCURSEL, 0, 0)));
        return true;
    }
    if (id == IDC_FIELDS && header.code == LVN_ENDLABELEDITW) {
        const auto row = static_cast<std::size_t>(grid::CGridCtrl::EditedCell(header).row) - 1;
        const std::string value = grid::CGridCtrl::EditedText(header);
        bool isSet = false;
        if (row < shownFields_.size()) {
            const Field field = shownFields_[row];
            isSet = value == field.value || setValue(field.name, value);
        } else if (row - shownFields_.size() < pictureFields_.size()) {
            const PictureField field = pictureFields_[row - shownFields_.size()];
            isSet = value == field.value || setOfPicture(field.name, value);
        }
        result = isSet ? 0 : -1;
        return true;
    }
    if (id != IDC_ENTRIES) return false;
    switch (header.code) {
        case LVN_GETDISPINFOW: {
            LVITEMW& item = reinterpret_cast<NMLVDISPINFOW&>(header).item;
            if (!(item.mask & LVIF_TEXT) || item.cchTextMax < 1) return true;
            const auto row = static_cast<std::size_t>(item.iItem);
            std::wstring text;
            if (data() && row < rows_.size())
                text = base::toWide(cell(data()->entries(palette_)[rows_[row]],
                                         static_cast<Column>(item.iSubItem)));
            const auto room = static_cast<std::size_t>(item.cchTextMax) - 1;
            item.pszText[text.copy(item.pszText, room)] = 0;
            return true;
        }
        case LVN_COLUMNCLICK:
            sortBy(reinterpret_cast<const NMLISTVIEW&>(header).iSubItem);
            return true;
        case LVN_ITEMCHANGED:
            if (isRefreshing_) return true;
            showFields();
            showStatus();
            return true;
        case LVN_KEYDOWN:
            if (reinterpret_cast<const NMLVKEYDOWN&>(header).wVKey == VK_DELETE) remove();
            return true;
        case NM_DBLCLK:
            selectUsers();
            return true;
        case NM_CUSTOMDRAW:
            draw(reinterpret_cast<NMLVCUSTOMDRAW&>(header), result);
            return true;
        default:
            return false;
    }
}

void PaletteWindow::arranged() {
    fitColumns();
    fields_.ExpandColumnsToFit();
}

}  // namespace palettes
