#include "attrtable.h"

#include <diagnostics/log.h>
#include <kiln/language.h>

namespace fltkilnutil {

namespace {

constexpr std::uint16_t kYesCaption = 114;
constexpr std::uint16_t kNoCaption = 115;

/// In the order of look-up.
constexpr const GroupRow* kGroupRows[AttrTable::kGroups] = {
    &kBspGroup,    &kClipRegionGroup, &kDofGroup,         &kFaceGroup,        &kGroupGroup,
    &kHeaderGroup, &kLightPointGroup, &kLightSourceGroup, &kLodGroup,         &kObjectGroup,
    &kSwitchGroup, &kXRefGroup,       &kInstanceRefGroup, &kInstanceDefGroup,
};

std::unique_ptr<AttrTable> buildTable() {
    if (const CaptionReader captions = openCaptionLibrary())
        return std::make_unique<AttrTable>(captions);
    diagnostics::log("Attribute captions not found: %s\n", kCaptionLibrary);
    return nullptr;
}

void fillChoices(FltAttrDesc& descriptor) {
    if (descriptor.type != FltAttrType::Enumeration || descriptor.enumeration == nullptr) return;
    for (const FltAttrEnum* entry = descriptor.enumeration; entry->text != nullptr; ++entry)
        descriptor.choices.push_back(entry->text);
}

}  // namespace

constinit FltAttrEnum yesNoTable[3] = {{0, "No"}, {1, "Yes"}, {0, nullptr}};

AttrTable* AttrTable::instance() noexcept {
    try {
        static const std::unique_ptr<AttrTable> table = buildTable();
        if (table) table->captions_.show(static_cast<base::Language>(GetLanguage()));
        return table.get();
    } catch (...) {
        return nullptr;
    }
}

AttrTable::AttrTable(const CaptionReader& captions) : captions_(captions) {
    yesNoTable[0] = entry({0, kNoCaption});
    yesNoTable[1] = entry({1, kYesCaption});
    for (std::size_t i = 0; i < kGroups; ++i) {
        groups_[i] = buildGroup(*kGroupRows[i]);
        list_[i] = groups_[i].get();
    }
    for (const FurtherRows& rows : furtherRows()) {
        further_.push_back(buildGroup(rows.own, rows.also));
        further_.back()->isOfFile = rows.isOfFile;
    }
}

std::unique_ptr<TableGroup> AttrTable::buildGroup(const GroupRow& row, const GroupRow* also) {
    auto group = std::make_unique<TableGroup>(row);
    group->caption = captions_.text(row.caption);
    group->kind = row.kind;
    group->record = row.makeRecord();
    if (row.makeOptions != nullptr) group->options = row.makeOptions();
    if (also != nullptr) addRows(*group, also->rows);
    addRows(*group, row.rows);
    group->rows.emplace_back();
    group->descriptors = group->rows.data();
    return group;
}

/// Those whose block the group has.
void AttrTable::addRows(TableGroup& group, std::span<const AttrRow> rows) {
    for (const AttrRow& attribute : rows) {
        if (attribute.field.target == FltAttrTarget::Options && !group.options) continue;
        group.rows.emplace_back(captions_.text(attribute.caption), attribute.field.target,
                                attribute.key, attribute.type, attribute.declaredDefault,
                                attribute.field.field, attribute.width, attribute.mask,
                                buildEnumeration(attribute.choices), attribute.controlling);
        fillChoices(group.rows.back());
    }
}

FltAttrEnum AttrTable::entry(const EnumRow& choice) const noexcept {
    return {choice.value, captions_.text(choice.caption), captions_.otherText(choice.caption)};
}

const FltAttrEnum* AttrTable::buildEnumeration(std::span<const EnumRow> choices) {
    if (choices.empty()) return nullptr;
    auto entries = std::make_unique<FltAttrEnum[]>(choices.size() + 1);
    for (std::size_t i = 0; i < choices.size(); ++i) entries[i] = entry(choices[i]);
    entries[choices.size()] = {0, nullptr};
    return enumerations_.emplace_back(std::move(entries)).get();
}

TableGroup* AttrTable::find(FltNodeKind kind) const noexcept {
    for (const auto& group : groups_)
        if (group->kind == kind) return group.get();
    return nullptr;
}

}  // namespace fltkilnutil
