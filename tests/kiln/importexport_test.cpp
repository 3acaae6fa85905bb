#include <fstream>

#include "fixture.h"

namespace {

using ::testing::ElementsAre;

// Makes a node "old parent" > "new" > "old child" and a map, then ends as it was told to.
struct SampleImport : SceneImport {
    enum class End { kSuccess, kFail, kThrow, kCancelled, kThrowWhenAsked };
    static End end;

    int ExtCount() override {
        if (end == End::kThrowWhenAsked) throw std::runtime_error("broken");
        return 2;
    }
    const char* Ext(int index) override { return index == 0 ? "smp" : "sample"; }
    const char* ShortDesc() override { return "Sample scene"; }
    int DoImport(const char* path, ImpExpReport& report, Interface* ip) override {
        INode* const made = ip->CreateObjectNode(new DummyObject, "new");
        if (INode* const parent = ip->GetINodeByName("old parent")) parent->AttachChild(made);
        made->AttachChild(ip->GetINodeByName("old child"));
        ip->CreateObjectNode(new DummyObject, "new too");
        ip->AddTexmap(new BitmapTex);
        report.Summary(path);
        if (!report.Progress(0.5, "half")) return IMPEXP_CANCEL;
        if (end == End::kThrow) throw std::runtime_error("broken");
        if (end == End::kSuccess) return IMPEXP_SUCCESS;
        report.Error("byte 12 is wrong");
        report.Cause(ImpExpCause::kVersion);
        return IMPEXP_FAIL;
    }
};
SampleImport::End SampleImport::end;

struct SampleDescription : ClassDesc2 {
    bool IsPublic() override { return true; }
    void* Create(bool) override { return static_cast<SceneImport*>(new SampleImport); }
    const char* ClassName() override { return "Sample"; }
    SClass_ID SuperClassID() override { return SCENE_IMPORT_CLASS_ID; }
    Class_ID ClassID() override { return {0x99, 0}; }
    const char* Category() override { return ""; }
} description;

// Of which a file holds one child of the root; where only what is selected is written, a selected
// one.
struct SampleExport : SceneExport {
    static std::string written;

    int ExtCount() override { return 1; }
    const char* Ext(int) override { return "smp"; }
    const char* ShortDesc() override { return "Sample scene"; }
    void Parts(Interface* ip, DWORD options, Tab<INode*>& parts) override {
        for (int i = 0; i < ip->GetRootNode()->NumberOfChildren(); ++i) {
            INode* const part = ip->GetRootNode()->GetChildNode(i);
            if ((options & SCENE_EXPORT_SELECTED) == 0 || part->Selected()) parts.Append(part);
        }
    }
    CStr PartFileName(INode* part) override {
        const std::string name = part->GetName();
        return name == "new" ? "" : CStr(name.substr(0, 3) + ".smp");
    }
    CStr LeftOut(Interface*, DWORD, INode* part) override {
        return part != nullptr ? CStr(std::string("all but ") + part->GetName()) : CStr();
    }
    int DoExport(const char* path, ImpExpReport&, Interface*, DWORD, INode* part) override {
        written = part != nullptr ? part->GetName() : "all";
        if (std::string(path).find("full disk") != std::string::npos) return IMPEXP_FAIL;
        std::ofstream(path) << written;
        return IMPEXP_SUCCESS;
    }
};
std::string SampleExport::written;

struct SampleExportDescription : SampleDescription {
    void* Create(bool) override { return static_cast<SceneExport*>(new SampleExport); }
    SClass_ID SuperClassID() override { return SCENE_EXPORT_CLASS_ID; }
} exportDescription;

class ImportTest : public HostTest {
protected:
    explicit ImportTest(int classes = 1) {
        static int count;
        count = classes;
        kiln::ModuleExports exports;
        exports.libDescription = [] { return "importer"; };
        exports.libNumberClasses = [] { return count; };
        exports.libClassDesc = [](int index) -> ClassDesc* {
            return index == 0 ? &description : &exportDescription;
        };
        exports.libVersion = [] { return KILN_SDK_VERSION; };
        EXPECT_TRUE(kiln::registerModule("importer", exports));
        addNode("old child")->SetNodeTM(0, TransMatrix({1, 2, 3}));
        addNode("old parent");
    }
};

TEST_F(ImportTest, FindsTheImporterByExtension) {
    const auto kinds = core.importKinds();
    ASSERT_EQ(kinds.size(), 1u);
    EXPECT_THAT(kinds[0].extensions, ElementsAre("smp", "sample"));
    SampleImport::end = SampleImport::End::kSuccess;
    const kiln::ImportResult done = core.importFile("dir.x/a.SAMPLE");
    EXPECT_TRUE(done.ok());
    EXPECT_EQ(done.message, "dir.x/a.SAMPLE");
    EXPECT_EQ(host.GetNodeCount(), 4);
    EXPECT_EQ(core.importFile("a.xyz").message, "a.xyz: no plug-in imports files of type \"xyz\"");
    EXPECT_FALSE(core.exportFile("a.smp").ok());
}

TEST_F(ImportTest, TakesEverythingBackAfterAFailure) {
    using End = SampleImport::End;
    const std::pair<End, std::string> ends[] = {
        {End::kFail, "byte 12 is wrong"},
        {End::kThrow, "the importer failed unexpectedly"},
        {End::kCancelled, "cancelled"},
    };
    for (const auto& [end, message] : ends) {
        SampleImport::end = end;
        core.setModified(false);
        const bool cancel = end == End::kCancelled;
        const kiln::ImportResult result =
            core.importFile("a.smp", [&](double, const char*) { return !cancel; });
        EXPECT_EQ(result.code, cancel ? IMPEXP_CANCEL : IMPEXP_FAIL);
        EXPECT_EQ(result.message, message);
        EXPECT_EQ(result.cause == ImpExpCause::kVersion, end == End::kFail);
        EXPECT_FALSE(core.isModified());
        EXPECT_EQ(host.GetNodeCount(), 2);
        EXPECT_EQ(host.GetTexmapCount(), 0);
        INode* const child = host.GetINodeByName("old child");
        ASSERT_NE(child, nullptr) << "what was there before stays, wherever it had been put";
        EXPECT_EQ(child->GetNodeTM(0).GetTrans(), (Point3{1, 2, 3}));
    }
}

TEST_F(ImportTest, OpensAFileInPlaceOfTheSceneOrLeavesTheSceneAlone) {
    INode* const child = host.GetINodeByName("old child");
    host.SelectNode(child);
    for (const bool wasModified : {true, false}) {
        core.setModified(wasModified);
        SampleImport::end = SampleImport::End::kFail;
        EXPECT_EQ(core.openImported("a.smp").message, "byte 12 is wrong");
        EXPECT_TRUE(host.IsNodeInScene(child));
        EXPECT_EQ(host.GetSelNode(0), child);
        EXPECT_EQ(host.GetNodeCount(), 2);
        EXPECT_EQ(core.isModified(), wasModified);
    }
    EXPECT_FALSE(core.openImported("a.xyz").ok());
    EXPECT_TRUE(host.IsNodeInScene(child));
    SampleImport::end = SampleImport::End::kThrowWhenAsked;
    EXPECT_THROW(core.openImported("a.smp"), std::runtime_error);
    EXPECT_TRUE(host.IsNodeInScene(child));

    SampleImport::end = SampleImport::End::kSuccess;
    EXPECT_TRUE(core.openImported("a.smp").ok());
    EXPECT_FALSE(host.IsNodeInScene(child));
    EXPECT_NE(host.GetINodeByName("new"), nullptr);
    EXPECT_EQ(host.GetINodeByName("old parent"), nullptr);
    EXPECT_EQ(host.GetTexmapCount(), 1);
    EXPECT_EQ(host.GetSelNodeCount(), 0);
    EXPECT_FALSE(core.isModified());
}

struct ExportPartTest : ImportTest {
    ExportPartTest() : ImportTest(2) {}

    std::string exported(const kiln::ExportChoice& choice) {
        SampleExport::written = "nothing";
        const TemporaryFolder folder{u8"exported"};
        const kiln::ImportResult result = core.exportFile(folder.file("a.smp"), choice);
        EXPECT_EQ(result.ok(), SampleExport::written != "nothing");
        return result.ok() ? SampleExport::written : result.message;
    }
};

TEST_F(ExportPartTest, AsksWhichOfSeveralPartsAFileIsToHold) {
    INode* const child = host.GetINodeByName("old child");
    const std::string list = "The scene has \"old child\" (old.smp), \"old parent\" (old.smp)";
    EXPECT_EQ(exported({}), "which one is to be exported? " + list);
    EXPECT_EQ(exported({0, child}), "old child");
    EXPECT_EQ(exported({0, nullptr, "old parent"}), "old parent");
    for (const char* unclear : {"old.smp", "child"})
        EXPECT_EQ(exported({0, nullptr, unclear}),
                  "which one is \"" + std::string(unclear) + "\"? " + list);
    EXPECT_EQ(exported({SCENE_EXPORT_SELECTED, nullptr, "old.smp"}),
              "which one is \"old.smp\"? The scene has none");

    EXPECT_EQ(exported({SCENE_EXPORT_SELECTED, child}),
              "which one is to be exported? The scene has none");
    EXPECT_EQ(exported({SCENE_EXPORT_SELECTED}), "all");

    // One that is left needs no choice, but a choice that is not it stays one.
    addNode("inner", child);
    host.SelectNode(child);
    EXPECT_EQ(exported({SCENE_EXPORT_SELECTED}), "all");
    EXPECT_EQ(exported({SCENE_EXPORT_SELECTED, nullptr, "old.smp"}), "old child");
    const std::string other = "which one is to be exported? The scene has \"old child\" (old.smp)";
    EXPECT_EQ(exported({SCENE_EXPORT_SELECTED, host.GetINodeByName("old parent")}), other);
    INode* const deleted = host.GetINodeByName("old parent");
    host.DeleteNode(deleted);
    EXPECT_EQ(exported({0, deleted}), other);
    child->SetName("new");
    EXPECT_EQ(exported({0, deleted}), "which one is to be exported? The scene has \"new\"");
}

// A scene that was opened from a foreign file has its home there.
TEST_F(ExportPartTest, AForeignFileIsTheScenesFileOnceItWasOpenedOrSavedThere) {
    const TemporaryFolder folder{u8"foreign"};
    const std::string path = folder.file("a.smp"), other = folder.file("b.smp");
    std::ofstream(path) << "as it was";
    SampleImport::end = SampleImport::End::kSuccess;
    ASSERT_TRUE(core.openImported(path).ok());
    EXPECT_FALSE(core.fileWasChanged(path));
    std::ofstream(path) << "another's, and longer";
    EXPECT_TRUE(core.fileWasChanged(path)) << "somebody else has written it";

    const kiln::ExportChoice all{0, host.GetINodeByName("new")};
    EXPECT_EQ(core.leftOutOfExport(path, all), "all but new");
    EXPECT_EQ(core.leftOutOfExport("a.xyz", all), "");
    core.setModified(true);
    Recorder recorder({NOTIFY_SCENE_SAVED});
    ASSERT_TRUE(core.exportFile(path, all).ok());
    EXPECT_FALSE(core.fileWasChanged(path)) << "it is the scene's own work";
    EXPECT_TRUE(core.isModified()) << "an export saves nothing";
    EXPECT_FALSE(core.saveExported(folder.file("full disk.smp"), all).ok());
    EXPECT_TRUE(core.isModified());
    EXPECT_TRUE(recorder.seen.empty());
    ASSERT_TRUE(core.saveExported(other, all).ok());
    EXPECT_FALSE(core.isModified());
    EXPECT_THAT(recorder.seen, ElementsAre(NOTIFY_SCENE_SAVED));
    std::ofstream(other) << "another's";
    EXPECT_TRUE(core.fileWasChanged(other));
    EXPECT_FALSE(core.fileWasChanged(path));
}

}  // namespace
