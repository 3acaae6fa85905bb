#include "scene.h"

#include <map>

namespace {

using PublishedTest = SceneTest;

TEST_F(PublishedTest, EveryIdGivesItsPublishedResultAndNoOther) {
    std::map<FunctionID, ParamType2> types{{2, TYPE_VOID}};
    for (const FPFunctionDesc& function : aviary.Functions()) types[function.id] = function.result;
    for (const FPPropertyDesc& property : aviary.Properties())
        types[property.getter] = property.type;
    ASSERT_EQ(types.size(), 41u);
    types.erase(4);  // a distance is never forgotten, and another test begins without one
    for (const auto& [id, type] : types) {
        SCOPED_TRACE(id);
        // Without arguments, as a careless caller might: they read as nothing.
        FPValue value;
        EXPECT_EQ(aviary.Invoke(id, 0, value, nullptr), FPS_OK);
        EXPECT_EQ(value.type, type);
        if (type == TYPE_STRING) {
            EXPECT_STREQ(value.s, "");
        }
    }
}

}  // namespace
