#include <fltkilnutil/fltfields.h>

#include "attrtable.h"
#include "attrvalue.h"

#include <base/text.h>
#include <diagnostics/assertion.h>
#include <diagnostics/log.h>
#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/inode.h>
#include <quillon/fltface.h>
#include <quillon/fltindexedstring.h>
#include <quillon/fltmultitexture.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <deque>
#include <iterator>
#include <map>
#include <utility>

using namespace fltkilnutil;

namespace {

using Bytes = std::vector<std::uint8_t>;

template <typename Result, typename Action>
Result guarded(Action&& action) noexcept {
    try {
        return action();
    } catch (...) {
        diagnostics::noteCurrentException();
        return {};
    }
}

FltAttrDesc* rowIn(const FltAttrGroup& group, std::string_view key) noexcept {
    for (FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
        if (row->key == key) return row;
    return nullptr;
}

// ---------------------------------------------------------------- records of files

/// The record as a file has it, which for a face is more than what a scene stores.
Bytes fileBytes(const FltRecord& record, std::uint32_t revision) {
    FltToken token;
    if (record.opcode() == kFltFace)
        static_cast<const FltFace&>(record).writeFileToken(token, revision);
    else
        record.writeToken(token, revision);
    Bytes bytes(token.data(), token.data() + token.length());
    fltStateLength(bytes);
    return bytes;
}

bool isKeptRecord(const SourceRecords& kept, const FltRecord& record) noexcept {
    return !kept.record.empty() && kept.record.opcode() == record.opcode();
}

/// Whether a record of the node's file may be kept where there is none. A face that was made in the
/// scene gets its look from the scene as long as nothing of a file is kept; a mesh has no other
/// record.
bool mayKeep(INode* node, const SourceRecords& kept, std::uint16_t opcode) {
    if (opcode == kFltMesh || !fltHasRecord(node)) return false;
    KilnFace options;
    return opcode != kFltFace || kept.revision != 0 || !fltGetOptions(node, options) ||
           (options.useMaterial == 0 && options.superFace == 0);
}

void show(FltAttrGroup& group, bool isShown) noexcept {
    for (FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
        row->visible = isShown ? 1 : 0;
}

bool readFromFile(INode* node, TableGroup& group) {
    const SourceRecords kept = sourceRecordsOf(*node);
    group.resetRecord();
    const bool isKept = isKeptRecord(kept, *group.record);
    if (isKept) group.record->readBytes(kept.record.bytes(), kept.revision);
    if (!isKept && group.record->opcode() == kFltMesh) return false;
    show(group, isKept || mayKeep(node, kept, group.record->opcode()));
    return true;
}

/// A record as it was read, with the value that `text` says: only the bytes change that are others
/// in the form of its class, of which `record` is. Empty when none do.
Bytes withValue(FileBytes read, std::uint32_t revision, FltRecord& record, FltAttrDesc& row,
                const char* text) {
    record.readBytes(read, revision);
    const Bytes before = fileBytes(record, revision);
    row.value.setText(text);
    storeField(record, row);
    const Bytes after = fileBytes(record, revision);
    return after == before ? Bytes() : fltPatchedRecord(read, before, after);
}

bool storeInFile(INode* node, TableGroup& group, FltAttrDesc& row, const char* text) {
    SourceRecordsEdit edit(*node);
    const SourceRecords& kept = edit.kept();
    FltRecord& record = *group.record;
    std::uint32_t revision = kept.revision;
    Bytes bytes;
    if (isKeptRecord(kept, record)) {
        bytes.assign(kept.record.bytes().begin(), kept.record.bytes().end());
    } else {
        std::uint32_t stored = 0;
        if (!mayKeep(node, kept, record.opcode()) || !fltGetParameter(node, stored) ||
            !fltGetRecord(node, record))
            return false;
        if (revision == 0) revision = stored;
        bytes = fileBytes(record, revision);
    }
    edit.setNodeRecord(withValue(bytes, revision, record, row, text));
    edit.store(revision);
    return true;
}

// ---------------------------------------------------------------- rows made for a node

/// Rows for what only some nodes of a kind have, made for the node that was looked at last.
class NodeRows {
public:
    NodeRows() = default;
    NodeRows(const NodeRows&) = delete;
    NodeRows& operator=(const NodeRows&) = delete;

    FltAttrGroup& group() noexcept { return group_; }

    /// Makes the rows of the node; throws what its records throw.
    void read(INode* node) {
        rows_.clear();
        readRows(node);
        rows_.emplace_back();
        group_.descriptors = rows_.data();
    }
    virtual bool store(INode* node, FltAttrDesc& row, const char* text) = 0;

protected:
    ~NodeRows() = default;

    virtual void readRows(INode* node) = 0;

    FltAttrGroup group_;
    std::vector<FltAttrDesc> rows_;
};

// ---------------------------------------------------------------- names of masks

constexpr std::string_view kMaskName = "FltSwitchMaskName";

/// The names of a switch's masks.
class MaskNames final : public NodeRows {
public:
    static MaskNames& instance() {
        static MaskNames names;
        return names;
    }

    bool store(INode* node, FltAttrDesc& row, const char* text) override {
        std::uint32_t revision = 0;
        if (!fltGetParameter(node, revision)) return false;
        SourceRecordsEdit edit(*node);
        const std::vector<SourceRecord>& attached = edit.kept().attached;
        FltIndexedString name;
        const std::string_view number = std::string_view(row.key).substr(kMaskName.size());
        std::from_chars(number.data(), number.data() + number.size(), name.index);
        name.text = text;
        Bytes bytes;
        if (!name.text.empty()) {
            bytes = fileBytes(name, revision);
            bytes.resize(fltPaddedLength(bytes.size()));
            fltStateLength(bytes);
        }
        if (const auto entry = entries_.find(name.index); entry != entries_.end())
            edit.replace(attached.at(entry->second).record, bytes);
        else if (const std::size_t at = behindRecord(edit.kept()); bytes.empty())
            return true;
        else if (at < attached.size())
            edit.insertBefore(attached[at].record, bytes);
        else
            edit.append(bytes);
        edit.store(revision);
        return true;
    }

private:
    /// The masks of the switch and the names beyond them.
    void readRows(INode* node) override {
        entries_.clear();
        keys_.clear();
        FltSwitch record;
        std::map<std::uint32_t, std::string> names;
        if (fltGetRecord(node, record))
            for (std::int32_t i = 0; i < record.maskCount(); ++i)
                names.emplace(static_cast<std::uint32_t>(i), "");
        const SourceRecords kept = sourceRecordsOf(*node);
        for (std::size_t i = 0; i < kept.attached.size(); ++i) {
            if (!isName(kept.attached[i])) continue;
            FltIndexedString name;
            name.readBytes(kept.attached[i].record.bytes(), kept.revision);
            const bool isFirst = entries_.emplace(name.index, i).second;  // others stay as they are
            if (isFirst) names[name.index] = name.text;
        }
        for (const auto& [index, text] : names) {
            const std::string& key =
                keys_.emplace_back(std::string(kMaskName) + std::to_string(index));
            FltAttrDesc row;
            row.caption = "";
            row.key = key.c_str();
            row.value.setText(base::validUtf8(text).c_str());
            rows_.push_back(std::move(row));
        }
        group_.kind = FltNodeKind::Switch;
    }

    static bool isName(const SourceRecord& entry) noexcept {
        return !entry.isOpaque && entry.record.opcode() == kFltIndexedString &&
               entry.record.body().size() >= sizeof(std::uint32_t);
    }

    /// In front of the first level: what stands behind that belongs to other nodes in a file.
    static std::size_t behindRecord(const SourceRecords& kept) noexcept {
        const auto level = std::ranges::find_if(kept.attached, [](const SourceRecord& entry) {
            return fltLevelChange(entry.record.opcode()).by > 0;
        });
        return static_cast<std::size_t>(level - kept.attached.begin());
    }

    std::map<std::uint32_t, std::size_t> entries_;  ///< by index: the attached record
    std::deque<std::string> keys_;
};

// ---------------------------------------------------------------- texture layers

constexpr int kLayers = 7;

/// How the keys of a layer end, and where its fields are. No texture and no mapping are -1.
struct LayerKey {
    const char* key;
    std::uint16_t FltTextureLayer::*field;
    FltAttrWidth width;
};
constexpr LayerKey kLayerKeys[] = {
    {"Texture", &FltTextureLayer::textureIndex, FltAttrWidth::Int16},
    {"Effect", &FltTextureLayer::effect, FltAttrWidth::Uint16},
    {"Mapping", &FltTextureLayer::mappingIndex, FltAttrWidth::Int16},
    {"Data", &FltTextureLayer::data, FltAttrWidth::Uint16},
};
constexpr std::size_t kFieldsOfLayer = std::size(kLayerKeys);

/// The keys with their layers' numbers, layer by layer.
const std::vector<std::string>& layerKeys() {
    static const std::vector<std::string> keys = [] {
        std::vector<std::string> made;
        for (int layer = 1; layer <= kLayers; ++layer) {
            for (const LayerKey& each : kLayerKeys) {
                std::string key = "FltLayer";
                key += static_cast<char>('0' + layer);
                key += each.key;
                made.push_back(std::move(key));
            }
        }
        return made;
    }();
    return keys;
}

/// The field of that number of the layer of that place in the record.
template <std::size_t place, std::size_t field>
void* layerField(void* block) noexcept {
    auto& record = static_cast<FltMultiTexture&>(*static_cast<FltRecord*>(block));
    return &(record.layers[place].*kLayerKeys[field].field);
}

using LayerAddress = void* (*)(void*);
constexpr auto kLayerAddresses = []<std::size_t... i>(std::index_sequence<i...>) {
    return std::array<LayerAddress, sizeof...(i)>{
        &layerField<i / kFieldsOfLayer, i % kFieldsOfLayer>...};
}
(std::make_index_sequence<kLayers * kFieldsOfLayer>());

/// The texture layers that a face or mesh has above its first.
class Layers final : public NodeRows {
public:
    static Layers& instance() {
        static Layers layers;
        return layers;
    }

    bool store(INode* node, FltAttrDesc& row, const char* text) override {
        SourceRecordsEdit edit(*node);
        const SourceRecords& kept = edit.kept();
        const SourceRecord* const found = recordIn(kept);
        if (found == nullptr) return false;
        const Bytes changed =
            withValue(found->record.bytes(), kept.revision, *group_.record, row, text);
        if (!changed.empty()) edit.replace(found->record, changed);
        edit.store(kept.revision);
        return true;
    }

private:
    Layers() { group_.record = std::make_unique<FltMultiTexture>(); }

    void readRows(INode* node) override {
        const SourceRecords kept = sourceRecordsOf(*node);
        const SourceRecord* const found = recordIn(kept);
        if (found == nullptr) return;
        auto& record = static_cast<FltMultiTexture&>(*group_.record);
        try {
            record.readBytes(found->record.bytes(), kept.revision);
        } catch (const diagnostics::AviaryAssertion&) {
            return;  // a mask that it cannot hold the layers of: none can be told
        }
        std::size_t place = 0;
        for (std::size_t layer = 0; layer < kLayers; ++layer) {
            if (!(record.mask & 0x80000000U >> layer)) continue;
            for (std::size_t i = 0; place < record.layers.size() && i < kFieldsOfLayer; ++i)
                rows_.emplace_back("", FltAttrTarget::Record,
                                   layerKeys()[layer * kFieldsOfLayer + i].c_str(),
                                   FltAttrType::Integer, "",
                                   FltAttrField{kLayerAddresses[place * kFieldsOfLayer + i],
                                                sizeof(std::uint16_t)},
                                   kLayerKeys[i].width, 0U, nullptr, false);
            ++place;
        }
        for (FltAttrDesc& row : rows_) printValue(group_, row);
    }

    static const SourceRecord* recordIn(const SourceRecords& kept) noexcept {
        for (const SourceRecord& entry : kept.attached)
            if (!entry.isOpaque && entry.record.opcode() == kFltMultiTexture) return &entry;
        return nullptr;
    }
};

/// Those of a kind; null for none.
NodeRows* nodeRowsOf(FltNodeKind kind) {
    if (kind == FltNodeKind::Switch) return &MaskNames::instance();
    if (kind == FltNodeKind::Face || static_cast<std::uint16_t>(kind) == kFltMesh)
        return &Layers::instance();
    return nullptr;
}

/// The rows that a group is made of; null for those of the tables.
NodeRows* nodeRowsIn(const FltAttrGroup& group) {
    if (&group == &MaskNames::instance().group()) return &MaskNames::instance();
    if (&group == &Layers::instance().group()) return &Layers::instance();
    return nullptr;
}

// ---------------------------------------------------------------- all fields of a node

/// Calls `look(group)` for the groups of the node's kind in their order, until one returns true.
template <typename Look>
void forEachGroup(INode* node, Look&& look) {
    FltNodeKind kind{};
    const AttrTable* const table = AttrTable::instance();
    if (table == nullptr || !fltGetKind(node, true, kind)) return;
    if (TableGroup* const group = table->find(kind); group != nullptr && look(*group)) return;
    for (const auto& group : table->further())
        if (group->kind == kind && look(*group)) return;
    if (NodeRows* const rows = nodeRowsOf(kind); rows != nullptr) {
        rows->read(node);
        look(rows->group());
    }
}

/// Reads the node's values into the blocks of the group; rows that are made for it have been read
/// with them.
bool readGroup(INode* node, FltAttrGroup& group, std::uint32_t parameter) {
    if (nodeRowsIn(group) != nullptr) return true;
    auto& own = static_cast<TableGroup&>(group);
    return own.isOfFile ? readFromFile(node, own) : readBlocks(node, own, parameter);
}

void printField(FltAttrGroup& group, FltAttrDesc& row) {
    if (nodeRowsIn(group) == nullptr) printValue(group, row);
}

bool store(INode* node, const FltField& field, const char* text) {
    if (field.row->visible == 0) return false;
    if (NodeRows* const rows = nodeRowsIn(*field.group)) return rows->store(node, *field.row, text);
    auto& group = static_cast<TableGroup&>(*field.group);
    if (group.isOfFile) return storeInFile(node, group, *field.row, text);
    return fltAttrStoreRow(node, group, *field.row, text);
}

FltField find(INode* node, std::string_view key) {
    FltField found;
    if (node == nullptr || key.empty()) return found;
    forEachGroup(node, [&](FltAttrGroup& group) {
        if (FltAttrDesc* const row = rowIn(group, key)) found = {&group, row};
        return static_cast<bool>(found);
    });
    return found;
}

/// The rows of a group of the tables that are among some keys, each with its key's place.
using Wanted = std::vector<std::pair<FltAttrDesc*, std::size_t>>;

Wanted wantedIn(const FltAttrGroup& group, std::span<const std::string> keys) {
    Wanted wanted;
    for (std::size_t i = 0; i < keys.size(); ++i)
        if (FltAttrDesc* const row = rowIn(group, keys[i])) wanted.emplace_back(row, i);
    return wanted;
}

}  // namespace

FltField fltFieldFind(INode* node, std::string_view key) noexcept {
    return guarded<FltField>([&] { return find(node, key); });
}

std::vector<std::string> fltFieldKeys(INode* node) noexcept {
    return guarded<std::vector<std::string>>([&] {
        std::vector<std::string> keys;
        if (node == nullptr) return keys;
        forEachGroup(node, [&](FltAttrGroup& group) {
            for (const FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
                if (*row->key != 0) keys.emplace_back(row->key);
            return false;
        });
        return keys;
    });
}

const char* fltFieldKey(std::string_view key) noexcept {
    const AttrTable* const table = AttrTable::instance();
    if (table == nullptr || key.empty()) return nullptr;
    const auto find = [&](const FltAttrGroup& group) -> const char* {
        for (const FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
            if (base::sameTextIgnoringCase(row->key, key)) return row->key;
        return nullptr;
    };
    for (FltAttrGroup* const* group = table->list(); *group != nullptr; ++group)
        if (const char* const found = find(**group)) return found;
    for (const auto& group : table->further())
        if (const char* const found = find(*group)) return found;
    for (const std::string& layer : layerKeys())
        if (base::sameTextIgnoringCase(layer, key)) return layer.c_str();
    return nullptr;
}

bool fltFieldLoad(INode* node, const FltField& field, std::uint32_t parameter) noexcept {
    return guarded<bool>([&] {
        if (node == nullptr || !field || !readGroup(node, *field.group, parameter)) return false;
        printField(*field.group, *field.row);
        return true;
    });
}

bool fltFieldStore(INode* node, const FltField& field, const char* text) noexcept {
    return guarded<bool>(
        [&] { return node != nullptr && field && text != nullptr && store(node, field, text); });
}

bool fltFieldSet(INode* node, std::string_view key, const char* text) noexcept {
    return guarded<bool>([&] {
        const FltField field = find(node, key);
        return field && text != nullptr && readGroup(node, *field.group, kFltRevision) &&
               store(node, field, text);
    });
}

void fltFieldsRead(std::span<INode* const> nodes, std::span<const std::string> keys,
                   const std::function<void(INode&, std::span<const FltFieldValue>)>& look) {
    std::map<const FltAttrGroup*, Wanted> known;
    std::vector<FltFieldValue> values(keys.size());
    for (INode* const node : nodes) {
        if (node == nullptr) continue;
        for (FltFieldValue& value : values) value.isThere = false;
        guarded<bool>([&] {
            forEachGroup(node, [&](FltAttrGroup& group) {
                const bool isMade = nodeRowsIn(group) != nullptr;
                Wanted made;
                if (isMade) made = wantedIn(group, keys);
                const auto [place, isNew] =
                    isMade ? std::pair(known.end(), false) : known.try_emplace(&group);
                if (isNew) place->second = wantedIn(group, keys);
                const Wanted& wanted = isMade ? made : place->second;
                if (wanted.empty() || !readGroup(node, group, kFltRevision)) return false;
                for (const auto& [row, key] : wanted) {
                    printField(group, *row);
                    const char* const text = row->value.text();
                    values[key].text = text != nullptr ? text : "";
                    values[key].isThere = true;
                    values[key].canSet = row->visible != 0;
                }
                return false;
            });
            return true;
        });
        look(*node, values);
    }
}
