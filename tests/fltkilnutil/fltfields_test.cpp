// Fields by key beside the attributes: where their bytes are, and that no others change.
#include "attrscene.h"

#include <fltkilnutil/fltfields.h>
#include <fltkilnutil/sourcerecords.h>
#include <quillon/fltopcode.h>

#include <gmock/gmock.h>

#include <set>

namespace {

using fltkilnutil::sourceChunk;
using fltkilnutil::SourceChunk;
using testing_chunks::Bytes;
using testing_chunks::chunkBytes;
using testing_chunks::kRecordChunk;
using testing_chunks::RecordBytes;

class FieldsTest : public AttrScene {
protected:
    static bool set(INode* node, const char* key, const char* text) {
        const FltField field = fltFieldFind(node, key);
        return field && fltFieldLoad(node, field, 1580) && fltFieldStore(node, field, text);
    }
    static std::string get(INode* node, const char* key) {
        const FltField field = fltFieldFind(node, key);
        if (!field || !fltFieldLoad(node, field, 1580)) return "none";
        return field.row->value.text();
    }
    /// What is kept of the node's file: its record, and records that belong to it.
    static void keep(INode* node, const Bytes& record, const std::vector<Bytes>& attached = {}) {
        fltkilnutil::SourceRecordsWriter writer;
        writer.begin(1580);
        if (!record.empty()) writer.nodeRecord(record);
        for (const Bytes& one : attached) writer.record(one);
        fltkilnutil::storeSourceChunk(*node, SourceChunk::records, writer.bytes());
    }
    static Bytes keptRecord(INode* node) {
        const fltkilnutil::SourceRecords kept = fltkilnutil::sourceRecordsOf(*node);
        if (kept.record.empty()) return {};
        return {kept.record.bytes().begin(), kept.record.bytes().end()};
    }
    static std::vector<Bytes> attached(INode* node) {
        std::vector<Bytes> all;
        const fltkilnutil::SourceRecords kept = fltkilnutil::sourceRecordsOf(*node);
        for (const auto& entry : kept.attached)
            all.emplace_back(entry.record.bytes().begin(), entry.record.bytes().end());
        return all;
    }
};

struct Look {
    const char* key;
    const char* text;
    std::size_t at;
    Bytes bytes;
};
const Look kLooks[] = {
    {"FltColor", "4093", 68, {0, 0, 0x0F, 0xFD}},
    {"FltAltColor", "-1", 72, {0xFF, 0xFF, 0xFF, 0xFF}},
    {"FltNoColor", "是", 44, {0xD3}},
    {"FltNoAltColor", "是", 44, {0xB3}},
    {"FltPackedColors", "否", 44, {0x83}},
    {"FltColorName", "258", 20, {1, 2}},
    {"FltAltColorName", "-2", 22, {0xFF, 0xFE}},
    {"FltTexture", "12", 28, {0, 12}},
    {"FltDetailTexture", "-1", 26, {0xFF, 0xFF}},
    {"FltTextureMapping", "3", 64, {0, 3}},
    {"FltTextureWhite", "1", 19, {1}},
    {"FltMaterial", "300", 30, {1, 44}},
    {"FltTransparency", "65535", 40, {0xFF, 0xFF}},
    {"FltTemplate", "4", 25, {4}},
    {"FltRelativePriority", "-3", 16, {0xFF, 0xFD}},
    {"FltLineStyle", "200", 43, {200}},
    {"FltLodControl", "7", 42, {7}},
};

/// A face or a mesh whose bytes are all different from 0, packed colors as scenes store them.
Bytes polygon(std::uint16_t opcode, std::uint8_t packed) {
    const std::size_t shift = opcode == kFltMesh ? 4 : 0;
    RecordBytes record(opcode, static_cast<std::uint16_t>(80 + shift));
    for (std::size_t i = 12 + shift; i < 80 + shift; ++i) record.int8(i, 0x11);
    for (std::size_t i = 56 + shift; i < 64 + shift; ++i) record.int8(i, packed);
    for (const std::size_t i :
         {24U, 49U, 50U, 51U, 52U, 53U, 54U, 55U, 66U, 67U, 76U, 77U, 78U, 79U})
        record.int8(i + shift, 0);
    record.int32(44 + shift, 0x93000000);
    return record;
}

TEST_F(FieldsTest, EachFieldOfALookIsItsBytesAlone) {
    INode* const mesh = kindNode(static_cast<FltNodeKind>(kFltMesh));
    for (const auto& [key, text, at, bytes] : kLooks) {
        SCOPED_TRACE(key);
        Bytes wanted = polygon(kFltFace, 0);
        INode* const face = recordNode(FltNodeKind::Face, wanted);
        ASSERT_TRUE(set(face, key, text));
        std::ranges::copy(bytes, wanted.begin() + static_cast<std::ptrdiff_t>(at));
        EXPECT_EQ(chunkBytes(face, kRecordChunk), wanted);
        EXPECT_EQ(get(face, key), text);
        // Of a mesh it is the file's record, with bytes behind it and in it that nobody knows.
        wanted = polygon(kFltMesh, 0x22);
        wanted[14] = 0x77;
        wanted.insert(wanted.end(), {1, 2, 3, 4});
        wanted[3] = static_cast<std::uint8_t>(wanted.size());
        keep(mesh, wanted);
        ASSERT_TRUE(set(mesh, key, text));
        std::ranges::copy(bytes, wanted.begin() + static_cast<std::ptrdiff_t>(at + 4));
        EXPECT_EQ(keptRecord(mesh), wanted);
        EXPECT_EQ(get(mesh, key), text);
    }
    EXPECT_TRUE(set(mesh, "FltDrawType", "3"));  // a text that is no choice changes nothing
    EXPECT_EQ(get(mesh, "FltHidden"), "否");
    EXPECT_TRUE(set(mesh, "FltHidden", "是"));
    EXPECT_EQ(keptRecord(mesh)[48], 0x93 | 0x04);
}

TEST_F(FieldsTest, NoKeyIsThereTwiceAndNoneInTheTable) {
    std::size_t further = 0;
    for (const int kind : {kFltHeader, kFltGroup, kFltObject, kFltFace, kFltDof, kFltBsp,
                           kFltInstanceRef, kFltInstanceDef, kFltExternalRef, kFltLod, kFltMesh,
                           kFltSwitch, kFltClipRegion, kFltLightSource, kFltLightPoint}) {
        SCOPED_TRACE(kind);
        const auto of = static_cast<FltNodeKind>(kind);
        const std::vector<std::string> keys = fltFieldKeys(kindNode(of));
        const std::set<std::string> different(keys.begin(), keys.end());
        EXPECT_EQ(different.size(), keys.size());
        for (const std::string& key : keys) {
            EXPECT_STREQ(fltFieldKey(key), key.c_str());
            further += fltAttrFindRow(of, key) == nullptr ? 1 : 0;
        }
    }
    EXPECT_GT(further, 70U);
    EXPECT_STREQ(fltFieldKey("FLTCOLOR"), "FltColor");
    EXPECT_EQ(fltFieldKey("FltColour"), nullptr);
    EXPECT_TRUE(fltFieldKeys(dummy()).empty());
    EXPECT_TRUE(fltFieldKeys(nullptr).empty());
    EXPECT_FALSE(fltFieldFind(kindNode(FltNodeKind::Group), ""));
    EXPECT_FALSE(fltFieldFind(kindNode(FltNodeKind::Group), "FltColor"));
}

TEST_F(FieldsTest, WhatOnlyFilesHaveIsKeptBesideTheScenesRecord) {
    const RecordBytes group = RecordBytes(2, 32).text(4, "g1").int16(12, 5).int32(16, 0x40000000);
    INode* const made = recordNode(FltNodeKind::Group, group);
    EXPECT_EQ(get(made, "FltGrpLoopCount"), "0");
    ASSERT_TRUE(set(made, "FltGrpLoopCount", "7"));
    EXPECT_EQ(keptRecord(made),
              RecordBytes(2, 44).text(4, "g1").int16(12, 5).int32(16, 0x40000000).int32(32, 7));
    EXPECT_EQ(chunkBytes(made, kRecordChunk), group);
    ASSERT_TRUE(set(made, "FltGrpLastFrame", "0.5"));
    EXPECT_EQ(get(made, "FltGrpLoopCount") + get(made, "FltGrpLastFrame"), "70.5");

    // Bytes that nobody knows stay, in front of the field and behind it.
    RecordBytes level = RecordBytes(73, 88).float64(16, 9).int32(12, 0xABCD).int32(84, 0x1234);
    INode* const read = recordNode(FltNodeKind::Lod, RecordBytes(73, 72).float64(16, 4));
    const RecordBytes comment = RecordBytes(31, 8).text(4, "abc");
    keep(read, level, {comment});
    ASSERT_TRUE(set(read, "FltLodSize", "2.5"));
    EXPECT_EQ(keptRecord(read), level.float64(72, 2.5));
    EXPECT_EQ(attached(read), std::vector<Bytes>{comment});
    // One of a kind that the node no longer is counts for nothing.
    keep(read, RecordBytes(2, 48).int32(32, 9));
    EXPECT_EQ(get(read, "FltLodSize"), "0");
}

TEST_F(FieldsTest, PackedColorsOfFacesAreThoseOfTheirFile) {
    INode* const face = recordNode(FltNodeKind::Face, polygon(kFltFace, 0));
    Bytes inFile = polygon(kFltFace, 0x22);
    keep(face, inFile);
    ASSERT_TRUE(set(face, "FltColorRed", "255"));
    ASSERT_TRUE(set(face, "FltAltColorAlpha", "0"));
    inFile[59] = 255;
    inFile[60] = 0;
    EXPECT_EQ(keptRecord(face), inFile);
    EXPECT_EQ(chunkBytes(face, kRecordChunk), polygon(kFltFace, 0));
    // A mesh of the host without a record has nowhere to keep them.
    INode* const plain = kindNode(FltNodeKind::Face);
    EXPECT_FALSE(set(plain, "FltColorRed", "255"));
    EXPECT_TRUE(sourceChunk(*plain, SourceChunk::records).empty());
    INode* const mesh = kindNode(static_cast<FltNodeKind>(kFltMesh));
    EXPECT_EQ(get(mesh, "FltTexture"), "none");
    EXPECT_FALSE(set(mesh, "FltTexture", "1"));
}

TEST_F(FieldsTest, MasksHaveNamesByTheirIndex) {
    INode* const node =
        recordNode(FltNodeKind::Switch,
                   RecordBytes(96, 40).int32(20, 2).int32(24, 1).int32(28, 3).int32(32, 1));
    const auto name = [](std::uint8_t index, const char* text) -> Bytes {
        return std::move(RecordBytes(132, 16).int32(4, index).text(8, text));
    };
    EXPECT_EQ(get(node, "FltSwitchMaskName1"), "");
    EXPECT_EQ(get(node, "FltSwitchMaskName2"), "none");
    ASSERT_TRUE(set(node, "FltSwitchMaskName1", "wreck"));
    EXPECT_EQ(attached(node), std::vector<Bytes>{name(1, "wreck")});
    EXPECT_THAT(fltFieldKeys(node),
                testing::ElementsAre("FltSwitchCurr", "FltSwitchMaskWidth", "FltSwitchMaskName0",
                                     "FltSwitchMaskName1"));
    // In front of the level of the children; doubled ones and those of no mask are not lost.
    const Bytes push = RecordBytes(10, 4), pop = RecordBytes(11, 8);
    keep(node, {}, {name(9, "old"), name(9, "two"), push, pop});
    ASSERT_TRUE(set(node, "FltSwitchMaskName0", "whole"));
    EXPECT_EQ(attached(node),
              (std::vector<Bytes>{name(9, "old"), name(9, "two"), name(0, "whole"), push, pop}));
    ASSERT_TRUE(set(node, "FltSwitchMaskName9", ""));
    EXPECT_EQ(attached(node), (std::vector<Bytes>{name(9, "two"), name(0, "whole"), push, pop}));
    ASSERT_TRUE(set(node, "FltSwitchMaskName1", ""));  // there is none
    EXPECT_EQ(attached(node).size(), 4U);
    EXPECT_FALSE(set(node, "FltSwitchMaskName0", std::string(70'000, 'x').c_str()));
    EXPECT_EQ(get(node, "FltSwitchMaskName0"), "whole");
}

TEST_F(FieldsTest, LayersAreThoseOfTheirRecord) {
    INode* const face = recordNode(FltNodeKind::Face, polygon(kFltFace, 0));
    const std::size_t keys = fltFieldKeys(face).size();
    EXPECT_FALSE(set(face, "FltLayer1Texture", "1"));
    // Layers 2 and 4, and bytes that nobody knows.
    RecordBytes layers = RecordBytes(kFltMultiTexture, 28).int32(4, 0x50000000).int16(8, 3);
    layers.int16(12, 0xFFFF).int16(16, 9).int16(18, 65534).int16(22, 5).int32(24, 0x1234);
    const Bytes other = RecordBytes(31, 8).text(4, "abc");
    keep(face, {}, {other, layers});
    EXPECT_EQ(fltFieldKeys(face).size(), keys + 8);
    EXPECT_EQ(get(face, "FltLayer2Texture") + get(face, "FltLayer2Mapping"), "3-1");
    EXPECT_EQ(get(face, "FltLayer4Effect") + " " + get(face, "FltLayer4Data"), "65534 5");
    EXPECT_EQ(get(face, "FltLayer3Texture"), "none");
    ASSERT_TRUE(set(face, "FltLayer4Mapping", "258"));
    ASSERT_TRUE(fltFieldSet(face, "FltLayer2Texture", "-1"));
    EXPECT_EQ(attached(face), (std::vector<Bytes>{other, layers.int16(20, 258).int16(8, 0xFFFF)}));
    EXPECT_FALSE(fltFieldSet(face, "FltLayer1Texture", "1"));
    EXPECT_STREQ(fltFieldKey("fltlayer7data"), "FltLayer7Data");
    // One that is cut has the layers that it has, and takes nothing else away.
    keep(face, {}, {RecordBytes(kFltMultiTexture, 18).int32(4, 0x50000000).int16(8, 3)});
    EXPECT_GE(fltFieldKeys(face).size(), keys);
    EXPECT_EQ(get(face, "FltTransparency"), "4369");
}

TEST_F(FieldsTest, ManyNodesAreReadAtOnce) {
    INode* const face = recordNode(FltNodeKind::Face, polygon(kFltFace, 0));
    INode* const plain = kindNode(FltNodeKind::Face);
    INode* const damaged = recordNode(FltNodeKind::Group, {0, 99, 0, 8, 0, 0, 0, 0});
    INode* const nodes[] = {face, nullptr, plain, damaged, kindNode(FltNodeKind::Group), dummy()};
    const std::string keys[] = {"FltTexture", "FltGrpLayer", "FltColorRed"};
    std::string shown;
    fltFieldsRead(nodes, keys, [&](INode&, std::span<const FltFieldValue> values) {
        for (const FltFieldValue& value : values)
            shown += (value.isThere ? value.text + (value.canSet ? "" : "!") : "-") + " ";
        shown += "| ";
    });
    EXPECT_EQ(shown, "4369 - 255 | -1 - 255! | - - - | - 0 - | - - - | ");
}

}  // namespace
