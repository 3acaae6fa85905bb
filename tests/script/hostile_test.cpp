#include "enginefixture.h"

using testing::HasSubstr;

namespace {

using HostileTest = EngineTest;

std::string repeated(const std::string& part, int count) {
    std::string text;
    for (int i = 0; i < count; ++i) text += part;
    return text;
}

TEST_F(HostileTest, DeepNestingIsRefused) {
    const struct {
        const char* open;
        const char* inner;
        const char* close;
    } cases[] = {{"(", "1", ")"},  {"#(", "1", ")"},          {"abs(", "1", ")"},
                 {"- ", "1", ""},  {"not ", "true", ""},      {"fn f = ", "1", ""},
                 {"a[", "1", "]"}, {"if true then ", "1", ""}};
    for (const auto& c : cases) {
        EXPECT_THAT(bad(repeated(c.open, 20000) + c.inner + repeated(c.close, 20000)),
                    HasSubstr("within each other"))
            << c.open;
        bad(repeated(c.open, 20000));
    }
    EXPECT_EQ(good(repeated("(", 30) + "7" + repeated(")", 30)), "7");
}

TEST_F(HostileTest, LongChainsAreRefusedOrRun) {
    EXPECT_THAT(bad("1" + repeated("+1", 200000)), HasSubstr("too long"));
    EXPECT_THAT(bad("a" + repeated(".b", 200000)), HasSubstr("too long"));
    EXPECT_THAT(bad("f" + repeated("()", 200000)), HasSubstr("nothing"));
    EXPECT_EQ(good("1" + repeated("+1", 200)), "201");
    EXPECT_EQ(good(repeated("x = 1\n", 20000)), "1");
}

TEST_F(HostileTest, EndlessRecursionEnds) {
    EXPECT_THAT(bad("fn f x = f (x + 1)\nf 1"), HasSubstr("too deep within each other"));
    EXPECT_THAT(bad("fn g x = ( if true then ( 1 + (2 * (g (x + 1))) ) )\ng 1"),
                HasSubstr("too deep within each other"));
    EXPECT_EQ(good("fn sum n = if n == 0 then 0 else n + (sum (n - 1))\nsum 50"), "1275");
}

TEST_F(HostileTest, LimitsEndLoopsAndGrowth) {
    script::Limits limits;
    limits.steps = 100000;
    limits.textBytes = 1 << 16;
    limits.arrayItems = 1000;
    engine.setLimits(limits);
    EXPECT_THAT(bad("while true do 1"), HasSubstr("stopped after 100000 steps"));
    EXPECT_THAT(bad("s = \"x\"\nwhile true do s = s + s"), HasSubstr("longer than 65536 bytes"));
    EXPECT_THAT(bad("a = #(1)\nwhile true do a = a + a"), HasSubstr("more than 1000 elements"));
    EXPECT_THAT(bad("a = #()\nwhile true do append a 1"), HasSubstr("too many elements"));
    EXPECT_THAT(bad("for i = 1 to 100000 collect i"), HasSubstr("too many elements"));
    EXPECT_THAT(bad(std::string(1 << 17, ' ')), HasSubstr("too long"));
}

TEST_F(HostileTest, AStopEndsTheScript) {
    int asked = 0;
    engine.setStop([&] { return ++asked > 3; });
    EXPECT_THAT(bad("while true do 1"), HasSubstr("interrupted"));
}

TEST_F(HostileTest, ArraysWithinArrays) {
    EXPECT_THAT(bad("a = #(1)\na[1] = #(#(a))"), HasSubstr("cannot hold itself"));
    EXPECT_THAT(bad("append a a"), HasSubstr("cannot hold itself"));
    // Deep and shared arrays print, compare and go without trouble.
    good("a = #()\nfor i = 1 to 50000 do a = #(a)");
    EXPECT_THAT(good("a"), HasSubstr("#(...)"));
    good("b = #()\nfor i = 1 to 50000 do b = #(b)");
    EXPECT_THAT(bad("a == b"), HasSubstr("too deep"));
    good("c = #(1)\nfor i = 1 to 60 do c = #(c, c)");
    EXPECT_LT(good("c").size(), 200000u);
}

TEST_F(HostileTest, AnyBytesAreReadSafely) {
    std::string all;
    for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
    bad(all);
    const std::string script =
        "fn f a b:#(1, [1,2,3]) = ( if a > 1 then \"x\\n\" else -$'q' )\n"
        "for i = 1 to 3 where true collect f i b:2 -- end\n";
    // Cut anywhere, a script runs or is refused.
    for (std::size_t length = 0; length < script.size(); ++length) {
        try {
            engine.run(script.substr(0, length), "cut.ks");
        } catch (const script::Error& error) {
            EXPECT_THAT(error.what(), testing::StartsWith("cut.ks:"));
        }
    }
}

}  // namespace
