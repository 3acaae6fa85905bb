#include "attrtable.h"
#include "attrvalue.h"

#include <diagnostics/log.h>
#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>

using namespace fltkilnutil;

namespace {

FltAttrBlock blockOf(FltAttrGroup& group, const FltAttrDesc& descriptor) noexcept {
    if (descriptor.target == FltAttrTarget::Options) return *group.options;
    return *group.record;
}

/// The second light point row holds the mode's parameter, which only mode 1 has.
void showModeParameter(FltAttrGroup& group) noexcept {
    if (group.kind != FltNodeKind::LightPoint) return;
    const bool hasParameter = fltAttrGetField(*group.options, group.descriptors[0]) == 1;
    group.descriptors[1].visible = hasParameter ? 1 : 0;
}

bool readRecord(INode* node, TableGroup& group, std::uint32_t parameter) {
    group.resetRecord();  // a short record leaves nothing of the node before
    if (fltHasRecord(node))
        return fltGetParameter(node, group.parameter) && fltGetRecord(node, *group.record);
    group.parameter = parameter;
    return true;
}

bool readOptions(INode* node, TableGroup& group) {
    if (group.options == nullptr) return true;
    group.resetOptions();
    return !fltHasOptions(node) || fltGetOptions(node, *group.options);
}

}  // namespace

namespace fltkilnutil {

void printValue(FltAttrGroup& group, FltAttrDesc& row) {
    NumberText room;
    const std::string_view text = printField(blockOf(group, row), row, room);
    row.value.setSize(static_cast<std::int32_t>(text.size()) + 1);
    text.copy(row.value.text(), text.size());
}

void printValues(FltAttrGroup& group) {
    for (FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row) printValue(group, *row);
}

bool readBlocks(INode* node, TableGroup& group, std::uint32_t parameter) {
    if (!readRecord(node, group, parameter) || !readOptions(node, group)) return false;
    showModeParameter(group);
    return true;
}

}  // namespace fltkilnutil

namespace {

TableGroup* groupOf(INode* node) {
    FltNodeKind kind{};
    if (!fltGetKind(node, true, kind)) return nullptr;
    const AttrTable* const table = AttrTable::instance();
    return table != nullptr ? table->find(kind) : nullptr;
}

FltAttrGroup* load(INode* node, std::uint32_t parameter) {
    TableGroup* const group = groupOf(node);
    if (group == nullptr || !readBlocks(node, *group, parameter)) return nullptr;
    printValues(*group);
    return group;
}

/// A node of another kind keeps its data.
bool mayBecome(INode* node, FltNodeKind kind) noexcept {
    FltNodeKind stored{};
    return !fltGetKind(node, false, stored) || stored == kind;
}

bool writeBlocks(INode* node, FltAttrGroup& group) {
    if (!fltPutData(node, group.kind, group.parameter, *group.record, group.options.get()))
        return false;
    showModeParameter(group);
    return true;
}

bool store(INode* node, FltAttrGroup& group) {
    if (node == nullptr || !mayBecome(node, group.kind)) return false;
    for (const FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
        storeField(blockOf(group, *row), *row);
    return writeBlocks(node, group);
}

/// Stores one row of the group, whose blocks are those of the node.
bool writeRow(INode* node, FltAttrGroup& group, FltAttrDesc& row, const char* text) {
    row.value.setText(text);
    storeField(blockOf(group, row), row);
    return writeBlocks(node, group);
}

bool storeRow(INode* node, FltAttrGroup& group, FltAttrDesc& row, const char* text) {
    if (node == nullptr || !mayBecome(node, group.kind) || !writeRow(node, group, row, text))
        return false;
    printValues(group);
    return true;
}

bool edit(INode* node, std::uint32_t parameter, FltAttrGroup& group, FltAttrDesc& row,
          const char* text) {
    TableGroup* const own = groupOf(node);
    return own != nullptr && own == &group && readBlocks(node, *own, parameter) &&
           writeRow(node, group, row, text);
}

}  // namespace

FltAttrDesc::FltAttrDesc(const char* rowCaption, FltAttrTarget rowTarget, const char* rowKey,
                         FltAttrType rowType, const char* /*declaredDefault*/,
                         FltAttrField rowField, FltAttrWidth rowWidth, std::uint32_t rowMask,
                         const FltAttrEnum* rowEnumeration, bool isControlling)
    : caption(rowCaption),
      key(rowKey),
      type(rowType),
      target(rowTarget),
      field(rowField),
      width(rowWidth),
      mask(rowMask),
      enumeration(rowEnumeration),
      controlling(isControlling ? 1 : 0) {
    if (type != FltAttrType::Boolean) return;
    type = FltAttrType::Enumeration;
    enumeration = yesNoTable;
    bitFlag = mask != 0 ? 1 : 0;
}

bool FltAttrDesc::isYesNo() const noexcept {
    return enumeration == yesNoTable;
}

FltAttrGroup* fltAttrGroupFind(FltNodeKind kind) noexcept {
    const AttrTable* const table = AttrTable::instance();
    return table != nullptr ? table->find(kind) : nullptr;
}

FltAttrGroup* const* fltAttrGroups() noexcept {
    const AttrTable* const table = AttrTable::instance();
    return table != nullptr ? table->list() : nullptr;
}

std::size_t fltAttrCount(const FltAttrGroup& group) noexcept {
    std::size_t count = 0;
    while (!group.descriptors[count].isTerminator()) ++count;
    return count;
}

FltAttrDesc* fltAttrFindRow(FltNodeKind kind, std::string_view key) noexcept {
    const FltAttrGroup* const group = fltAttrGroupFind(kind);
    if (group == nullptr || key.empty()) return nullptr;
    for (FltAttrDesc* row = group->descriptors; !row->isTerminator(); ++row)
        if (row->key == key) return row;
    return nullptr;
}

FltAttrGroup* fltAttrLoad(INode* node, std::uint32_t parameter) noexcept {
    try {
        return load(node, parameter);
    } catch (...) {
        diagnostics::noteCurrentException();
        return nullptr;  // no memory for a value text
    }
}

std::string fltAttrDefault(FltAttrGroup& group, const FltAttrDesc& row) noexcept {
    try {
        auto& own = static_cast<TableGroup&>(group);
        own.resetRecord();
        if (own.options) own.resetOptions();
        NumberText room;
        return std::string(printField(blockOf(group, row), row, room));
    } catch (...) {
        diagnostics::noteCurrentException();
        return {};
    }
}

bool fltAttrStore(INode* node, FltAttrGroup& group) noexcept {
    try {
        return store(node, group);
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;
    }
}

bool fltAttrStoreRow(INode* node, FltAttrGroup& group, FltAttrDesc& row,
                     const char* text) noexcept {
    try {
        return storeRow(node, group, row, text);
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;
    }
}

bool fltAttrEdit(INode* node, std::uint32_t parameter, FltAttrGroup& group, FltAttrDesc& row,
                 const char* text) noexcept {
    try {
        return edit(node, parameter, group, row, text);
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;
    }
}
