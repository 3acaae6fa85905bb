#include "attrscene.h"

#include <gtest/gtest.h>

using namespace testing_chunks;

namespace {

using AttrLoad = AttrScene;

struct Shown {
    const char* key;
    const char* text;
};

/// One record chunk of each family, what its rows show, one edit and the bytes after it.
struct Family {
    FltNodeKind kind;
    Bytes record;
    std::vector<Shown> shown;
    Shown edit;
    Bytes edited;
    std::uint32_t parameter = 1580;
};

RecordBytes header(std::uint32_t revision, std::uint16_t length) {
    return RecordBytes(1, length).text(4, "db").int32(12, revision);
}

RecordBytes lightPoint() {
    return RecordBytes(111, 160).text(4, "lp1").int32(16, 0xFF0000FF).int32(20, 2);
}

std::vector<Family> families() {
    using enum FltNodeKind;
    return {
        {Header,
         header(1580, 328).int8(62, 4).int32(92, 6).float64(220, -33.5).float64(236, 45),
         {{"FltVersion", "OpenFlight 15.8"},
          {"FltUnits", "英尺"},
          {"FltProjection", "地心坐标"},
          {"FltOriginLat", "-33.5"},
          {"FltUpperLam", "45"},
          {"FltTexWhite", "否"}},
         {"FltTexWhite", "是"},
         header(1580, 328)
             .int8(62, 4)
             .int8(63, 1)
             .int32(92, 6)
             .float64(220, -33.5)
             .float64(236, 45)},
        {Header,  // the layout is that of the revision in the bytes, whatever the kind block says
         header(1420, 256).float64(232, 45).int16(248, 7),
         {{"FltVersion", "OpenFlight 14.2"}, {"FltUpperLam", "45"}, {"FltEllipsoid", "WGS 1984"}},
         {"FltUnits", "海里"},
         header(1420, 256).int8(62, 8).float64(232, 45).int16(248, 7)},
        {Group,
         RecordBytes(2, 32).int16(12, 0xFFFF).int32(16, 0x40000001).int8(26, 0xFF),
         {{"FltGrpRelPriority", "-1"},
          {"FltGrpLayer", "-1"},
          {"FltGrpFwdAnim", "是"},
          {"FltGrpCycleAnim", "否"}},
         {"FltGrpFwdAnim", "否"},
         RecordBytes(2, 32).int16(12, 0xFFFF).int32(16, 0x00000001).int8(26, 0xFF)},
        {Object,
         RecordBytes(4, 32).int32(12, 0x80000003).int16(16, 3).int16(18, 0xFFFE).int16(24, 9),
         {{"FltObjRelPriority", "3"},
          {"FltObjTransparency", "-2"},
          {"FltObjSignificance", "9"},
          {"FltObjNoDay", "是"},
          {"FltObjNoNight", "否"}},
         {"FltObjNoNight", "是"},
         RecordBytes(4, 32).int32(12, 0xA0000003).int16(16, 3).int16(18, 0xFFFE).int16(24, 9)},
        {Face,
         RecordBytes(5, 80)
             .int32(12, 0xFFFFFFF6)
             .int8(18, 8)
             .int8(25, 4)
             .int32(44, 0x84000010)
             .int8(48, 3)
             .int16(64, 0xFFFF),
         {{"FltIRColor", "-10"},
          {"FltDrawType", "全向灯光"},
          {"FltBillboard", "绕点旋转"},
          {"FltTerrain", "是"},
          {"FltHidden", "是"},
          {"FltFootprint", "否"},
          {"FltLightMode", "受光 Gouraud 着色"},
          {"FltUseKilnNormals", "是"},
          {"FltKeepTris", "否"}},
         {"FltTerrain", "否"},
         RecordBytes(5, 80)
             .int32(12, 0xFFFFFFF6)
             .int8(18, 8)
             .int8(25, 4)
             .int32(44, 0x04000010)
             .int8(48, 3)
             .int16(64, 0xFFFF)},
        {Face,  // before 15.1 the record is shorter
         RecordBytes(5, 64).int16(20, 7).int16(22, 7).int16(32, 12),
         {{"FltSmc", "12"}},
         {"FltSmc", "13"},
         RecordBytes(5, 64).int16(20, 7).int16(22, 7).int16(32, 13),
         1420},
        {Dof,
         RecordBytes(14, 384)
             .float64(40, 1)
             .float64(72, 1)
             .float64(152, -5)
             .float64(160, 5)
             .float64(168, 2.5)
             .float64(248, 90)
             .int32(376, 0x84000000),
         {{"FltDofTxMin", "-5"},
          {"FltDofTxMax", "5"},
          {"FltDofTxCurr", "2.5"},
          {"FltDofTxLimited", "是"},
          {"FltDofTyLimited", "否"},
          {"FltDofYawMin", "90"},
          {"FltDofYawLimited", "是"},
          {"FltDofRollMin", "0"}},
         {"FltDofRollIncr", "0.1"},
         RecordBytes(14, 384)
             .float64(40, 1)
             .float64(72, 1)
             .float64(152, -5)
             .float64(160, 5)
             .float64(168, 2.5)
             .float64(240, 0.1)
             .float64(248, 90)
             .int32(376, 0x84000000)},
        {Bsp,
         RecordBytes(55, 48).float64(24, 1).float64(40, -7.25),
         {{"FltBspA", "0"}, {"FltBspB", "1"}, {"FltBspD", "-7.25"}},
         {"FltBspA", "1e-3"},
         RecordBytes(55, 48).float64(16, 0.001).float64(24, 1).float64(40, -7.25)},
        {XRef,
         RecordBytes(63, 216).text(4, "塔/tower.flt").int32(208, 0x50000001),
         {{"FltXRefFilename", "塔/tower.flt"},
          {"FltXRefOverrideColors", "否"},
          {"FltXRefOverrideMaterials", "是"},
          {"FltXRefOverrideLnStyle", "是"}},
         {"FltXRefFilename", "b.flt"},
         RecordBytes(63, 216).text(4, "b.flt").int32(208, 0x50000001)},
        {Lod,
         RecordBytes(73, 72)
             .float64(16, 1500)
             .int16(34, 0x8000)
             .int32(36, 0x20000000)
             .float64(64, 1),
         {{"FltLodMin", "1500"},
          {"FltLodMax", "0"},
          {"FltLodSpecial2", "-32768"},
          {"FltLodFrozen", "是"},
          {"FltUsePrevious", "否"},
          {"FltLodTrans", "1"}},
         {"FltUsePrevious", "是"},
         RecordBytes(73, 72)
             .float64(16, 1500)
             .int16(34, 0x8000)
             .int32(36, 0xA0000000)
             .float64(64, 1)},
        {Switch,
         RecordBytes(96, 40)
             .int32(16, 1)
             .int32(20, 2)
             .int32(24, 1)
             .int32(28, 0xF0F0F0F0)
             .int32(32, 5),
         {{"FltSwitchCurr", "1"}, {"FltSwitchMaskWidth", "1"}},
         {"FltSwitchCurr", "0"},
         RecordBytes(96, 40).int32(20, 2).int32(24, 1).int32(28, 0xF0F0F0F0).int32(32, 5)},
        {ClipRegion,
         RecordBytes(98, 280).int8(18, 1).int8(20, 0x80).float64(24, -1e8).float64(120, 3),
         {{"FltClipBottom", "是"},
          {"FltClipRight", "否"},
          {"FltClipTop", "是"},  // any byte but zero
          {"FltClipX0", "-1e+08"}},
         {"FltClipRight", "是"},
         RecordBytes(98, 280).int8(18, 1).int8(19, 1).int8(20, 0x80).float64(24, -1e8).float64(120,
                                                                                               3)},
        {LightPoint,
         lightPoint().float32(24, 0.5F).int32(140, 0x42000010).float32(152, 1),
         {{"FltLtPtBackColor", "-16776961"},  // the whole packed colour
          {"FltLtPtDisplayMode", "任一"},
          {"FltLtPtIntensity", "0.5"},
          {"FltLtPtNoBackColor", "是"},
          {"FltLtPtRandomize", "中"},
          {"FltLtPtQuality", "低"},
          {"FltLtPtRotationZ", "1"}},
         {"FltLtPtRandomize", "从不"},
         lightPoint().float32(24, 0.5F).int32(140, 0x40000010).float32(152, 1)},
    };
}

TEST_F(AttrLoad, EveryFamilyShowsItsFieldsAndStoresOneEdit) {
    for (const Family& family : families()) {
        SCOPED_TRACE("kind " + std::to_string(static_cast<int>(family.kind)));
        INode* const node = recordNode(family.kind, family.record, family.parameter);
        ASSERT_NE(fltAttrLoad(node, 1), nullptr);
        EXPECT_EQ(fltAttrGroupFind(family.kind)->parameter, family.parameter);
        for (const Shown& shown : family.shown)
            EXPECT_EQ(value(family.kind, shown.key), shown.text) << shown.key;
        EXPECT_EQ(chunkBytes(node, kRecordChunk), family.record) << "loading changes nothing";

        ASSERT_TRUE(edit(node, family.kind, family.edit.key, family.edit.text));
        EXPECT_EQ(chunkBytes(node, kRecordChunk), family.edited);
    }
}

TEST_F(AttrLoad, InstancesHaveARecordAndNoRows) {
    for (const auto kind : {FltNodeKind::InstanceDef, FltNodeKind::InstanceRef}) {
        const Bytes record = RecordBytes(static_cast<std::uint16_t>(kind), 8).int16(6, 3);
        INode* const node = recordNode(kind, record);
        FltAttrGroup* const group = fltAttrLoad(node, 1580);
        ASSERT_NE(group, nullptr);
        EXPECT_EQ(fltAttrCount(*group), 0U);
        EXPECT_TRUE(fltAttrStore(node, *group));
        EXPECT_EQ(chunkBytes(node, kRecordChunk), record);
    }
}

TEST_F(AttrLoad, ANodeWithoutARecordShowsAFreshOneAndNothingOfTheNodeBefore) {
    recordNode(FltNodeKind::Lod, RecordBytes(73, 72).float64(16, 5).float64(24, 4));
    INode* const loaded = recordNode(FltNodeKind::Lod, RecordBytes(73, 72).float64(24, 4));
    ASSERT_NE(fltAttrLoad(loaded, 1580), nullptr);
    FltAttrGroup* const group = fltAttrLoad(kindNode(FltNodeKind::Lod), 1510);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->parameter, 1510U);
    EXPECT_EQ(value(FltNodeKind::Lod, "FltLodMin"), "100000");
    EXPECT_EQ(value(FltNodeKind::Lod, "FltLodMax"), "0");

    // A face of an old revision has fewer fields; the others must not be those of the face before.
    INode* const recent = recordNode(FltNodeKind::Face, RecordBytes(5, 80).int16(64, 77));
    setChunk(recent, kOptionsChunk, RecordBytes(5, 32).int32(4, 1).int32(28, 1));
    ASSERT_NE(fltAttrLoad(recent, 1580), nullptr);
    EXPECT_EQ(value(FltNodeKind::Face, "FltKeepTris"), "是");
    INode* const old = recordNode(FltNodeKind::Face, RecordBytes(5, 64), 1420);
    setChunk(old, kOptionsChunk, RecordBytes(5, 32));
    ASSERT_NE(fltAttrLoad(old, 1580), nullptr);
    EXPECT_EQ(value(FltNodeKind::Face, "FltKeepTris"), "否");
    ASSERT_TRUE(fltEnsureKind(old, FltNodeKind::Face, 1580));
    ASSERT_TRUE(fltAttrStore(old, *fltAttrGroupFind(FltNodeKind::Face)));
    EXPECT_EQ(chunkBytes(old, kRecordChunk).at(64), 0xFF) << "the default texture mapping, -1";
}

TEST_F(AttrLoad, APlainMeshShowsAsAFaceAndBecomesOneWhenStored) {
    INode* const mesh = node(new TriObject);
    FltAttrGroup* const group = fltAttrLoad(mesh, 1540);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(mesh->NumAppDataChunks(), 0);
    row(FltNodeKind::Face, "FltKeepTris").value.setText("是");
    ASSERT_TRUE(fltAttrStore(mesh, *group));
    std::uint32_t parameter = 0;
    EXPECT_TRUE(fltGetParameter(mesh, parameter));
    EXPECT_EQ(parameter, 1540U);
    EXPECT_EQ(chunkBytes(mesh, kRecordChunk).size(), 80U);
    EXPECT_EQ(chunkBytes(mesh, kOptionsChunk).at(31), 1);
}

TEST_F(AttrLoad, WhatCannotBeLoadedGivesNothingAndChangesNothing) {
    EXPECT_EQ(fltAttrLoad(nullptr, 1580), nullptr);
    EXPECT_EQ(fltAttrLoad(dummy(), 1580), nullptr) << "no kind";
    EXPECT_EQ(fltAttrLoad(kindNode(static_cast<FltNodeKind>(95)), 1580), nullptr) << "no group";
    EXPECT_EQ(fltAttrLoad(recordNode(FltNodeKind::Group, RecordBytes(4, 32)), 1580), nullptr);

    INode* const oddOptions = kindNode(FltNodeKind::Face);
    setChunk(oddOptions, kOptionsChunk, RecordBytes(111, 16));
    EXPECT_EQ(fltAttrLoad(oddOptions, 1580), nullptr);
    EXPECT_EQ(chunkBytes(oddOptions, kOptionsChunk), RecordBytes(111, 16));

    INode* const noParameter = node(new TriObject);
    setChunk(noParameter, kRecordChunk, RecordBytes(5, 80));
    EXPECT_EQ(fltAttrLoad(noParameter, 1580), nullptr) << "a record without a kind block";
}

TEST_F(AttrLoad, ANodeOfAnotherKindIsNotStoredTo) {
    INode* const lod = recordNode(FltNodeKind::Lod, RecordBytes(73, 72));
    EXPECT_FALSE(fltAttrStore(lod, *fltAttrGroupFind(FltNodeKind::Group)));
    EXPECT_FALSE(fltAttrStore(nullptr, *fltAttrGroupFind(FltNodeKind::Group)));
    EXPECT_EQ(chunkBytes(lod, kRecordChunk), RecordBytes(73, 72));
}

}  // namespace
