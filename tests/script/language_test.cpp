#include "enginefixture.h"

using testing::HasSubstr;

namespace {

using LanguageTest = EngineTest;

TEST_F(LanguageTest, Expressions) {
    const struct {
        const char* text;
        const char* value;
    } cases[] = {
        {"1 + 2 * 3", "7"},
        {"(1 + 2) * 3", "9"},
        {"7 / 2", "3.5"},
        {"6 / 2", "3"},
        {"2 ^ 10 - 1", "1023"},
        {"-2 ^ 2", "-4"},
        {"2147483647 + 1", "2147483648.0"},
        {"0x80000000", "-2147483648"},
        {"mod -7 3", "-1"},
        {"0.1", "0.1"},
        {"1e3", "1000.0"},
        {"true and not false or undefined", "true"},
        {"1 == 1.0", "true"},
        {"\"a\" == \"A\"", "false"},
        {"\"ab\" + \"c\\n\\\"\\\\\" ", "\"abc\n\"\\\""},
        {"\"塔\" < \"塔楼\"", "true"},
        {"\"塔楼 1\".count", "4"},
        {"substring \"塔楼 1\" 2 2", "\"楼 \""},
        {"findString \"塔楼\" \"楼\"", "2"},
        {"(5 as string) + (1.5 as string)", "\"51.5\""},
        {"\"12\" as integer", "12"},
        {"\"12x\" as integer", "undefined"},
        {"[1, 2, 3] * 2 - [1, 1, 1]", "[1,3,5]"},
        {"[1, 2, 3].z", "3.0"},
        {"#(1, \"a\", #(2.5), undefined)", "#(1, \"a\", #(2.5), undefined)"},
        {"#(10, 20, 30)[2]", "20"},
        {"#(1, 2) + #(3)", "#(1, 2, 3)"},
        {"#(1, #(2)) == #(1.0, #(2))", "true"},
        {"findItem #(4, 5, 6) 5", "2"},
        {"if 1 < 2 then \"yes\" else \"no\"", "\"yes\""},
        {"if 1 > 2 then 3", "undefined"},
        {"max 2 (min 5 3)", "3"},
        {"max(2, min(5, 3))", "3"},
        {"abs -4", "4"},
        {"bitOr 0x40000000 0x20000000", "1610612736"},
        {"sqrt 16 + 1", "5.0"},
        {"-- nothing", "undefined"},
        {"1 + \\\n 2", "3"},
        {"x = 3; x -= 1; x *= 10", "20"},
        {"PRINT 1", "ok"},
    };
    for (const auto& c : cases) EXPECT_EQ(good(c.text), c.value) << c.text;
}

TEST_F(LanguageTest, LoopsAndConditions) {
    EXPECT_EQ(good("s = 0\nfor i = 1 to 10 do s += i\ns"), "55");
    EXPECT_EQ(good("for i = 10 to 1 by -3 collect i"), "#(10, 7, 4, 1)");
    EXPECT_EQ(good("for x in #(1, 2, 3, 4) where mod x 2 == 0 collect x * x"), "#(4, 16)");
    EXPECT_EQ(good("n = 0\nwhile true do (\n n += 1\n if n == 2 then continue\n"
                   " if n > 4 then exit\n)\nn"),
              "5");
    EXPECT_EQ(good("a = #(1, 2)\nfor x in a do append a x\na"), "#(1, 2, 1, 2)");
    EXPECT_EQ(good("if false then 1\nelse if true\nthen 2\nelse 3"), "2");
}

TEST_F(LanguageTest, Functions) {
    EXPECT_EQ(good("fn fib n = if n < 2 then n else (fib (n - 1)) + (fib (n - 2))\nfib 15"), "610");
    EXPECT_EQ(good("fn area width height:2 = width * height\n"
                   "#(area 3, area 3 height:5, area(height: 1, width: 4))"),
              "#(6, 15, 4)");
    EXPECT_EQ(good("fn first a = ( for x in a do if x > 1 then return x; 0 )\n"
                   "#(first #(1, 5, 6), first #())"),
              "#(5, 0)");
    EXPECT_EQ(good("x = 1\nfn f = ( local x = 5; y = 2; x + y )\n#(f(), x)"), "#(7, 1)");
    EXPECT_THAT(bad("f()\ny"), HasSubstr("nothing is named \"y\""));
}

TEST_F(LanguageTest, ArraysAreSharedAndGrow) {
    EXPECT_EQ(good("a = #()\nb = a\nb[1] = 5\nappend b 6\na[2] += 1\na"), "#(5, 7)");
    EXPECT_EQ(good("a.count"), "2");
}

TEST_F(LanguageTest, VariablesStayForTheNextScript) {
    good("fn twice x = x * 2\nvalue = 21");
    EXPECT_EQ(good("Twice VALUE"), "42");
}

TEST_F(LanguageTest, PrintsWholeLines) {
    good("print \"a\" 1 #(\"b\")\nprint \"塔\"");
    EXPECT_EQ(printed, "a 1 #(\"b\")\n塔\n");
}

TEST_F(LanguageTest, ErrorsSayWhere) {
    const struct {
        const char* text;
        const char* message;
    } cases[] = {
        {"x = 1\n\n  y = x + nothing", "test.ks:3:11: nothing is named \"nothing\""},
        {"print (1 + \"a\")",
         "test.ks:1:10: \"+\" cannot be applied to an integer and a string; "
         "write (value as string) to join"},
        {"a = #(1)\na[2.5]", "test.ks:2:3: an index is an integer"},
        {"a = #(1)\na[3]", "test.ks:2:3: there is no element 3; the first is 1, the last 1"},
        {"1 / 0", "test.ks:1:3: division by zero"},
        {"fn f = (\n 1 / 0\n)\n\nf()", "test.ks:2:4: division by zero"},
        {"x = 5\nx -1", "test.ks:2:1: this is an integer and cannot be called"},
        {"if 1 then 2", "test.ks:1:4: true or false was expected here, not an integer"},
        {"for x in 5 do 1", "test.ks:1:10: an array was expected here, not an integer"},
        {"\"open", "test.ks:1:1: the string is not closed"},
        {"x = (1\n2", "test.ks:1:5: \")\" is missing"},
        {"x = #(1, 2", "test.ks:1:5: \")\" is missing"},
        {"(1))", "test.ks:1:4: nothing more was expected here"},
        {"5 = 6", "test.ks:1:3: what stands before \"=\" cannot be assigned to"},
        {"while true 5", "test.ks:1:12: \"do\" was expected here"},
        {"exit", "test.ks:1:1: there is no loop around \"exit\""},
        {"fn f = exit\nfor i = 1 to 2 do f()", "test.ks:1:8: there is no loop around \"exit\""},
        {"return 1", "test.ks:1:1: there is no function around \"return\""},
        {"fn f a b = a\nf 1", "test.ks:2:1: f: argument \"b\" is missing"},
        {"f 1 2 3", "test.ks:1:1: f: too many arguments; it is called as \"f a b\""},
        {"f 1 c:2", "test.ks:1:1: f: there is no argument \"c\""},
        {"newScene", "test.ks:1:1: to call \"newScene\" write newScene()"},
        {"sqrt \"x\"", "test.ks:1:1: sqrt: argument 1 \"x\" must be a number, not a string"},
        {"throw \"enough\"", "test.ks:1:1: throw: enough"},
        {"$nobody", "test.ks:1:1: no node is named \"nobody\""},
        {"Nobody.Help 1", "test.ks:1:1: no interface is named \"Nobody\""},
        {"99999999999", "this integer is too large"},
        {"\"a\\q\"", "test.ks:1:3: a backslash in a text"},
        {"x = 1 @ 2", "test.ks:1:7: unexpected \"@\""},
    };
    for (const auto& c : cases) EXPECT_THAT(bad(c.text), HasSubstr(c.message)) << c.text;
}

}  // namespace
