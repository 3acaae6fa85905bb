#include <fstream>

#include "fixture.h"

namespace {

using ::testing::ElementsAre;

// Makes a node "old parent" > "new" > "old child" and a map, then ends as it was told to.
struct SampleImport : SceneImport {
    enum class End { kSuccess, kFail, kThrow, kCancelled };
    static End end;

    int ExtCount() override { return 2; }
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

class ImportTest : public HostTest {
protected:
    ImportTest() {
        kiln::ModuleExports exports;
        exports.libDescription = [] { return "importer"; };
        exports.libNumberClasses = [] { return 1; };
        exports.libClassDesc = [](int) -> ClassDesc* { return &description; };
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

    SampleImport::end = SampleImport::End::kSuccess;
    EXPECT_TRUE(core.openImported("a.smp").ok());
    EXPECT_FALSE(host.IsNodeInScene(child));
    EXPECT_NE(host.GetINodeByName("new"), nullptr);
    EXPECT_EQ(host.GetINodeByName("old parent"), nullptr);
    EXPECT_EQ(host.GetTexmapCount(), 1);
    EXPECT_EQ(host.GetSelNodeCount(), 0);
    EXPECT_FALSE(core.isModified());
}

}  // namespace
