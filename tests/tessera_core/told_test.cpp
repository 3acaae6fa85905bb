// Whatever changes a node through the published functions tells the host, once.
#include "../support/scenechanges.h"
#include "scene.h"

#include <fltkilnutil/fltattr.h>
#include <quillon/fltxref.h>
#include <tessera/attributeverbs.h>

#include <functional>

namespace {

class ToldTest : public SceneTest {
protected:
    FPStatus call(FPInterface& interface, const char* name, FPParams params) {
        const FPFunctionDesc* const function = interface.GetDesc().FindFunction(name);
        FPValue result;
        return function ? interface.Invoke(function->id, 0, result, &params) : FPS_NO_SUCH_FUNCTION;
    }
    FPStatus setAttr(INode* node, const char* key, FPValue value) {
        return call(tessera::attributeVerbs(), "setAttr",
                    {FPValue::Node(node), FPValue::StringCopy(key), std::move(value)});
    }
};

TEST_F(ToldTest, AnAttributeIsStoredAndToldOnce) {
    INode* const group = add(nullptr, "g", 2);
    ASSERT_EQ(setAttr(group, "FltGrpSpecial1", FPValue::Int(1)), FPS_OK);
    INode* const point = add(nullptr, "p", 111);
    ASSERT_EQ(setAttr(point, "FltLtPtDisplayMode", FPValue::Int(1)), FPS_OK);

    SceneChanges changes;
    EXPECT_EQ(setAttr(group, "FltGrpSpecial1", FPValue::Int(7)), FPS_OK);
    EXPECT_EQ(changes.take(), 1);
    EXPECT_EQ(setAttr(group, "FltGrpSpecial1", FPValue::Int(7)), FPS_OK);
    EXPECT_EQ(changes.take(), 0) << "nothing has changed";
    EXPECT_EQ(setAttr(group, "FltGrpSpecial1", FPValue::String("seven")), FPS_FAIL);
    EXPECT_EQ(setAttr(group, "FltNothing", FPValue::Int(1)), FPS_FAIL);
    EXPECT_EQ(changes.take(), 0) << "refused";
    EXPECT_EQ(setAttr(point, "FltLtPtDisplayMode", FPValue::Int(0)), FPS_OK);
    EXPECT_EQ(changes.take(), 1) << "in the options, the record stays as it is";
    changes.takeRedraws();
    for (int i = 0; i < 10; ++i) setAttr(group, "FltGrpSpecial1", FPValue::Int(i));
    EXPECT_EQ(changes.take(), 10);
    EXPECT_EQ(changes.takeRedraws(), 1);
}

TEST_F(ToldTest, SoDoTheFunctionsOfAviary) {
    INode* const xref = add(nullptr, "x", 63);
    ASSERT_TRUE(fltPutRecord(xref, FltXRef()));
    ASSERT_TRUE(fltPutComment(xref, "before"));
    SceneChanges changes;
    EXPECT_TRUE(aviary.PutComment(xref, "behind"));
    EXPECT_EQ(changes.take(), 1);
    EXPECT_TRUE(aviary.PutComment(xref, "a longer one, in another buffer"));
    EXPECT_EQ(changes.take(), 1);
    EXPECT_TRUE(aviary.PutExternalRefFilename(xref, "tower.flt"));
    EXPECT_EQ(changes.take(), 1);
    EXPECT_TRUE(aviary.PutExternalRefFlags(xref, 5));
    EXPECT_EQ(changes.take(), 1);
    EXPECT_TRUE(aviary.PutExternalRefFlags(xref, 5));
    EXPECT_EQ(changes.take(), 0);
    changes.takeRedraws();
    EXPECT_TRUE(aviary.RemoveData(xref));
    EXPECT_EQ(changes.takeRedraws(), 1) << "for all chunks together";
}

// Record and options change together where both do.
TEST_F(ToldTest, TwoChunksOfOneStoreAreOneChange) {
    INode* const light = add(nullptr, "l", 101);
    FltAttrGroup* group = fltAttrLoad(light, kFltRevision);
    ASSERT_TRUE(group && fltAttrStore(light, *group));
    group = fltAttrLoad(light, kFltRevision);
    FltAttrDesc* const rows = group->descriptors;
    const auto set = [&](FltAttrTarget target, const char* text) {
        for (FltAttrDesc* row = rows; !row->isTerminator(); ++row) {
            const bool number =
                row->type == FltAttrType::Float || row->type == FltAttrType::Integer;
            if (row->target == target && (number || row->isYesNo())) {
                row->value.setText(number ? text : row->choices.at(1));
                return true;
            }
        }
        return false;
    };
    ASSERT_TRUE(set(FltAttrTarget::Record, "3") && set(FltAttrTarget::Options, "3"));
    SceneChanges changes;
    EXPECT_TRUE(fltAttrStore(light, *group));
    EXPECT_EQ(changes.take(), 1);
}

}  // namespace
