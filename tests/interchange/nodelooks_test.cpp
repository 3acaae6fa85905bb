// How imported nodes look, as a viewport asks for it.
#include "fltbytes.h"
#include "importscene.h"

#include "../tessera_core/recordingbrowser.h"

#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <interchange/nodelooks.h>
#include <quillon/fltface.h>
#include <quillon/fltlightpoint.h>
#include <quillon/fltlightsource.h>
#include <quillon/fltopcode.h>
#include <tessera/aviaryutil.h>

namespace {

class NodeLooksTest : public ImportScene {
protected:
    NodeLooksTest() { source.BeginLooks(&host); }

    NodeLook look(INode* node) {
        NodeLook found;
        EXPECT_TRUE(source.GetLook(node, found)) << node->GetName();
        return found;
    }

    template <typename Change>
    static void edit(INode* node, const Change& change) {
        FltFace face;
        ASSERT_TRUE(fltGetRecord(node, face));
        change(face);
        ASSERT_TRUE(fltPutRecord(node, face));
    }

    interchange::NodeLooks source;
};

Bytes material(std::uint32_t index, float diffuse, float alpha) {
    Bytes body;
    body.u32(index).field("paint", 12).u32(0).f32(0.5F).f32(0.25F).f32(0.125F);
    body.f32(diffuse).f32(diffuse).f32(diffuse).zeros(12).f32(0).f32(1).f32(2).f32(0);
    return body.f32(alpha).zeros(4);
}

const std::initializer_list<std::array<double, 3>> kPoints = {{0, 0, 0}, {4, 0, 0}, {4, 4, 0}};

TEST_F(NodeLooksTest, FacesFollowTheirRecordsAndPalettes) {
    FltBytes file("f");
    file.record(kFltMaterial, material(3, 0.75F, 0.5F));
    file.record(kFltTexture, Bytes().field("textures\\grass.rgb", 200).u32(7).zeros(8));
    file.palette(kPoints).push().polygon("face", {0, 1, 2}).group("group").pop();
    INode* const top = import(file);
    INode* const face = top->GetChildNode(0);
    NodeLook none;
    EXPECT_FALSE(source.GetLook(top->GetChildNode(1), none));
    EXPECT_FALSE(source.GetLook(nullptr, none));
    // As the file has it: no light mode, indices 0 without entries, no color.
    EXPECT_FALSE(look(face).lit);
    EXPECT_TRUE(look(face).vertexColors);
    EXPECT_EQ(look(face).picture, nullptr);
    EXPECT_FALSE(look(face).hidden);
    EXPECT_EQ(look(face).opacity, 1);

    edit(face, [](FltFace& record) {
        record.materialIndex = 3;
        record.textureIndex = 7;
        record.lightMode = 2;
        record.transparency = 32768;
        record.textureWhite = 1;
        record.billboard = 2;
        record.flags = 0;
    });
    const NodeLook lit = look(face);
    EXPECT_TRUE(lit.lit && lit.white && lit.blended && lit.vertexNormals);
    EXPECT_FALSE(lit.vertexColors) << "the face has a color";
    EXPECT_EQ(lit.ambient.green, 0.25F);
    EXPECT_EQ(lit.diffuse.red, 0.75F);
    EXPECT_EQ(lit.emissive.green, 1) << "more than all is all";
    EXPECT_NEAR(lit.opacity, 0.25, 1e-4);
    EXPECT_STREQ(lit.picture, "textures\\grass.rgb");

    edit(face, [](FltFace& record) { record.lightMode = 1; });
    EXPECT_TRUE(look(face).vertexColors);
    EXPECT_EQ(look(face).diffuse.red, 1) << "a material is for lights";
    EXPECT_NEAR(look(face).opacity, 0.25, 1e-4) << "but for its transparency";
    edit(face, [](FltFace& record) { record.lightMode = 3; });
    KilnFace options;
    options.useHostNormals = 0;
    ASSERT_TRUE(fltPutOptions(face, options));
    EXPECT_FALSE(look(face).vertexNormals);

    auto* const own = new BitmapTex;
    own->SetMapName("own.rgb");
    face->SetTexmap(own);
    EXPECT_STREQ(look(face).picture, "own.rgb") << "one that was made in the scene";
}

TEST_F(NodeLooksTest, LightsShineAsTheirRecordsAndPaletteEntriesSay) {
    INode* const lamp = host.CreateObjectNode(new GenLight(OMNI_LIGHT_CLASS_ID), "lamp");
    NodeLook none;
    EXPECT_FALSE(source.GetLook(lamp, none)) << "the host knows more of it";
    ASSERT_TRUE(fltEnsureKind(lamp, FltNodeKind::LightSource, kFltRevision));
    FltLightSource record;
    ASSERT_TRUE(fltPutRecord(lamp, record));
    EXPECT_EQ(look(lamp).shines, false);
    EXPECT_FALSE(look(lamp).light) << "it has no palette entry";
    record.flags = static_cast<std::int32_t>(0xC0000000);
    ASSERT_TRUE(fltPutRecord(lamp, record));
    EXPECT_EQ(look(lamp).shines, true);
    KilnLight options;
    options.palette.diffuseGreen = 0.25F;
    ASSERT_TRUE(fltPutOptions(lamp, options));
    ASSERT_TRUE(look(lamp).light);
    EXPECT_EQ(look(lamp).light->red, 1);
    EXPECT_EQ(look(lamp).light->green, 0.25F);
}

TEST_F(NodeLooksTest, LightPointsFlashOrTurnAsTheirRecordsSay) {
    INode* const point = host.CreateObjectNode(new DummyObject, "point");
    ASSERT_TRUE(fltEnsureKind(point, FltNodeKind::LightPoint, kFltRevision));
    FltLightPoint record;
    record.animationPeriod = 2;
    record.animationEnabledPeriod = 0.5;
    record.axisZ = 1;
    ASSERT_TRUE(fltPutRecord(point, record));
    EXPECT_FALSE(look(point).points->changes());
    record.flags = FltLightPoint::kFlashes;
    ASSERT_TRUE(fltPutRecord(point, record));
    EXPECT_EQ(look(point).points->period, 2);
    EXPECT_EQ(look(point).points->turn, 0);
    record.flags = FltLightPoint::kRotates;
    ASSERT_TRUE(fltPutRecord(point, record));
    EXPECT_EQ(look(point).points->period, 0);
    EXPECT_EQ(look(point).points->turn, -2);
    record.flags |= FltLightPoint::kRotatesCounterClockwise;
    ASSERT_TRUE(fltPutRecord(point, record));
    EXPECT_EQ(look(point).points->turn, 2);
    EXPECT_EQ(look(point).points->axis, (Point3{0, 0, 1}));
}

TEST_F(NodeLooksTest, SubfacesAndPrioritiesLieInLayers) {
    FltBytes file("f");
    file.palette(kPoints).push().face("ground").record(kFltPushSubface).polygon("mark", {0, 1, 2});
    file.face("line")
        .record(kFltPushSubface)
        .polygon("dot", {0, 1, 2})
        .record(kFltPopSubface)
        .record(kFltPopSubface);
    file.push().list({0, 1, 2}).pop().polygon("beside", {0, 1, 2}).pop();
    INode* const ground = import(file)->GetChildNode(0);
    INode* const beside = ground->GetParentNode()->GetChildNode(1);
    const auto layer = [&](INode* node) { return look(node).layer; };
    EXPECT_EQ(layer(ground), 0);
    EXPECT_EQ(layer(ground->GetChildNode(0)), 1);
    EXPECT_EQ(layer(ground->GetChildNode(1)->GetChildNode(0)), 2);
    EXPECT_EQ(layer(beside), 0);
    edit(beside, [](FltFace& record) { record.relativePriority = 3; });
    EXPECT_EQ(layer(beside), 3);
    edit(beside, [](FltFace& record) { record.relativePriority = -3; });
    EXPECT_EQ(layer(beside), -3);
}

TEST_F(NodeLooksTest, MeshesLookLikeFaces) {
    Bytes mesh;
    mesh.field("mesh", 8).zeros(4 + 8).u16(0xFFFF).u16(0xFFFF).zeros(2).u16(0xFFFF);
    mesh.u16(0xFFFF).u16(3).zeros(2 + 2 + 4).u16(0).zeros(2).u32(0).u8(2).zeros(31);
    FltBytes file("f");
    file.record(kFltMaterial, material(3, 0.75F, 1)).push().record(kFltMesh, mesh).pop();
    const NodeLook found = look(import(file)->GetChildNode(0));
    EXPECT_TRUE(found.lit);
    EXPECT_EQ(found.diffuse.blue, 0.75F);
}

TEST_F(NodeLooksTest, ReferencesShowWhatTheBrowsersTreeLists) {
    FltBytes file("f");
    const auto numbered = [](unsigned number) { return Bytes().u16(0).u16(number); };
    file.push().record(kFltInstanceDef, numbered(1)).push().group("in").pop();
    file.record(kFltInstanceRef, numbered(1)).record(kFltInstanceRef, numbered(2)).pop();
    const auto instanced = [&](INode* database, int child) {
        return source.GetInstanced(database->GetChildNode(child));
    };
    INode* const first = import(file);
    EXPECT_EQ(instanced(first, 1), first->GetChildNode(0));
    EXPECT_EQ(instanced(first, 2), nullptr);
    EXPECT_EQ(source.GetInstanced(first), nullptr);
    EXPECT_TRUE(source.IsOnlyInstanced(first->GetChildNode(0)));
    EXPECT_FALSE(source.IsOnlyInstanced(first->GetChildNode(1)) || source.IsOnlyInstanced(first));

    INode* const second = import(file);
    source.BeginLooks(&host);
    EXPECT_EQ(instanced(first, 1), first->GetChildNode(0));
    EXPECT_EQ(instanced(second, 1), second->GetChildNode(0)) << "of its own database";
    second->GetChildNode(0)->GetChildNode(0)->SetName("of the second");
    tessera::aviaryUtil().Browser();
    const auto& tree = recordingBrowser().top.children[0]->children;
    EXPECT_EQ(tree[0]->children[1]->children[0]->text, "in");
    EXPECT_EQ(tree[1]->children[1]->children[0]->text, "of the second");
}

}  // namespace
