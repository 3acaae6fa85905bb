#include <palettes/palettefunctions.h>

#include <palettes/edits.h>
#include <palettes/lightpoints.h>
#include <palettes/references.h>

#include "classes.h"

#include <kiln/fptable.h>
#include <kiln/kiln.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace palettes {

namespace {

constexpr Interface_ID kPalettesId(0x51D8A2C4, 0x7B30E61E);

std::string textOf(const FPValue& value) {
    return value.s != nullptr ? value.s : "";
}

void loadText(FPValue& result, const std::string& text) {
    result.SetOwnedString(KILN_strdup(text.c_str()));
}

Palette paletteIn(const FPValue& value) {
    const std::string name = textOf(value);
    const auto palette = paletteOf(name);
    if (!palette) throw std::runtime_error("there is no palette \"" + name + "\"");
    return *palette;
}

INode& databaseNode(const FPValue& value) {
    INode* const database = databaseOf(value.n);
    if (database == nullptr) throw Refusal(CoreText::kNoDatabase);
    return *database;
}

/// The palettes that were read last, as long as their bytes are the same: scripts ask for one value
/// at a time.
const Database& databaseIn(const FPValue& value) {
    struct Last {
        const INode* node;
        std::vector<std::uint8_t> bytes;
        Database database;
        const std::uint8_t* place;
    };
    static std::unique_ptr<Last> last;
    INode& node = databaseNode(value);
    const fltkilnutil::FileBytes now =
        fltkilnutil::sourceChunk(node, fltkilnutil::SourceChunk::records);
    if (last == nullptr || last->node != &node || last->place != now.data() ||
        !std::ranges::equal(last->bytes, now)) {
        last.reset();
        last.reset(new Last{&node, {now.begin(), now.end()}, Database(node), now.data()});
    }
    return last->database;
}

const Entry& entryIn(const Database& database, Palette palette, const FPValue& index) {
    const Entry* const entry = database.find(palette, index.i);
    if (entry == nullptr) throw Refusal(CoreText::kNoEntry, {std::to_string(index.i)});
    return *entry;
}

int countOf(std::size_t number) {
    return static_cast<int>(std::min<std::size_t>(number, 0x7FFFFFFF));
}

std::uint8_t componentOf(const FPValue& value) {
    if (value.i < 0 || value.i > 0xFF)
        throw Refusal(CoreText::kNoValue, {kColorField, std::to_string(value.i)});
    return static_cast<std::uint8_t>(value.i);
}

// ---------------------------------------------------------------- the functions

void count(const FPParams& params, FPValue& result) {
    const Database& database = databaseIn(params[0]);
    const Palette palette = paletteIn(params[1]);
    result.SetInt(countOf(palette == Palette::kColor ? database.colorCount()
                                                     : database.entries(palette).size()));
}

void index(const FPParams& params, FPValue& result) {
    const Database& database = databaseIn(params[0]);
    const Palette palette = paletteIn(params[1]);
    const std::size_t all =
        palette == Palette::kColor ? database.colorCount() : database.entries(palette).size();
    if (params[2].i < 1 || static_cast<std::size_t>(params[2].i) > all)
        throw Refusal(CoreText::kNoEntry, {std::to_string(params[2].i)});
    const auto place = static_cast<std::size_t>(params[2].i) - 1;
    result.SetInt(palette == Palette::kColor ? params[2].i - 1
                                             : database.entries(palette)[place].index);
}

void entry(const FPParams& params, FPValue& result) {
    const Database& database = databaseIn(params[0]);
    const Palette palette = paletteIn(params[1]);
    const std::string wanted = textOf(params[3]);
    if (palette == Palette::kColor) {
        const Rgb color = colorAt(database, params[2].i);
        if (wanted == kColorField) return loadText(result, textOfColor(color));
        if (wanted == kNameField) return loadText(result, database.colorName(params[2].i));
        throw Refusal(CoreText::kNoField, {wanted});
    }
    const auto record = readEntry(entryIn(database, palette, params[2]), database.revision());
    if (record == nullptr) throw Refusal(CoreText::kRefusedRecord);
    for (const Field& field : fieldsOf(*record))
        if (field.name == wanted) return loadText(result, field.value);
    throw Refusal(CoreText::kNoField, {wanted});
}

void fields(const FPParams& params, FPValue& result) {
    const Palette palette = paletteIn(params[0]);
    if (palette == Palette::kColor) {
        const std::string names[] = {kColorField, kNameField};
        return result.SetStrings(names);
    }
    std::vector<std::string> names;
    withClass(palette, [&](auto its) {
        for (Field& field : fieldsOf(typename decltype(its)::Record()))
            names.push_back(std::move(field.name));
    });
    result.SetStrings(names);
}

void add(const FPParams& params, FPValue& result) {
    result.SetInt(addEntry(databaseNode(params[0]), paletteIn(params[1]), textOf(params[2])));
}

void copy(const FPParams& params, FPValue& result) {
    INode& node = databaseNode(params[0]);
    const Palette palette = paletteIn(params[1]);
    const Database database(node);
    result.SetInt(copyEntry(node, palette, entryIn(database, palette, params[2])));
}

void set(const FPParams& params, FPValue&) {
    INode& node = databaseNode(params[0]);
    const Palette palette = paletteIn(params[1]);
    const std::string field = textOf(params[3]), value = textOf(params[4]);
    if (palette != Palette::kColor) {
        const Database database(node);
        return setField(node, palette, entryIn(database, palette, params[2]), field, value);
    }
    setColorField(node, params[2].i, field, value);
}

void remove(const FPParams& params, FPValue&) {
    INode& node = databaseNode(params[0]);
    const Palette palette = paletteIn(params[1]);
    if (palette == Palette::kColor) throw Refusal(CoreText::kColorsStay);
    const Database database(node);
    deleteEntry(node, palette, entryIn(database, palette, params[2]));
}

/// The users that were asked for last, by their handles: nodes may go meanwhile.
std::vector<DWORD>& lastUsers() {
    static std::vector<DWORD> handles;
    return handles;
}

void users(const FPParams& params, FPValue& result) {
    std::vector<DWORD> handles;
    for (const INode* const user :
         usersOf(databaseNode(params[0]), paletteIn(params[1]), params[2].i))
        handles.push_back(user->GetHandle());
    lastUsers() = std::move(handles);
    result.SetInt(countOf(lastUsers().size()));
}

void user(const FPParams& params, FPValue& result) {
    const std::vector<DWORD>& found = lastUsers();
    if (params[0].i < 1 || static_cast<std::size_t>(params[0].i) > found.size())
        throw std::runtime_error("there is no user " + std::to_string(params[0].i) + " of " +
                                 std::to_string(found.size()));
    result.SetNode(
        GetCOREInterface()->GetINodeByHandle(found[static_cast<std::size_t>(params[0].i) - 1]));
}

void used(const FPParams& params, FPValue& result) {
    databaseNode(params[0]);
    result.SetInt(indexUsedBy(*params[0].n, paletteIn(params[1])));
}

void assignTo(const FPParams& params, FPValue& result) {
    INode* const nodes[] = {params[0].n};
    result.SetInt(
        countOf(assign(databaseNode(params[0]), nodes, paletteIn(params[1]), params[2].i)));
}

void compactPalette(const FPParams& params, FPValue& result) {
    result.SetInt(countOf(compact(databaseNode(params[0]), paletteIn(params[1]))));
}

void findColor(const FPParams& params, FPValue& result) {
    result.SetInt(
        findOrAddColor(databaseNode(params[0]),
                       {componentOf(params[1]), componentOf(params[2]), componentOf(params[3])}));
}

void importFrom(const FPParams& params, FPValue& result) {
    result.SetInt(
        countOf(importEntries(databaseNode(params[0]), paletteIn(params[1]), textOf(params[2]))));
}

void indexLights(const FPParams& params, FPValue& result) {
    databaseNode(params[0]);
    result.SetInt(countOf(indexLightPoints({&params[0].n, 1}).done));
}

void inlineLights(const FPParams& params, FPValue& result) {
    databaseNode(params[0]);
    result.SetInt(countOf(inlineLightPoints({&params[0].n, 1}).done));
}

// ---------------------------------------------------------------- publishing

constexpr FPParamDesc kNode{"node", TYPE_INODE}, kPalette{"palette", TYPE_STRING},
    kIndex{"index", TYPE_INT}, kField{"field", TYPE_STRING};

constexpr FPTableRow kRows[] = {
    {0, "count", TYPE_INT, count, {kNode, kPalette}},
    {1, "index", TYPE_INT, index, {kNode, kPalette, {"position", TYPE_INT}}},
    {2, "entry", TYPE_STRING, entry, {kNode, kPalette, kIndex, kField}},
    {3, "fields", TYPE_STRING_TAB, fields, {kPalette}},
    {4, "add", TYPE_INT, add, {kNode, kPalette, {"name", TYPE_STRING}}},
    {5, "set", TYPE_VOID, set, {kNode, kPalette, kIndex, kField, {"value", TYPE_STRING}}},
    {6, "remove", TYPE_VOID, remove, {kNode, kPalette, kIndex}},
    {7, "users", TYPE_INT, users, {kNode, kPalette, kIndex}},
    {8, "user", TYPE_INODE, user, {{"position", TYPE_INT}}},
    {9, "used", TYPE_INT, used, {kNode, kPalette}},
    {10, "assign", TYPE_INT, assignTo, {kNode, kPalette, kIndex}},
    {11, "compact", TYPE_INT, compactPalette, {kNode, kPalette}},
    {12,
     "findOrAddColor",
     TYPE_INT,
     findColor,
     {kNode, {"red", TYPE_INT}, {"green", TYPE_INT}, {"blue", TYPE_INT}}},
    {13, "copy", TYPE_INT, copy, {kNode, kPalette, kIndex}},
    {14, "import", TYPE_INT, importFrom, {kNode, kPalette, {"file", TYPE_STRING}}},
    {15, "indexLightPoints", TYPE_INT, indexLights, {kNode}},
    {16, "inlineLightPoints", TYPE_INT, inlineLights, {kNode}},
};

// Published when the module is loaded.
FPTableInterface thePaletteFunctions(kPalettesId, "FltPalettes", FP_CORE, kRows);

}  // namespace

FPStaticInterface& paletteFunctions() {
    return thePaletteFunctions;
}

}  // namespace palettes
