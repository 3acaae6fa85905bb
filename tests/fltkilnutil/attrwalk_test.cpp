// Every row of every group, one after the other: what it shows at first, another value, that
// whoever shows the scene is told of it, and that no other row changes with it.
#include "../support/scenechanges.h"
#include "attrscene.h"

#include <fltkilnutil/attrtext.h>

#include <gtest/gtest.h>

#include <cstring>

namespace {

using AttrWalk = AttrScene;

std::vector<std::string> values(const FltAttrGroup& group) {
    std::vector<std::string> texts;
    for (const FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row)
        texts.emplace_back(row->value.text());
    return texts;
}

/// A text that the row can hold exactly and does not hold now.
std::string distinctText(const FltAttrDesc& row, int seed) {
    switch (row.type) {
        case FltAttrType::Text:
            return "file" + std::to_string(seed) + ".flt";
        case FltAttrType::Integer:
            return std::to_string(20 + seed);
        case FltAttrType::Enumeration:
            return row.choices.at(std::strcmp(row.value.text(), row.choices.at(0)) == 0 ? 1 : 0);
        default:
            return std::to_string(seed + 1) + ".5";
    }
}

/// The row that is declared as a double over a float: every store of a whole record changes it.
bool isDoubleOverFloat(const FltAttrDesc& row) {
    return row.type == FltAttrType::Double && row.width == FltAttrWidth::Float32;
}

TEST_F(AttrWalk, EachRowChangesItselfAndNothingElse) {
    SceneChanges changes;
    for (FltAttrGroup* const* g = fltAttrGroups(); *g != nullptr; ++g) {
        FltAttrGroup& group = **g;
        const std::size_t count = fltAttrCount(group);
        for (std::size_t i = 0; i < count; ++i) {
            FltAttrDesc& row = group.descriptors[i];
            SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(group.kind) << " row "
                                            << i << " " << row.key << " " << row.caption);
            INode* const node = kindNode(group.kind);
            ASSERT_EQ(fltAttrLoad(node, 1580), &group);
            const std::vector<std::string> fresh = values(group);
            const std::string text = distinctText(row, static_cast<int>(i));
            ASSERT_NE(text, fresh[i]);
            row.value.setText(text.c_str());
            changes.takeRedraws();
            ASSERT_TRUE(fltAttrStore(node, group));
            EXPECT_EQ(changes.takeRedraws(), 1) << "a viewport follows at once";
            ASSERT_EQ(fltAttrLoad(kindNode(group.kind), 1580), &group) << "another one in between";
            ASSERT_EQ(values(group), fresh);

            ASSERT_EQ(fltAttrLoad(node, 1580), &group);
            const std::vector<std::string> after = values(group);
            for (std::size_t k = 0; k < count; ++k) {
                if (isDoubleOverFloat(group.descriptors[k])) continue;
                EXPECT_EQ(after[k], k == i ? text : fresh[k]) << group.descriptors[k].caption;
            }
        }
    }
}

/// Fills what follows the record's header with bytes that no field is made for.
void scramble(INode* node, DWORD subId, std::uint32_t seed) {
    AppDataChunk* const found = testing_chunks::chunk(node, subId);
    if (found == nullptr) return;
    auto* const bytes = static_cast<std::uint8_t*>(found->data);
    for (std::size_t i = 4; i < found->length; ++i) {
        seed = seed * 1664525 + 1013904223;
        bytes[i] = static_cast<std::uint8_t>(seed >> 24);
    }
}

/// The options of a light source without its constant attenuation.
testing_chunks::Bytes withoutConstantAttenuation(testing_chunks::Bytes options) {
    for (std::size_t i = 148; i < 152; ++i) options.at(i) = 0;
    return options;
}

TEST_F(AttrWalk, EditingARowAloneIsTheSameAsLoadingSettingAndStoring) {
    using namespace testing_chunks;
    int edited = 0;
    for (FltAttrGroup* const* g = fltAttrGroups(); *g != nullptr; ++g) {
        FltAttrGroup& group = **g;
        for (int i = 0; i < static_cast<int>(fltAttrCount(group)); ++i) {
            FltAttrDesc& row = group.descriptors[i];
            for (const bool fresh : {true, false}) {
                SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(group.kind) << " "
                                                << row.caption << (fresh ? " fresh" : ""));
                INode* const nodes[] = {kindNode(group.kind), kindNode(group.kind)};
                for (INode* const node : nodes) {
                    ASSERT_EQ(fltAttrLoad(node, 1580), &group);
                    if (fresh) continue;
                    ASSERT_TRUE(fltAttrStore(node, group));
                    for (const DWORD chunk : {kRecordChunk, kOptionsChunk})
                        scramble(node, chunk, static_cast<std::uint32_t>(i));
                }
                std::string text = distinctText(row, i);
                const bool loaded = fltAttrLoad(nodes[0], 1580) == &group;
                row.value.setText(text.c_str());
                const bool stored = loaded && fltAttrStore(nodes[0], group);
                // Whatever the group still holds is another node's.
                ASSERT_EQ(fltAttrLoad(kindNode(group.kind), 1580), &group);
                EXPECT_EQ(fltAttrEdit(nodes[1], 1580, group, row, text.c_str()), stored);
                for (const DWORD chunk : {kKindChunk, kRecordChunk, kOptionsChunk}) {
                    Bytes alone = chunkBytes(nodes[1], chunk), whole = chunkBytes(nodes[0], chunk);
                    if (chunk == kOptionsChunk && stored && !isDoubleOverFloat(row) &&
                        group.kind == FltNodeKind::LightSource) {
                        alone = withoutConstantAttenuation(alone);
                        whole = withoutConstantAttenuation(whole);
                    }
                    EXPECT_EQ(alone, whole);
                }
                edited += stored ? 1 : 0;
            }
        }
    }
    EXPECT_GT(edited, 400);
}

TEST_F(AttrWalk, EditingARowAloneRefusesANodeOfAnotherKindAndADamagedOne) {
    using namespace testing_chunks;
    FltAttrGroup& objects = *fltAttrGroupFind(FltNodeKind::Object);
    FltAttrDesc& priority = row(FltNodeKind::Object, "FltObjRelPriority");
    INode* const group = kindNode(FltNodeKind::Group);
    INode* const damaged = recordNode(FltNodeKind::Object, {0, 4, 0xFF, 0xFF});
    for (INode* const node : {group, damaged, dummy(), static_cast<INode*>(nullptr)})
        EXPECT_FALSE(fltAttrEdit(node, 1580, objects, priority, "3"));
    EXPECT_EQ(chunk(group, kRecordChunk), nullptr);
    EXPECT_EQ(chunkBytes(damaged, kRecordChunk), (Bytes{0, 4, 0xFF, 0xFF}));
}

}  // namespace
