#include "fixture.h"

namespace {

class NameMakerTest : public HostTest {
protected:
    std::string made(const char* name) {
        CStr text(name);
        maker->MakeUniqueName(text);
        return text.str();
    }

    std::unique_ptr<NameMaker> maker{host.NewNameMaker()};
};

TEST_F(NameMakerTest, NumbersWhatIsTaken) {
    maker->AddName("g");
    EXPECT_EQ(made("g"), "g001");
    EXPECT_EQ(made("g"), "g002");
    EXPECT_EQ(made("free"), "free");
    EXPECT_EQ(made("free"), "free001");
    EXPECT_EQ(made("g001"), "g003") << "a number at the end is replaced, not extended";
    EXPECT_EQ(made("\xE6\xB0\xB4"), "\xE6\xB0\xB4");
    EXPECT_EQ(made("\xE6\xB0\xB4"),
              "\xE6\xB0\xB4"
              "001");
}

TEST_F(NameMakerTest, AvoidsNodesNamedLater) {
    maker->AddName("g");
    addNode("g001");
    INode* const second = addNode("x");
    second->SetName("g002");
    EXPECT_EQ(made("g"), "g003");
    EXPECT_TRUE(maker->NameExists("g002"));

    const std::unique_ptr<NameMaker> blind(host.NewNameMaker(false));
    EXPECT_FALSE(blind->NameExists("g002"));
}

TEST_F(NameMakerTest, FindsTheSmallestNumberThatIsFreeAgain) {
    maker->AddName("g");
    std::vector<INode*> nodes;
    nodes.reserve(1200);
    for (int i = 0; i < 1200; ++i) nodes.push_back(addNode(made("g").c_str()));
    EXPECT_STREQ(nodes[999]->GetName(), "g1000");
    nodes[4]->SetName("renamed");
    host.DeleteNode(nodes[1099]);
    addNode("g005");  // taken again behind the maker's back
    EXPECT_EQ(made("g"), "g1100");
    EXPECT_EQ(made("g"), "g1201");
    // "g0012" is no number of "g", and "renamed" frees nothing.
    INode* const padded = addNode("g0012");
    padded->SetName("other");
    EXPECT_EQ(made("g"), "g1202");
}

TEST_F(NameMakerTest, StartsAnewWithTheScene) {
    maker->AddName("g");
    EXPECT_EQ(made("g"), "g001");
    core.newScene();
    EXPECT_EQ(made("g"), "g001");
}

TEST_F(NameMakerTest, OutlivesTheHost) {
    maker->AddName("g");
    addNode("g001");
    kiln::Core::destroy();
    EXPECT_EQ(made("g"), "g001");
    // The next host's scene counts like any other.
    kiln::Core::create().hostInterface().CreateObjectNode(new DummyObject, "g001");
    EXPECT_EQ(made("g"), "g002");
    kiln::Core::destroy();
    maker.reset();
}

}  // namespace
