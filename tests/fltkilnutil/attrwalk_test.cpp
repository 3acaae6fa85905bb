// Every row of every group, one after the other: what it shows at first, another value, and that no
// other row changes with it.
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

/// The row that is declared as a double over a float: every store changes it.
bool isDoubleOverFloat(const FltAttrDesc& row) {
    return row.type == FltAttrType::Double && row.width == FltAttrWidth::Float32;
}

TEST_F(AttrWalk, EachRowChangesItselfAndNothingElse) {
    int rowsWalked = 0;
    for (FltAttrGroup* const* g = fltAttrGroups(); *g != nullptr; ++g) {
        FltAttrGroup& group = **g;
        const std::size_t count = fltAttrCount(group);
        for (std::size_t i = 0; i < count; ++i, ++rowsWalked) {
            FltAttrDesc& row = group.descriptors[i];
            SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(group.kind) << " row "
                                            << i << " " << row.key << " " << row.caption);
            INode* const node = kindNode(group.kind);
            ASSERT_EQ(fltAttrLoad(node, 1580), &group);
            const std::vector<std::string> fresh = values(group);
            const std::string text = distinctText(row, static_cast<int>(i));
            ASSERT_NE(text, fresh[i]);
            row.value.setText(text.c_str());
            ASSERT_TRUE(fltAttrStore(node, group));
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
    EXPECT_EQ(rowsWalked, 216);
}

}  // namespace
