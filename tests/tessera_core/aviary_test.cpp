#include "scene.h"

#include <fltkilnutil/kilnface.h>
#include <quillon/fltopcode.h>
#include <quillon/fltxref.h>

#include <cstring>
#include <stdexcept>
#include <string_view>

namespace {

constexpr Class_ID kTextureAttrClassId(0x6A3C1F07, 0x2E9D0005);

std::string chunkBytes(INode* node) {
    std::string all;
    for (int i = 0; i < node->NumAppDataChunks(); ++i) {
        const AppDataChunk* const chunk = node->GetAppDataChunk(i);
        all.append(static_cast<const char*>(chunk->data), chunk->length).append(1, '|');
    }
    return all;
}

class AviaryTest : public SceneTest {
protected:
    FPStatus call(FunctionID id, FPParams params = {}) {
        result = FPValue();
        return aviary.Invoke(id, 0, result, &params);
    }

    bool isTrue(FunctionID id, FPParams params) {
        EXPECT_EQ(call(id, std::move(params)), FPS_OK);
        EXPECT_EQ(result.type, TYPE_BOOL);
        return result.i != 0;
    }

    INode* addXRef(const char* file) {
        INode* const node = add(nullptr, "x", kFltExternalRef);
        FltXRef record;
        std::strncpy(record.fileName, file, sizeof record.fileName);
        EXPECT_TRUE(fltPutRecord(node, record));
        return node;
    }

    FPValue result;
};

TEST_F(AviaryTest, IsPublishedWithTheNamesScriptsDependOn) {
    const auto* const found =
        dynamic_cast<IAviaryUtil*>(GetCOREInterface(Interface_ID(0x6A3C1F07, 0x2E9D0002)));
    ASSERT_EQ(found, &aviary);
    const FPInterfaceDesc& desc = aviary.GetDesc();
    EXPECT_STREQ(desc.Name(), "Aviary");
    EXPECT_EQ(desc.Flags(), 4u);
    std::string published;
    for (const FPFunctionDesc& function : desc.Functions()) {
        published += std::to_string(function.id) + ' ' + function.name + ' ' +
                     std::to_string(function.result);
        for (const FPParamDesc& param : function.params())
            published += ' ' + std::string(param.name) + ':' + std::to_string(param.type);
        published += '\n';
        EXPECT_EQ(function.description, -1);
        EXPECT_EQ(function.flags, 0u);
    }
    EXPECT_EQ(published,
              "0 Browser 25\n1 RefreshBrowser 25\n3 GetLodDistance 0\n"
              "4 SetLodDistance 25 LodDistance:0\n5 IsLodDistanceSet 4\n6 LodLeastDetail 25\n"
              "7 LodLessDetail 25\n8 LodMoreDetail 25\n9 LodMostDetail 25\n10 CreateGroup 4\n"
              "11 CreateObject 4\n12 CreateSwitch 4\n13 CreateLOD 4\n14 CreateDOF 4\n"
              "15 CreateBSP 4\n16 CreateClipRegion 4\n17 CreateExternalRef 4\n"
              "18 CreateLightPoint 4\n19 GetComment 8 Node:17\n20 PutComment 4 Node:17 String:8\n"
              "21 HasData 4 node:17\n22 CopyData 4 srcnode:17 dstnode:17\n"
              "23 RemoveData 4 node:17\n24 GetLastImport 8\n25 IsOfType 4 Node:17 String:8\n"
              "26 SetKeepTriangles 4 Node:17 Flag:4\n27 GetKeepTriangles 4 Node:17\n"
              "28 AddTextureAttr 4 Texmap:15\n29 RemoveTextureAttr 4 Texmap:15\n"
              "30 GetExternalRefFilename 8 Node:17\n31 PutExternalRefFilename 4 Node:17 String:8\n"
              "32 GetExternalRefFlags 1 Node:17\n33 PutExternalRefFlags 4 Node:17 Flags:1\n");

    const std::pair<const char*, std::uint32_t> kBits[] = {
        {"OverrideColors", 0x80000000},     {"OverrideMaterials", 0x40000000},
        {"OverrideTextures", 0x20000000},   {"OverrideLineStyles", 0x10000000},
        {"OverrideSounds", 0x08000000},     {"OverrideLightSources", 0x04000000},
        {"OverrideLightPoints", 0x02000000}};
    ASSERT_EQ(desc.Properties().size(), std::size(kBits));
    for (std::size_t i = 0; i < std::size(kBits); ++i) {
        const FPPropertyDesc& property = desc.Properties()[i];
        EXPECT_STREQ(property.name, kBits[i].first);
        EXPECT_EQ(property.setter, FP_NO_FUNCTION);
        ASSERT_EQ(call(property.getter), FPS_OK);
        EXPECT_EQ(result.type, TYPE_INT);
        EXPECT_EQ(static_cast<std::uint32_t>(result.i), kBits[i].second);
    }
}

TEST_F(AviaryTest, RefusesUnknownIdsAndReachesTheUnpublishedOne) {
    EXPECT_EQ(call(-1), -1);
    EXPECT_EQ(call(41), -1);
    EXPECT_EQ(call(2), FPS_OK);
    EXPECT_EQ(result.type, TYPE_VOID);
    EXPECT_EQ(recordingBrowser().resets, 1);
}

TEST_F(AviaryTest, NothingIsDoneToNodesWithoutData) {
    INode* const plain = add(nullptr, "plain");
    const FPValue node = FPValue::Node(plain);
    for (const FPValue& target : {node, FPValue::Node(nullptr)}) {
        EXPECT_FALSE(isTrue(21, {target}));
        EXPECT_FALSE(isTrue(20, {target, FPValue::String("text")}));
        EXPECT_FALSE(isTrue(22, {target, node}));
        EXPECT_FALSE(isTrue(23, {target}));
        EXPECT_FALSE(isTrue(25, {target, FPValue::String("GROUP")}));
        EXPECT_FALSE(isTrue(26, {target, FPValue::Bool(true)}));
        EXPECT_FALSE(isTrue(27, {target}));
        EXPECT_FALSE(isTrue(31, {target, FPValue::String("a.flt")}));
        EXPECT_FALSE(isTrue(33, {target, FPValue::Int(1)}));
        EXPECT_EQ(call(32, {target}), FPS_OK);
        EXPECT_EQ(result.i, 0);
        for (const FunctionID getter : {19, 30}) {
            EXPECT_EQ(call(getter, {target}), FPS_OK);
            EXPECT_EQ(result.s, aviary.EmptyString());
            EXPECT_FALSE(result.OwnsString()) << "the shared empty text is never freed";
        }
    }
    EXPECT_EQ(plain->NumAppDataChunks(), 0);
    ASSERT_TRUE(fltPutComment(plain, "kept for a node that was one"));
    EXPECT_EQ(aviary.GetComment(plain), aviary.EmptyString());
    EXPECT_STREQ(aviary.EmptyString(), "");
}

TEST_F(AviaryTest, CommentsAndDataComeAndGo) {
    INode* const node = add(nullptr, "g", kFltGroup);
    const FPValue value = FPValue::Node(node);
    EXPECT_TRUE(isTrue(20, {value, FPValue::String("跑道灯")}));
    ASSERT_EQ(call(19, {value}), FPS_OK);
    EXPECT_STREQ(result.s, "跑道灯");
    EXPECT_TRUE(result.OwnsString());
    EXPECT_TRUE(isTrue(21, {value}));
    EXPECT_TRUE(isTrue(25, {value, FPValue::String("GROUP")}));
    EXPECT_FALSE(isTrue(25, {value, FPValue::String("FLT_GROUP")}));
    EXPECT_FALSE(isTrue(25, {value, FPValue::String("group")}));
    EXPECT_TRUE(isTrue(23, {value}));
    EXPECT_FALSE(isTrue(21, {value}));
    EXPECT_FALSE(isTrue(25, {value, FPValue::String("GROUP")}));
    // Scripts in the field compare with what is left of "UNDEFINED".
    EXPECT_TRUE(isTrue(25, {FPValue::Node(add(nullptr, "odd", 12)), FPValue::String("FINED")}));
}

TEST_F(AviaryTest, ExternalReferencesKeepFlagsWholeAndBoundTheirName) {
    const FPValue node = FPValue::Node(addXRef("tower.flt"));
    ASSERT_EQ(call(30, {node}), FPS_OK);
    EXPECT_STREQ(result.s, "tower.flt");
    EXPECT_TRUE(result.OwnsString());
    EXPECT_TRUE(isTrue(33, {node, FPValue::Int(5)}));
    ASSERT_EQ(call(32, {node}), FPS_OK);
    EXPECT_EQ(result.i, 5);
    // 199 bytes and then a character of three: it goes as a whole.
    EXPECT_TRUE(isTrue(31, {node, FPValue::String((std::string(199, 'n') + "塔.flt").c_str())}));
    ASSERT_EQ(call(30, {node}), FPS_OK);
    EXPECT_EQ(std::string(result.s), std::string(199, 'n'));
    EXPECT_TRUE(isTrue(31, {node, FPValue::String(std::string(500, 'n').c_str())}));
    ASSERT_EQ(call(30, {node}), FPS_OK);
    EXPECT_EQ(std::string(result.s), std::string(200, 'n'));
    ASSERT_EQ(call(32, {node}), FPS_OK);
    EXPECT_EQ(result.i, 5);
}

// Only what a node is stored as counts: neither the bytes that it also has, nor its host object.
TEST_F(AviaryTest, TheStoredKindIsWhatCounts) {
    INode* const node = addXRef("tower.flt");
    KilnFace options;
    options.keepTriangles = 1;
    ASSERT_TRUE(fltPutOptions(node, options));
    ASSERT_TRUE(fltEnsureKind(node, FltNodeKind::Group, kFltRevision));
    const std::string before = chunkBytes(node);
    const FPValue value = FPValue::Node(node);
    EXPECT_FALSE(isTrue(31, {value, FPValue::String("other.flt")}));
    EXPECT_FALSE(isTrue(33, {value, FPValue::Int(1)}));
    EXPECT_EQ(aviary.GetExternalRefFilename(node), aviary.EmptyString());
    EXPECT_EQ(aviary.GetExternalRefFlags(node), 0);
    EXPECT_FALSE(isTrue(27, {value})) << "a group keeps no triangles";
    EXPECT_EQ(chunkBytes(node), before);

    INode* const mesh = addMesh(nullptr, "mesh");
    ASSERT_TRUE(fltPutOptions(mesh, options));
    EXPECT_FALSE(isTrue(25, {FPValue::Node(mesh), FPValue::String("FACE")}));
    EXPECT_FALSE(isTrue(27, {FPValue::Node(mesh)})) << "it only looks like a face";
}

TEST_F(AviaryTest, KeepTrianglesMarksMeshesOnly) {
    INode* const mesh = addMesh(nullptr, "mesh");
    const FPValue node = FPValue::Node(mesh);
    EXPECT_FALSE(isTrue(27, {node}));
    EXPECT_TRUE(isTrue(26, {node, FPValue::Bool(true)}));
    EXPECT_TRUE(isTrue(27, {node}));
    EXPECT_TRUE(isTrue(26, {node, FPValue::Bool(false)}));
    EXPECT_FALSE(isTrue(27, {node}));
    KilnFace options;
    ASSERT_TRUE(fltGetOptions(mesh, options));
    EXPECT_EQ(options.useHostNormals, 1u) << "the other options stay";

    INode* const grouped = addMesh(nullptr, "grouped");
    fltEnsureKind(grouped, FltNodeKind::Group, kFltRevision);
    EXPECT_FALSE(isTrue(26, {FPValue::Node(grouped), FPValue::Bool(true)}));
    EXPECT_EQ(grouped->NumAppDataChunks(), 1) << "a refusal changes nothing";
}

/// The host's side of the texture attribute, which is a plug-in of its own.
class TextureAttr final : public CustAttrib {
public:
    Class_ID ClassID() const override { return kTextureAttrClassId; }
};

class TextureAttrDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return false; }
    void* Create(bool) override { return static_cast<Animatable*>(new TextureAttr); }
    const char* ClassName() override { return "Texture attribute"; }
    SClass_ID SuperClassID() override { return CUST_ATTRIB_CLASS_ID; }
    Class_ID ClassID() override { return kTextureAttrClassId; }
    const char* Category() override { return ""; }
};

TextureAttrDesc textureAttrDesc;

class OtherAttr final : public CustAttrib {
public:
    Class_ID ClassID() const override { return Class_ID(1, 2); }
};

class OtherMap final : public Texmap {
public:
    Class_ID ClassID() const override { return Class_ID(0x250, 0); }
};

TEST_F(AviaryTest, TextureAttributesStandFirstAndOnBitmapsAlone) {
    auto* const bitmap = new BitmapTex;
    auto* const other = new OtherMap;
    const auto add = [&](Texmap* map) { return isTrue(28, {FPValue::Map(map)}); };
    const auto remove = [&](Texmap* map) { return isTrue(29, {FPValue::Map(map)}); };
    const auto marks = [](Texmap* map) {
        const ICustAttribContainer& attributes = *map->GetCustAttribContainer();
        std::string all;
        for (int i = 0; i < attributes.GetNumCustAttribs(); ++i)
            all += attributes.GetCustAttrib(i)->ClassID() == kTextureAttrClassId ? 'm' : '-';
        return all;
    };
    host.AddTexmap(bitmap);
    host.AddTexmap(other);
    EXPECT_FALSE(remove(bitmap));
    EXPECT_FALSE(add(bitmap)) << "the host does not know the class yet";
    ASSERT_TRUE(kiln::registerModule(
        "textureattr", {[] { return "Texture attribute"; }, [] { return 1; },
                        [](int i) -> ClassDesc* { return i == 0 ? &textureAttrDesc : nullptr; },
                        [] { return KILN_SDK_VERSION; }}));
    ASSERT_TRUE(bitmap->AllocCustAttribContainer()->AppendCustAttrib(new OtherAttr));
    for (int time = 0; time < 2; ++time) {
        EXPECT_TRUE(add(bitmap));
        EXPECT_EQ(marks(bitmap), "m-");
    }
    // A scene from elsewhere may have several, and not in front.
    ASSERT_TRUE(bitmap->GetCustAttribContainer()->AppendCustAttrib(new TextureAttr));
    EXPECT_TRUE(remove(bitmap));
    EXPECT_EQ(marks(bitmap), "-m");
    EXPECT_TRUE(add(bitmap));
    EXPECT_EQ(marks(bitmap), "-m") << "it is there already";
    EXPECT_TRUE(remove(bitmap));
    EXPECT_FALSE(remove(bitmap));
    EXPECT_EQ(marks(bitmap), "-");

    EXPECT_FALSE(add(nullptr));
    EXPECT_FALSE(add(other));
    ASSERT_TRUE(other->AllocCustAttribContainer()->AppendCustAttrib(new TextureAttr));
    EXPECT_FALSE(add(other)) << "though one is there";
    EXPECT_FALSE(remove(other));
    EXPECT_EQ(marks(other), "m");
}

/// An attribute of somebody else's, at fault.
class ThrowingAttr final : public CustAttrib {
public:
    Class_ID ClassID() const override { throw std::runtime_error("not now"); }
};

TEST_F(AviaryTest, WhatOtherPluginsThrowIsAFailure) {
    auto* const bitmap = new BitmapTex;
    host.AddTexmap(bitmap);
    bitmap->AllocCustAttribContainer()->InsertCustAttrib(0, new ThrowingAttr);
    EXPECT_FALSE(aviary.AddTextureAttr(bitmap));
    EXPECT_FALSE(aviary.RemoveTextureAttr(bitmap));
    EXPECT_EQ(bitmap->GetCustAttribContainer()->GetNumCustAttribs(), 1);
}

TEST_F(AviaryTest, TheLastImportIsRememberedAndTitlesTheBrowser) {
    aviary.SetLastImport("airfield.flt");
    EXPECT_EQ(recordingBrowser().title, "airfield.flt");
    ASSERT_EQ(call(24), FPS_OK);
    aviary.SetLastImport("");
    EXPECT_STREQ(result.s, "airfield.flt") << "what a script holds stays as it was";
}

void damage(INode* node, DWORD subId, std::string_view text) {
    void* const bytes = KILN_malloc(text.size());
    std::memcpy(bytes, text.data(), text.size());
    node->AddAppDataChunk(Class_ID(0x6A3C1F07, 0x2E9D0001), 0xA10, subId,
                          static_cast<DWORD>(text.size()), bytes);
}

TEST_F(AviaryTest, DamagedChunksAreFailuresThatChangeNothing) {
    for (const std::string_view bytes :
         {std::string_view("\xFF\xFF\xFF"), std::string_view("\0", 1),
          std::string_view("\0\x3F\xFF\xFF tail", 9)}) {
        INode* const node = addXRef("tower.flt");
        INode* const face = addMesh(nullptr, "face");
        ASSERT_TRUE(aviary.SetKeepTriangles(face, 1));
        for (const DWORD part : {1u, 2u}) damage(node, part, bytes);
        damage(face, 3, bytes);
        const std::string before = chunkBytes(node) + chunkBytes(face);
        const FPValue value = FPValue::Node(node);
        const FPValue mesh = FPValue::Node(face);
        EXPECT_EQ(call(19, {value}), FPS_OK);
        EXPECT_STREQ(result.s, "");
        EXPECT_EQ(call(30, {value}), FPS_OK);
        EXPECT_STREQ(result.s, "");
        EXPECT_FALSE(result.OwnsString());
        EXPECT_EQ(call(32, {value}), FPS_OK);
        EXPECT_EQ(result.i, 0);
        EXPECT_FALSE(isTrue(31, {value, FPValue::String("a.flt")}));
        EXPECT_FALSE(isTrue(33, {value, FPValue::Int(1)}));
        EXPECT_FALSE(isTrue(27, {mesh}));
        EXPECT_FALSE(isTrue(26, {mesh, FPValue::Bool(true)}));
        EXPECT_EQ(chunkBytes(node) + chunkBytes(face), before);
        EXPECT_TRUE(isTrue(21, {value})) << "its kind is sound";

        // Without a sound kind block there is no OpenFlight node.
        damage(node, 0, bytes.substr(0, 3));
        EXPECT_FALSE(isTrue(21, {value}));
        EXPECT_FALSE(isTrue(25, {value, FPValue::String("EXTERNAL_REF")}));
        EXPECT_FALSE(isTrue(20, {value, FPValue::String("text")}));
        EXPECT_TRUE(isTrue(23, {value}));
        EXPECT_EQ(node->NumAppDataChunks(), 0);
    }
}

TEST_F(AviaryTest, ARefusedKeepTrianglesDoesNotMakeAFace) {
    INode* const mesh = addMesh(nullptr, "mesh");
    damage(mesh, 3, "damaged");
    EXPECT_FALSE(aviary.SetKeepTriangles(mesh, 1));
    EXPECT_FALSE(aviary.HasData(mesh));
    // A record that has lost its kind block belongs to nothing and is replaced.
    INode* const remains = addMesh(nullptr, "remains");
    damage(remains, 1, "damaged");
    EXPECT_TRUE(aviary.SetKeepTriangles(remains, 1));
    EXPECT_TRUE(aviary.GetKeepTriangles(remains));
}

}  // namespace
