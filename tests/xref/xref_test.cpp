// What becomes of references that are made local, and of nodes that become references.
#include "../palettes/palettescene.h"

#include <base/paths.h>
#include <fltkilnutil/sourcerecords.h>
#include <fltkilnutil/texturemaps.h>
#include <kiln/host/searchfolders.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltinstance.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>
#include <xref/references.h>

#include <gmock/gmock.h>

namespace {

Bytes reference(std::string_view name, std::uint32_t flags = 0) {
    return Bytes().field(name, 200).u32(0).u32(flags).u32(0);
}
Bytes instance(unsigned number) {
    return Bytes().u16(0).u16(number);
}

class XRefTest : public PaletteScene {
protected:
    XRefTest() {
        std::filesystem::create_directory(folder.path() / "models");
        core.setDirectory(KILN_IMPORT_DIR, folder.file(""));
    }

    /// A square 2 along x from the model's origin, in color 3.
    static FltBytes square(FltBytes file, std::string_view group, const FaceOf& face) {
        file.palette({{2, 0, 0}, {3, 0, 0}, {3, 1, 0}}).push().group(group).push();
        file.record(kFltFace, face.body("fa")).push().list({0, 1, 2}).pop().pop();
        return file;
    }
    static FltBytes withEntries(std::string_view first, std::string_view second) {
        FltBytes file;
        file.record(kFltTexture, textureEntry(first, 0));
        file.record(kFltTexture, textureEntry(second, 1));
        return file;
    }
    static std::filesystem::path fileOf(INode& node) {
        return base::pathFrom(xref::fileOf(node).value_or(std::string()));
    }
    static FltNodeKind kindOf(INode& node) {
        FltNodeKind kind{};
        EXPECT_TRUE(fltGetKind(&node, false, kind));
        return kind;
    }
    static std::string fileNamedBy(INode& node) {
        FltXRef record;
        EXPECT_TRUE(fltGetRecord(&node, record));
        return std::string(fltText(record.fileName));
    }
    static std::int16_t numberOf(INode& node) {
        FltInstanceRef use;
        FltInstanceDef definition;
        if (fltGetRecord(&node, use)) return use.instanceNumber;
        EXPECT_TRUE(fltGetRecord(&node, definition));
        return definition.instanceNumber;
    }
    /// Where the first corner of a face is in the world.
    Point3 cornerOf(const char* name) {
        INode& face = node(name);
        const Mesh& mesh = static_cast<TriObject*>(face.GetObjectRef())->GetMesh();
        return face.GetNodeTM(0).PointTransform(mesh.verts[0]);
    }
    std::vector<std::string> pictures() {
        std::vector<std::string> names;
        const palettes::Database all(*database);
        for (const palettes::Entry& entry : all.entries(Palette::kTexture))
            names.push_back(entry.name);
        return names;
    }
    std::string shownPicture(const char* name) {
        BitmapTex* const map = fltkilnutil::textureMapOf(node(name).GetTexmap());
        if (map == nullptr) return "none";
        return std::string(map->GetMapName()) + ' ' +
               std::to_string(fltkilnutil::markedIndex(*map));
    }
    /// Refused, with nothing changed and no step made; returns the reason.
    std::string refused(const std::function<void()>& action) {
        return refusal([&] {
                   try {
                       action();
                   } catch (const xref::Refusal& refused) {
                       reason_ = refused.what();
                       throw palettes::Refusal(palettes::CoreText::kNoTarget);
                   }
               }) == "done"
                   ? "done"
                   : reason_;
    }

private:
    std::string reason_;
};

TEST_F(XRefTest, AReferenceBecomesWhatItShowsInItsPlace) {
    folder.write("models/wood.rgb", Bytes().u8(1));
    folder.write("models/Inner.flt", FltBytes());
    FltBytes house = square(withEntries("wood.rgb", "far/none.rgb"), "house", {.texture = 0});
    house.record(kFltExternalRef, reference("inner.flt<oak>")).pop();
    folder.write("models/house.flt", house);
    FltBytes file;
    file.push().group("before");
    file.record(kFltExternalRef, reference("MODELS\\house.flt")).comment("kept").matrix(0, 5, 0);
    read(file.group("after").pop());
    const int maps = host.GetTexmapCount();
    INode& group = *database->GetChildNode(1);
    const std::string before = core.sceneText(), name = group.GetName();

    EXPECT_TRUE(std::filesystem::equivalent(fileOf(group), folder.file("models/house.flt")));
    xref::makeLocal(group);
    EXPECT_EQ(tree(), "airfield(before," + name + "(house(fa),x002),after)");
    EXPECT_EQ(kindOf(group), FltNodeKind::Group);
    EXPECT_EQ(cornerOf("fa"), (Point3{2, 5, 0}));
    std::string comment;
    EXPECT_TRUE(fltGetComment(&group, comment) && comment == "kept");
    // Names lead to where they did.
    // Where large and small letters are the same, folders keep those of the reference.
    EXPECT_THAT(fileNamedBy(node("x002")), testing::StrCaseEq("models/inner.flt<oak>"));
    EXPECT_THAT(pictures(), testing::ElementsAre(testing::StrCaseEq("models/wood.rgb")));
    EXPECT_THAT(shownPicture("fa"), testing::StrCaseEq("models/wood.rgb 0"));
    EXPECT_EQ(host.GetTexmapCount(), maps + 1) << "none for what nobody uses";
    expectUndoTo(before);
    // It is written as the group that it is now.
    const std::vector<std::uint8_t> written = exported();
    read(FltBytes());
    core.newScene();
    database = interchange::buildScene(interchange::readFileIndex(written), "out", report, host);
    EXPECT_EQ(cornerOf("fa"), (Point3{2, 5, 0}));
    EXPECT_EQ(kindOf(*database->GetChildNode(1)), FltNodeKind::Group);
}

TEST_F(XRefTest, EntriesAreFoundOrAddedUnlessTheReferenceHasTakenThePaletteOver) {
    const auto colors = [](unsigned third) {
        Bytes all = grays();
        all.vector()[128 + 4 * 3 + 3] = static_cast<std::uint8_t>(third);
        return all;
    };
    // Color 3 at full intensity.
    const FaceOf face{.color = 3 * 128 + 127, .texture = 1, .material = 0};
    for (const bool isTaken : {false, true}) {
        FltBytes model = withEntries("b.rgb", "a.rgb");
        model.record(kFltMaterial, materialEntry("other", 0));
        model.record(kFltColorPalette, colors(200));
        model = square(model, "g", face);
        model.group("unused").push();
        folder.write("m.flt", model.record(kFltFace, FaceOf{.texture = 0}.body("fb")).pop().pop());
        FltBytes file = withEntries("a.rgb", "c.rgb");
        file.record(kFltMaterial, materialEntry("ours", 0));
        file.record(kFltColorPalette, colors(100)).push().group("own").push();
        file.record(kFltFace, FaceOf{.color = 1023 * 128 + 127}.body("own face")).pop();
        file.record(kFltExternalRef, reference("m.flt", isTaken ? 0xE0000000 : 0));
        read(file.pop());
        const std::string before = core.sceneText();
        xref::makeLocal(*database->GetChildNode(1));
        const FltFace now = faceOf("fa");
        const std::uint32_t entry = now.primaryColorIndex >> 7;
        const palettes::Rgb color =
            palettes::colorAt(palettes::Database(*database), static_cast<std::int32_t>(entry));
        EXPECT_EQ(node("fa").GetWireColor() & 0xFF, color.red);
        EXPECT_EQ(now.primaryColorIndex & 127, 127U);
        if (isTaken) {
            EXPECT_EQ(entry, 3U);
            EXPECT_EQ(color.red, 100);
            EXPECT_THAT(pictures(), testing::ElementsAre("a.rgb", "c.rgb"));
            EXPECT_EQ(shownPicture("fa"), "c.rgb 1");
            EXPECT_EQ(now.materialIndex, 0);
        } else {
            EXPECT_EQ(entry, 1022U) << "the last that nobody uses";
            EXPECT_EQ(color.red, 200);
            EXPECT_THAT(pictures(), testing::ElementsAre("a.rgb", "c.rgb", "b.rgb"));
            EXPECT_EQ(shownPicture("fa"), "a.rgb 0") << "found";
            EXPECT_EQ(shownPicture("fb"), "b.rgb 2") << "added";
            EXPECT_EQ(now.materialIndex, 1);
        }
        expectUndoTo(before);
    }
}

// It needs 7, which needs 0. Of the scene there is another 7.
TEST_F(XRefTest, APartBringsTheInstancesThatItNeedsUnderNumbersOfTheirOwn) {
    FltBytes model;
    model.push().record(kFltInstanceDef, instance(7)).push().group("seen").push();
    model.record(kFltInstanceRef, instance(0)).pop().pop();
    model.record(kFltInstanceDef, instance(8)).push().group("unseen").pop();
    model.record(kFltInstanceDef, instance(0)).push().group("far").pop();
    model.group("here").matrix(1, 0, 0).push().group("there").matrix(0, 0, 4).push();
    model.record(kFltInstanceRef, instance(7)).pop().pop().pop();
    folder.write("m.flt", model);
    FltBytes file;
    file.push().record(kFltInstanceDef, instance(7)).push().group("ours").pop();
    file.record(kFltExternalRef, reference("m.flt<there>"));
    read(file.pop());
    INode& group = *database->GetChildNode(1);
    xref::makeLocal(group);
    EXPECT_EQ(kindOf(group), FltNodeKind::Group);
    ASSERT_EQ(group.NumberOfChildren(), 3);
    INode &definition = *group.GetChildNode(0), &inner = *group.GetChildNode(1),
          &there = *group.GetChildNode(2);
    EXPECT_EQ(std::string(there.GetName()), "there");
    EXPECT_EQ(there.GetNodeTM(0).GetTrans(), (Point3{1, 0, 4})) << "as far as from its origin";
    EXPECT_EQ(std::string(definition.GetChildNode(0)->GetName()), "seen");
    EXPECT_EQ(std::string(inner.GetChildNode(0)->GetName()), "far");
    EXPECT_EQ(numberOf(inner), 0) << "which is free";
    EXPECT_EQ(numberOf(definition), 1) << "7 and 0 are taken";
    EXPECT_EQ(numberOf(*there.GetChildNode(0)), 1);
    EXPECT_EQ(numberOf(*definition.GetChildNode(0)->GetChildNode(0)), 0);
    EXPECT_EQ(numberOf(*database->GetChildNode(0)), 7);
    EXPECT_EQ(host.GetINodeByName("unseen"), nullptr);
}

TEST_F(XRefTest, AReferenceBecomesWhatItsNodesCanHangBelow) {
    FltBytes model = square(FltBytes(), "g", {});
    model.record(kFltLightSource, Bytes().field("sun", 8).zeros(52));
    model.record(kFltInstanceRef, instance(3)).record(kFltInstanceDef, instance(3)).push();
    model.group("seen").pop().group("own").push().record(kFltInstanceDef, instance(4)).push();
    model.group("in").pop().record(kFltInstanceRef, instance(4)).pop();
    folder.write("m.flt", model.pop());
    folder.write("nothing.flt", FltBytes());
    FltBytes file;
    file.push();
    for (const char* const name : {"m.flt<fa>", "m.flt<sun>", "nothing.flt", "m.flt<own>", "m.flt"})
        file.record(kFltExternalRef, reference(name));
    read(file.pop());
    for (const auto& [kind, children] : {std::pair{FltNodeKind::Object, 1},
                                         {FltNodeKind::Group, 1},
                                         {FltNodeKind::Group, 0},
                                         {FltNodeKind::Group, 1},
                                         {FltNodeKind::Group, 5}}) {
        INode& next = *database->GetChildNode(0);
        xref::makeLocal(next);
        EXPECT_EQ(kindOf(next), kind) << next.GetName();
        EXPECT_EQ(next.NumberOfChildren(), children) << next.GetName();
        if (database->NumberOfChildren() > 1) host.DeleteNode(&next);
    }
    INode& whole = *database->GetChildNode(0);
    ASSERT_EQ(whole.NumberOfChildren(), 5);
    EXPECT_EQ(kindOf(*whole.GetChildNode(2)), FltNodeKind::InstanceRef) << "in the file's order";
    EXPECT_EQ(kindOf(*whole.GetChildNode(3)), FltNodeKind::InstanceDef);
}

TEST_F(XRefTest, FilesAreLookedForInTheUsersFoldersToo) {
    folder.write("models/elsewhere.flt", FltBytes());
    FltBytes file;
    read(file.push().record(kFltExternalRef, reference("elsewhere.flt")).pop());
    INode& node = *database->GetChildNode(0);
    EXPECT_EQ(xref::fileOf(node), std::nullopt);
    kiln::setSearchFolders(core, {folder.file("models")});
    EXPECT_TRUE(std::filesystem::equivalent(fileOf(node), folder.file("models/elsewhere.flt")));
    kiln::setSearchFolders(core, {});
}

TEST_F(XRefTest, WhatCannotBeMadeLocalStaysAsItIs) {
    folder.write("damaged.flt", Bytes().text("no such file"));
    folder.write("solo.flt", FltBytes("solo"));
    folder.write("good.flt", square(FltBytes(), "g", {}).pop());
    FltBytes file;
    file.push().group("g");
    for (const char* const name :
         {"none.flt", "damaged.flt", "good.flt<nowhere>", "<part>", "solo.flt<solo>"})
        file.record(kFltExternalRef, reference(name));
    read(file.pop());
    const auto reason = [&](int child) {
        return refused([&] { xref::makeLocal(*database->GetChildNode(child)); });
    };
    EXPECT_THAT(reason(0), testing::HasSubstr("no reference"));
    EXPECT_THAT(reason(1), testing::HasSubstr("none.flt"));
    EXPECT_THAT(reason(2), testing::HasSubstr("damaged.flt"));
    EXPECT_THAT(reason(3), testing::HasSubstr("nowhere"));
    EXPECT_THAT(reason(4), testing::HasSubstr("names no file"));
    EXPECT_THAT(reason(5), testing::HasSubstr("solo")) << "a file is no part of itself";
    EXPECT_THAT(refused([&] { xref::makeLocal(*host.GetRootNode()); }),
                testing::HasSubstr("no reference"));
    INode& loose = *database->GetChildNode(3);
    loose.Detach(0);
    EXPECT_THAT(refused([&] { xref::makeLocal(loose); }), testing::HasSubstr("no database"));
}

TEST_F(XRefTest, AReferenceBackToItsFileIsOneMoreReference) {
    FltBytes file;
    file.push().group("g").record(kFltExternalRef, reference("loop.flt")).pop();
    folder.write("loop.flt", file);
    read(file);
    xref::makeLocal(*database->GetChildNode(1));
    EXPECT_EQ(tree(), "airfield(g,x001(g,x002))");
    EXPECT_EQ(kindOf(node("x002")), FltNodeKind::XRef);
}

TEST_F(XRefTest, ANodeIsWrittenAboutItsOriginAndAReferenceStandsInItsPlace) {
    folder.write("wood.rgb", Bytes().u8(1));
    folder.write("other.flt", FltBytes());
    FltBytes file = withEntries("wood.rgb", "b.rgb");
    file.palette({{2, 0, 0}, {3, 0, 0}, {3, 1, 0}})
        .push()
        .group("before")
        .group("m")
        .matrix(0, 5, 0)
        .record(kFltReplicate, Bytes().u16(1).u16(0));
    file.push().record(kFltFace, FaceOf{.texture = 0}.body("fa")).push().list({0, 1, 2}).pop();
    const std::string absolute = folder.file("other.flt");
    file.record(kFltExternalRef, reference("other.flt"));
    file.record(kFltExternalRef, reference(absolute)).pop().group("after");
    read(file.pop());
    INode& model = node("m");
    fltPutComment(&model, "of the model");
    const std::string before = core.sceneText(), path = folder.file("models/m.flt");
    EXPECT_FALSE(fltkilnutil::sourceRecordsOf(model).attached.empty());
    EXPECT_EQ(xref::collapse(model, path, false), "models/m.flt");
    EXPECT_EQ(tree(), "airfield(before,m,after)");
    EXPECT_EQ(kindOf(model), FltNodeKind::XRef);
    EXPECT_EQ(fileNamedBy(model), "models/m.flt");
    EXPECT_TRUE(fltkilnutil::sourceRecordsOf(model).attached.empty()) << "that is in the file";
    std::string comment;
    EXPECT_FALSE(fltGetComment(&model, comment) && !comment.empty()) << "as is this";
    EXPECT_EQ(model.GetNodeTM(0).GetTrans(), (Point3{0, 5, 0}));
    EXPECT_THAT(pictures(), testing::ElementsAre("wood.rgb", "b.rgb")) << "the scene's stay";
    expectUndoTo(before);
    EXPECT_THAT(refused([&] { xref::collapse(node("before"), path, false); }),
                testing::HasSubstr("there already"));

    // Back again, it is where it was; the file has names as its folder needs them.
    EXPECT_EQ(fileOf(model), base::pathFrom(path));
    xref::makeLocal(model);
    EXPECT_EQ(cornerOf("fa"), (Point3{2, 5, 0}));
    EXPECT_EQ(shownPicture("fa"), "wood.rgb 0");
    EXPECT_THAT(pictures(), testing::ElementsAre("wood.rgb", "b.rgb"));
    core.newScene();
    core.setDirectory(KILN_IMPORT_DIR, folder.file("models"));
    database = import(FltFileBytes::load(path).bytes());
    EXPECT_EQ(cornerOf("fa"), (Point3{2, 0, 0}));
    EXPECT_THAT(pictures(), testing::ElementsAre("../wood.rgb", "b.rgb"));
    EXPECT_EQ(fileNamedBy(node("x001")), "../other.flt");
    EXPECT_EQ(fileNamedBy(node("x002")), absolute);
    EXPECT_TRUE(fltGetComment(database->GetChildNode(0), comment) && comment == "of the model");
    // An older file gives way when it may.
    EXPECT_EQ(xref::collapse(*database->GetChildNode(0), path, true), "m.flt");
    // What only it shows itself goes with it.
    read(FltBytes()
             .push()
             .group("g")
             .push()
             .record(kFltInstanceDef, instance(1))
             .push()
             .group("seen")
             .pop()
             .record(kFltInstanceRef, instance(1))
             .pop()
             .pop());
    EXPECT_EQ(xref::collapse(*database->GetChildNode(0), folder.file("OWN.FLT"), false),
              "../OWN.FLT");
}

TEST_F(XRefTest, WhatCannotBecomeAReferenceStaysAsItIs) {
    FltBytes file;
    file.palette({{2, 0, 0}, {3, 0, 0}, {3, 1, 0}}).push().group("g").push();
    file.record(kFltInstanceDef, instance(1)).push().group("shown").pop();
    file.object("o").push().polygon("fa", {0, 1, 2}).pop().pop();
    file.record(kFltInstanceRef, instance(1)).record(kFltExternalRef, reference("a.flt"));
    read(file.pop());
    const auto reason = [&](INode& node, const std::string& name) {
        return refused([&] { xref::collapse(node, folder.file(name.c_str()), false); });
    };
    const std::size_t files = folder.fileCount();
    for (INode* const wrong :
         {&node("fa"), database, node("g").GetChildNode(0), database->GetChildNode(1),
          database->GetChildNode(2), host.GetRootNode()})
        EXPECT_THAT(reason(*wrong, "m.flt"), testing::HasSubstr("cannot stand for"));
    EXPECT_THAT(reason(node("g"), "m.flt"), testing::HasSubstr("instances elsewhere"));
    EXPECT_THAT(reason(node("o"), "m.txt"), testing::HasSubstr(".flt"));
    EXPECT_THAT(reason(node("o"), "none/m.flt"), testing::HasSubstr("cannot write"));
    EXPECT_THAT(reason(node("o"), std::string(197, 'm') + ".flt"), testing::HasSubstr("too long"));
    EXPECT_EQ(folder.fileCount(), files);
}

}  // namespace
