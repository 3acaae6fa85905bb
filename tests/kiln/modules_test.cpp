#include "fixture.h"

namespace {

using ::testing::HasSubstr;

struct SampleUtility : UtilityObj {
    void BeginEditParams(Interface*, IUtil* panel) override {
        log += "begin ";
        iu = panel;
    }
    void EndEditParams(Interface*, IUtil* panel) override {
        log += "end ";
        panel->CloseUtility();  // once is enough
        iu = nullptr;
    }
    void SelectionSetChanged(Interface* ip, IUtil*) override {
        log += std::to_string(ip->GetSelNodeCount()) + " ";
    }
    void DeleteThis() override {}

    std::string log;
    IUtil* iu = nullptr;
};
SampleUtility theUtility;

struct Attribute : CustAttrib {
    Class_ID ClassID() const override { return {7, 7}; }
};

template <SClass_ID kSuper, DWORD kId>
struct Description : ClassDesc2 {
    bool IsPublic() override { return true; }
    void* Create(bool) override {
        if constexpr (kSuper == CUST_ATTRIB_CLASS_ID)
            return static_cast<Animatable*>(new Attribute);
        else
            return &theUtility;
    }
    const char* ClassName() override { return "Sample"; }
    SClass_ID SuperClassID() override { return kSuper; }
    Class_ID ClassID() override { return {kId, kId}; }
    const char* Category() override { return ""; }
};
Description<UTILITY_CLASS_ID, 6> utilityDescription;
Description<CUST_ATTRIB_CLASS_ID, 7> attributeDescription;

DWORD version = KILN_SDK_VERSION;

kiln::ModuleExports sampleExports() {
    kiln::ModuleExports exports;
    exports.libDescription = [] { return "A sample"; };
    exports.libNumberClasses = [] { return 2; };
    exports.libClassDesc = [](int i) -> ClassDesc* {
        return i == 0 ? static_cast<ClassDesc*>(&utilityDescription) : &attributeDescription;
    };
    exports.libVersion = [] { return version; };
    return exports;
}

using ModulesTest = HostTest;

TEST_F(ModulesTest, RegistersAllClassesOrNone) {
    kiln::ModuleExports exports = sampleExports();
    version = 0x36B02500;
    EXPECT_EQ(kiln::registerModule("old", exports).message(),
              "old: built for SDK version 0x36B02500, this host has 0x36B02600");
    version = KILN_SDK_VERSION;
    exports.libNumberClasses = nullptr;
    EXPECT_THAT(kiln::registerModule("bare", exports).message(), HasSubstr("export is missing"));
    exports = sampleExports();
    exports.libClassDesc = [](int i) -> ClassDesc* {
        return i == 0 ? &attributeDescription : nullptr;
    };
    EXPECT_THAT(kiln::registerModule("short", exports).message(), HasSubstr("no descriptor"));
    exports.libClassDesc = [](int) -> ClassDesc* { return &attributeDescription; };
    EXPECT_THAT(kiln::registerModule("twice", exports).message(), HasSubstr("already"));
    exports.libClassDesc = [](int) -> ClassDesc* { throw 1; };
    EXPECT_FALSE(kiln::registerModule("throws", exports));
    EXPECT_TRUE(kiln::modules().empty());
    EXPECT_EQ(CreateInstance(CUST_ATTRIB_CLASS_ID, {7, 7}), nullptr);

    ASSERT_TRUE(kiln::registerModule("sample", sampleExports()));
    EXPECT_FALSE(kiln::registerModule("again", sampleExports()));
    ASSERT_EQ(kiln::modules().size(), 1u);
    EXPECT_EQ(kiln::modules()[0].description, "A sample");
    EXPECT_EQ(kiln::classesOf(UTILITY_CLASS_ID).size(), 1u);
    Animatable* const made = CreateInstance(CUST_ATTRIB_CLASS_ID, {7, 7});
    ASSERT_NE(made, nullptr);
    made->DeleteThis();
    EXPECT_EQ(CreateInstance(UTILITY_CLASS_ID, {6, 6}), nullptr) << "not a thing of a scene";
}

TEST_F(ModulesTest, UtilityOpensAndCloses) {
    ASSERT_TRUE(kiln::registerModule("sample", sampleExports()));
    theUtility.log.clear();
    EXPECT_FALSE(core.openUtility(&attributeDescription));
    ASSERT_TRUE(core.openUtility(&utilityDescription));
    EXPECT_EQ(core.openedUtility(), &utilityDescription);
    host.SelectNode(addNode("a"));
    theUtility.iu->CloseUtility();
    EXPECT_EQ(core.openedUtility(), nullptr);
    host.ClearNodeSelection();
    ASSERT_TRUE(core.openUtility(&utilityDescription));
    core.close();
    EXPECT_EQ(theUtility.log, "begin 1 end begin end ");
    EXPECT_TRUE(kiln::modules().empty());
    EXPECT_EQ(host.GetRootNode()->NumberOfChildren(), 0);
    EXPECT_EQ(kiln::Core::get(), &core) << "for windows that still tell it that they go";
    kiln::Core::destroy();
    EXPECT_EQ(theUtility.log, "begin 1 end begin end ") << "once";
}

TEST_F(ModulesTest, DirectoriesLoseTheirLastSeparator) {
    EXPECT_STREQ(GetDir(KILN_PLUGIN_DIR), "");
    EXPECT_TRUE(core.setDirectory(KILN_PLUGIN_DIR, "C:\\Kiln\\plugins\\"));
    EXPECT_STREQ(host.GetDir(0), "C:\\Kiln\\plugins");
    EXPECT_TRUE(core.setDirectory(KILN_SCENE_DIR, "C:\\"));
    EXPECT_STREQ(GetDir(KILN_SCENE_DIR), "C:\\");
    EXPECT_FALSE(core.setDirectory(KILN_DIR_COUNT, "x"));
    EXPECT_STREQ(host.GetDir(-1), "");
}

#ifdef _WIN32
TEST_F(ModulesTest, LoadsPluginFiles) {
    EXPECT_TRUE(kiln::loadModule(SAMPLE_PLUGINS "/goodplugin.dlu"));
    EXPECT_TRUE(kiln::loadModule(SAMPLE_PLUGINS "/goodplugin.dlu")) << "loaded already";
    const kiln::ModuleScan scan = kiln::scanModules(SAMPLE_PLUGINS);
    EXPECT_EQ(scan.loaded, 1);
    ASSERT_EQ(scan.refusals.size(), 1u);
    EXPECT_THAT(scan.refusals[0], HasSubstr("oldplugin.dlu: built for SDK version 0x36B02500"));
    ASSERT_EQ(kiln::modules().size(), 1u);
    EXPECT_EQ(kiln::modules()[0].description, "Sample \xE6\xB0\xB4");
    // What lives in the file: an attribute in the scene, and a published interface.
    Animatable* const attribute = CreateInstance(CUST_ATTRIB_CLASS_ID, {0x77, 1});
    ASSERT_NE(attribute, nullptr);
    root->AllocCustAttribContainer()->AppendCustAttrib(static_cast<CustAttrib*>(attribute));
    FPInterfaceDesc* const published = kiln::findInterface("SamplePlugin");
    ASSERT_NE(published, nullptr);
    FPValue result;
    EXPECT_EQ(kiln::callFunction(*published, "Throw", {}, result).message(),
              "SamplePlugin.Throw: failed");
    EXPECT_TRUE(kiln::callFunction(*published, "Text", {}, result));
    EXPECT_EQ(kiln::printed(result), "\"from the plug-in\"");

    const kiln::Status missing = kiln::loadModule(SAMPLE_PLUGINS "/none.dlu");
    EXPECT_THAT(missing.message(), HasSubstr("none.dlu: cannot be loaded: "));
    kiln::Core::destroy();
    EXPECT_EQ(GetModuleHandleW(L"goodplugin.dlu"), nullptr);
    EXPECT_EQ(kiln::findInterface("SamplePlugin"), nullptr);
}
#else
TEST_F(ModulesTest, HasNoPluginFilesHere) {
    EXPECT_FALSE(kiln::loadModule("x.dlu"));
    EXPECT_EQ(kiln::scanModules("/no/such/folder").loaded, 0);
}
#endif

}  // namespace
