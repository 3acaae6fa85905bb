#include <fltkilnutil/fltfields.h>

#include "attrtable.h"
#include "attrvalue.h"

#include <base/text.h>
#include <diagnostics/log.h>
#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <kiln/inode.h>
#include <quillon/fltface.h>
#include <quillon/fltindexedstring.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltrecordtype.h>
#include <quillon/fltswitch.h>
#include <quillon/flttext.h>
#include <quillon/flttoken.h>

#include <algorithm>
#include <charconv>
#include <deque>
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

bool loadFromFile(INode* node, TableGroup& group) {
    const SourceRecords kept = sourceRecordsOf(*node);
    group.resetRecord();
    const bool isKept = isKeptRecord(kept, *group.record);
    if (isKept) group.record->readBytes(kept.record.bytes(), kept.revision);
    if (!isKept && group.record->opcode() == kFltMesh) return false;
    printValues(group);
    show(group, isKept || mayKeep(node, kept, group.record->opcode()));
    return true;
}

/// Of the kept record only the bytes change that are others in its class's form.
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
    record.readBytes(bytes, revision);
    const Bytes before = fileBytes(record, revision);
    row.value.setText(text);
    storeField(record, row);
    const Bytes after = fileBytes(record, revision);
    if (after == before) return true;
    const auto last = std::mismatch(after.rbegin(), after.rend(), before.rbegin()).first;
    if (static_cast<std::size_t>(after.rend() - last) > bytes.size()) bytes.resize(after.size());
    for (std::size_t i = FltRecordView::kHeaderSize; i < std::min(bytes.size(), after.size()); ++i)
        if (after[i] != before[i]) bytes[i] = after[i];
    fltStateLength(bytes);
    edit.setNodeRecord(bytes);
    edit.store(revision);
    return true;
}

// ---------------------------------------------------------------- names of masks

constexpr std::string_view kMaskName = "FltSwitchMaskName";

/// The rows for the names of a switch's masks, made for the node that was looked at last.
class MaskNames {
public:
    static MaskNames& instance() {
        static MaskNames names;
        return names;
    }

    bool isGroup(const FltAttrGroup* group) const noexcept { return group == &group_; }
    FltAttrGroup& group() noexcept { return group_; }

    /// The masks of the switch and the names beyond them.
    void read(INode* node) {
        entries_.clear();
        keys_.clear();
        rows_.clear();
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
        rows_.emplace_back();
        group_.kind = FltNodeKind::Switch;
        group_.descriptors = rows_.data();
    }

    bool store(INode* node, const FltAttrDesc& row, const char* text) {
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
    std::vector<FltAttrDesc> rows_;
    FltAttrGroup group_;
};

// ---------------------------------------------------------------- all fields of a node

/// Calls `look(group)` for the groups of the node's kind in their order, until one gives true.
template <typename Look>
void forEachGroup(INode* node, Look&& look) {
    FltNodeKind kind{};
    const AttrTable* const table = AttrTable::instance();
    if (table == nullptr || !fltGetKind(node, true, kind)) return;
    if (TableGroup* const group = table->find(kind); group != nullptr && look(*group)) return;
    for (const auto& group : table->further())
        if (group->kind == kind && look(*group)) return;
    if (kind != FltNodeKind::Switch) return;
    MaskNames::instance().read(node);
    look(MaskNames::instance().group());
}

}  // namespace

FltField fltFieldFind(INode* node, std::string_view key) noexcept {
    return guarded<FltField>([&] {
        FltField found;
        if (node == nullptr || key.empty()) return found;
        forEachGroup(node, [&](FltAttrGroup& group) {
            if (FltAttrDesc* const row = rowIn(group, key)) found = {&group, row};
            return static_cast<bool>(found);
        });
        return found;
    });
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
    return nullptr;
}

bool fltFieldLoad(INode* node, const FltField& field, std::uint32_t parameter) noexcept {
    return guarded<bool>([&] {
        if (node == nullptr || !field) return false;
        if (MaskNames::instance().isGroup(field.group)) return true;  // read when it was looked up
        auto& group = static_cast<TableGroup&>(*field.group);
        if (group.isOfFile) return loadFromFile(node, group);
        if (!readBlocks(node, group, parameter)) return false;
        printValues(group);
        return true;
    });
}

bool fltFieldStore(INode* node, const FltField& field, const char* text) noexcept {
    return guarded<bool>([&] {
        if (node == nullptr || !field || text == nullptr || field.row->visible == 0) return false;
        MaskNames& names = MaskNames::instance();
        if (names.isGroup(field.group)) return names.store(node, *field.row, text);
        auto& group = static_cast<TableGroup&>(*field.group);
        if (group.isOfFile) return storeInFile(node, group, *field.row, text);
        return fltAttrStoreRow(node, group, *field.row, text);
    });
}
