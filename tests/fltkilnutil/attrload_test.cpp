#include "attrscene.h"

#include <gtest/gtest.h>

using namespace testing_chunks;

namespace {

using AttrLoad = AttrScene;

TEST_F(AttrLoad, RecordsOfOldRevisionsHaveTheirOwnLayout) {
    const auto header = [](std::uint8_t units) {
        return RecordBytes(1, 256)
            .text(4, "db")
            .int32(12, 1420)
            .int8(62, units)
            .float64(232, 45)
            .int16(248, 7);
    };
    const auto face = [](std::uint16_t material) {
        return RecordBytes(5, 64).int16(20, 7).int16(22, 7).int16(32, material);
    };
    const struct {
        FltNodeKind kind;
        std::uint32_t parameter;
        Bytes record;
        std::vector<std::pair<const char*, const char*>> shown;
        const char* key;
        const char* text;
        Bytes edited;
    } cases[] = {
        {FltNodeKind::Header,  // that of the revision in the bytes, whatever the kind block says
         1580,
         header(4),
         {{"FltVersion", "OpenFlight 14.2"}, {"FltUpperLam", "45"}, {"FltEllipsoid", "WGS 1984"}},
         "FltUnits",
         "海里",
         header(8)},
        {FltNodeKind::Face, 1420, face(12), {{"FltSmc", "12"}}, "FltSmc", "13", face(13)},
    };
    for (const auto& c : cases) {
        INode* const node = recordNode(c.kind, c.record, c.parameter);
        ASSERT_NE(fltAttrLoad(node, 1), nullptr);
        EXPECT_EQ(fltAttrGroupFind(c.kind)->parameter, c.parameter);
        for (const auto& [key, text] : c.shown) EXPECT_EQ(value(c.kind, key), text) << key;
        ASSERT_TRUE(edit(node, c.kind, c.key, c.text));
        EXPECT_EQ(chunkBytes(node, kRecordChunk), c.edited);
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
