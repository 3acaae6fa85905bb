#include "framework_test.h"

#include <framework/module.h>
#include <framework/strings.h>
#include <gtest/gtest.h>

#include <stdexcept>

using framework::ModuleScope, framework::loadString, framework::moduleInstance,
    framework::resourceInstance, framework::setLanguageSource, framework::setResourceInstance;

namespace {

HANDLE activeContext() {
    HANDLE context = nullptr;
    ::GetCurrentActCtx(&context);
    if (context) ::ReleaseActCtx(context);
    return context;
}

class LanguageTest : public ::testing::Test {
protected:
    void TearDown() override { setLanguageSource(nullptr); }
};

}  // namespace

TEST(StringResource, HasOneBufferForAllTexts) {
    const std::string& first = loadString(IDS_HIERARCHY);
    EXPECT_EQ(first, "层次");
    const std::string& second = loadString(IDS_VALUE);
    EXPECT_EQ(second, "值");
    EXPECT_EQ(first, "值");
    EXPECT_EQ(loadString(9999), "");
}

TEST_F(LanguageTest, OfStringsIsThatOfTheSourceWhateverTheMachineSpeaks) {
    EXPECT_EQ(loadString(IDS_HIERARCHY), "层次");
    setLanguageSource([]() noexcept { return base::Language::kEnglish; });
    EXPECT_EQ(loadString(IDS_HIERARCHY), "Hierarchy");
    EXPECT_EQ(loadString(IDS_VALUE), "值") << "Chinese where there is no English";
    EXPECT_EQ(loadString(IDS_GERMAN), "Wert") << "the only one there is";
}

TEST(ModuleScope, SwitchesResourcesAndContextAndRestoresThemOnEveryWayOut) {
    const HANDLE callers = activeContext();
    const HINSTANCE foreign = ::GetModuleHandleW(L"user32.dll");
    setResourceInstance(foreign);
    try {
        const ModuleScope scope;
        EXPECT_EQ(resourceInstance(), moduleInstance());
        const HANDLE own = activeContext();
        EXPECT_NE(own, callers);
        {
            const ModuleScope inner;
            EXPECT_EQ(activeContext(), own);
        }
        EXPECT_EQ(activeContext(), own);
        throw std::runtime_error("leaving");
    } catch (const std::runtime_error&) {
    }
    EXPECT_EQ(resourceInstance(), foreign);
    EXPECT_EQ(activeContext(), callers);
    setResourceInstance(nullptr);
    EXPECT_EQ(resourceInstance(), moduleInstance());
}
