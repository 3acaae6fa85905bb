#include "loadedmodule.h"

#include <tessera/browserexports.h>
#include <tessera/iaviaryutil.h>

namespace {

TEST(ModuleExports, DescribeOneUtility) {
    EXPECT_EQ(exported<DWORD (*)()>("LibVersion")(), 0x36B02600u);
    EXPECT_EQ(exported<int (*)()>("LibNumberClasses")(), 1);
    EXPECT_STREQ(exported<const char* (*)()>("LibDescription")(), "Aviary (C)");
    const auto classDesc = exported<ClassDesc* (*)(int)>("LibClassDesc");
    EXPECT_EQ(classDesc(1), nullptr);
    EXPECT_EQ(classDesc(-1), nullptr);
    ClassDesc* const utility = classDesc(0);
    ASSERT_TRUE(utility);
    EXPECT_EQ(utility->ClassID(), Class_ID(0x6A3C1F07, 0x2E9D0002));
    EXPECT_EQ(utility->SuperClassID(), 0x1020u);
    EXPECT_STREQ(utility->ClassName(), "Aviary (C)");
    EXPECT_STREQ(utility->Category(), "");
    void* const object = utility->Create(false);
    EXPECT_TRUE(object);
    EXPECT_EQ(utility->Create(true), object) << "there is one utility, and it is static";
}

TEST(ModuleExports, BuildTheTwoFieldsOfVertexNormalsControl) {
    struct Fields {
        int enabled;
        void* normals;
    } fields{7, &fields};
    exported<void (*)(Fields*)>("_ZN20VertexNormalsControlC1Ev")(&fields);
    EXPECT_EQ(fields.enabled, 1);
    EXPECT_EQ(fields.normals, nullptr);
}

TEST(ModuleExports, AreHarmlessWithoutAForm) {
    loadedModule();
    EXPECT_FALSE(exported<bool (*)(std::uint8_t)>("_zufltguishow")(1));
    EXPECT_EQ(exported<decltype(&_zufltguiaddnode)>("_zufltguiaddnode")(nullptr, "a", 1), nullptr);
    EXPECT_FALSE(exported<decltype(&_zufltguidelnode)>("_zufltguidelnode")(nullptr));
    EXPECT_FALSE(exported<decltype(&_zufltguidelchildren)>("_zufltguidelchildren")(nullptr));
    EXPECT_EQ(exported<decltype(&_zufltguinode2hdl)>("_zufltguinode2hdl")(nullptr), 0u);
    EXPECT_FALSE(exported<decltype(&_zufltguiselectnode)>("_zufltguiselectnode")(nullptr));
    exported<void (*)()>("_zufltguidestroy")();
    exported<void (*)()>("zufltguirefresh")();
    exported<void (*)()>("zufltguiSceneChanged")();
    exported<void (*)()>("zufltguiresetpos")();
}

// The header that plug-ins compile leaves nothing of the kind in this program.
TEST(ModuleExports, GiveEveryPluginTheSameEmptyText) {
    loadedModule();
    auto& aviary = *static_cast<IAviaryUtil*>(GetCOREInterface(kAviaryInterfaceId));
    INode* const plain = GetCOREInterface()->CreateObjectNode(new DummyObject);
    EXPECT_STREQ(aviary.EmptyString(), "");
    EXPECT_EQ(aviary.GetExternalRefFilename(plain), aviary.EmptyString());
    EXPECT_EQ(aviary.GetComment(plain), aviary.EmptyString());
    kiln::Core::create().newScene();
}

TEST(ModuleExports, PublishAviaryToTheHost) {
    loadedModule();
    FPInterfaceDesc* const found = kiln::findInterface("Aviary");
    ASSERT_TRUE(found);
    EXPECT_EQ(found, GetCOREInterface(kAviaryInterfaceId));
    FPValue result;
    ASSERT_TRUE(kiln::callFunction(*found, "CreateLOD", {}, result));
    EXPECT_EQ(result.i, 1);
    INode* const node = GetCOREInterface()->GetRootNode()->GetChildNode(0);
    const kiln::Status typed = kiln::callFunction(
        *found, "IsOfType", {{"String", FPValue::String("LOD")}, {"Node", FPValue::Node(node)}},
        result);
    ASSERT_TRUE(typed.ok()) << typed.message();
    EXPECT_EQ(result.i, 1);
    EXPECT_FALSE(kiln::callFunction(*found, "HasData", {{"Node", FPValue::Node(node)}}, result))
        << "its keyword is \"node\"";
    EXPECT_TRUE(kiln::callFunction(*found, "HasData", {{"node", FPValue::Node(node)}}, result));
    kiln::Core::create().newScene();
}

}  // namespace
