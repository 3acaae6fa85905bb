#include <workbench/scriptline.h>

#include <kiln/host/host.h>

#include <gmock/gmock.h>

#include <string>

using workbench::ScriptLine;
using workbench::ScriptResult;

namespace {

const FPFunctionDesc kFunctions[] = {
    {0, "Describe", 0, TYPE_STRING, 0, {{"Node", TYPE_INODE}, {"Text", TYPE_STRING}}},
    {1, "Add", 0, TYPE_INT, 0, {{"A", TYPE_INT}, {"B", TYPE_INT}}},
    {2, "Half", 0, TYPE_FLOAT, 0, {{"Value", TYPE_FLOAT}}},
    {3, "Reset", 0, TYPE_VOID},
    {4, "Fail", 0, TYPE_BOOL, 0, {{"Sure", TYPE_BOOL}}},
};
const FPPropertyDesc kProperties[] = {{10, FP_NO_FUNCTION, "Answer", 0, TYPE_INT},
                                      {11, 12, "Level", 0, TYPE_INT}};

/// A plug-in's interface, as scripts see it.
class Workshop : public FPStaticInterface {
public:
    Workshop()
        : FPStaticInterface(Interface_ID(0x77AA, 0x1), "Workshop", 0, nullptr, FP_CORE, kFunctions,
                            kProperties) {}

    int level = 0;
    int resets = 0;

protected:
    FPStatus _dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams* params) override {
        switch (id) {
            case 0: {
                const INode* node = (*params)[0].n;
                const std::string text =
                    std::string(node ? node->GetName() : "nobody") + "/" + (*params)[1].s;
                result = FPValue::StringCopy(text.c_str());
                return FPS_OK;
            }
            case 1:
                result.SetInt((*params)[0].i + (*params)[1].i);
                return FPS_OK;
            case 2:
                result.SetFloat((*params)[0].f / 2);
                return FPS_OK;
            case 3:
                ++resets;
                return FPS_OK;
            case 4:
                return FPS_FAIL;
            case 10:
                result.SetInt(42);
                return FPS_OK;
            case 11:
                result.SetInt(level);
                return FPS_OK;
            case 12:
                level = (*params)[0].i;
                return FPS_OK;
            default:
                return FPS_NO_SUCH_FUNCTION;
        }
    }
};

class ScriptLineTest : public testing::Test {
protected:
    ScriptLineTest() {
        host_.CreateObjectNode(new DummyObject, "tower");
        host_.CreateObjectNode(new DummyObject, "塔 1");
    }
    ~ScriptLineTest() override { kiln::Core::destroy(); }

    std::string good(const std::string& line) {
        const ScriptResult result = script_.evaluate(line);
        EXPECT_TRUE(result.ok) << line << ": " << result.text;
        return result.text;
    }
    std::string bad(const std::string& line) {
        const ScriptResult result = script_.evaluate(line);
        EXPECT_FALSE(result.ok) << line << " gave " << result.text;
        return result.text;
    }

    Workshop workshop_;
    Interface& host_ = kiln::Core::create().hostInterface();
    ScriptLine script_{host_};
};

TEST_F(ScriptLineTest, CallsByPositionByKeywordAndWithoutArguments) {
    EXPECT_EQ(good("Workshop.Add 2 -5"), "-3");
    EXPECT_EQ(good("workshop.add B:1 A:41"), "42");
    EXPECT_EQ(good("Workshop.Half 3"), "1.5");
    EXPECT_EQ(good("  Workshop.Half -.5  -- a comment"), "-0.25");
    EXPECT_EQ(good("Workshop.Describe $tower \"a \\\"b\\\"\""), "\"tower/a \"b\"\"");
    EXPECT_EQ(good("Workshop.Describe Node:$'塔 1' Text:\"旧\""), "\"塔 1/旧\"");
    EXPECT_EQ(good("Workshop.Describe undefined \"x\""), "\"nobody/x\"");
    EXPECT_EQ(good("Workshop.Reset"), good("Workshop.Reset()"));
    EXPECT_EQ(workshop_.resets, 2);
}

TEST_F(ScriptLineTest, CallsAsArgumentsNeedParentheses) {
    EXPECT_EQ(good("Workshop.Add (Workshop.Add 1 2) (Workshop.Add (3) 4)"), "10");
    EXPECT_EQ(good("Workshop.Add Workshop.Answer 1"), "43");
}

TEST_F(ScriptLineTest, ReadsAndSetsProperties) {
    EXPECT_EQ(good("Workshop.Answer"), "42");
    EXPECT_EQ(good("Workshop.Level = 7"), "7");
    EXPECT_EQ(workshop_.level, 7);
    bad("Workshop.Answer = 1");
}

TEST_F(ScriptLineTest, PrintsNodesAndKnowsTheSelection) {
    EXPECT_EQ(good("$tower"), "$tower");
    EXPECT_THAT(bad("$"), testing::HasSubstr("no node is selected"));
    host_.SelectNode(host_.GetINodeByName("tower"));
    EXPECT_EQ(good("$"), "$tower");
}

TEST_F(ScriptLineTest, AnInterfaceAloneListsWhatItOffers) {
    const std::string text = good("Workshop");
    EXPECT_THAT(text, testing::HasSubstr("Workshop.Add"));
    EXPECT_THAT(text, testing::HasSubstr("Workshop.Answer : integer"));
    EXPECT_EQ(good(""), "");
    EXPECT_EQ(good("   -- nothing"), "");
}

TEST_F(ScriptLineTest, KeepsVariablesAndShowsWhatALinePrints) {
    EXPECT_EQ(good("n = Workshop.Add 2 3"), "5");
    EXPECT_EQ(good("for i = 1 to 2 do print (n + i)"), "6\r\n7");
    EXPECT_EQ(good("print n; n * 2"), "5\r\n10");
    EXPECT_THAT(bad("print n; 1 / 0"), testing::StartsWith("5\r\n-- 错误。第 12 列："));
    EXPECT_THAT(bad("while true do 1"), testing::HasSubstr("脚本在 10000000 步后被停止"));
}

TEST_F(ScriptLineTest, APrinterGetsLinesAsTheyArePrinted) {
    std::string lines;
    script_.setPrinter([&](const std::string& line) { lines += "[" + line + "]"; });
    EXPECT_EQ(good("print 1; print \"a\\nb\"; 7"), "7");
    EXPECT_EQ(lines, "[1][a\r\nb]");
    EXPECT_EQ(good("print 2"), "") << "a line that has printed says nothing more";
    EXPECT_EQ(bad("print 3; 1 / 0"), "-- 错误。第 12 列：division by zero");
    EXPECT_THAT(bad("runScript \"none.ks\""), testing::StartsWith("-- 错误。第 1 列："));
}

TEST_F(ScriptLineTest, SaysWhatIsWrongAndWhere) {
    const struct {
        const char* line;
        const char* complaint;
    } cases[] = {
        {"Aviator.Go", "no interface is named \"Aviator\""},
        {"Workshop.Go", "nothing named \"Go\""},
        {"Workshop.", "name of a function"},
        {"$nobody", "no node is named \"nobody\""},
        {"Workshop.Add 1", "Add"},
        {"Workshop.Add 1 2 3", "Add"},
        {"Workshop.Add A:1 C:2", "C"},
        {"Workshop.Add 1 \"two\"", "Add"},
        {"Workshop.Fail true", "Fail"},
        {"Workshop.Describe $tower \"open", "第 26 列：the string is not closed"},
        {"Workshop.Add 1 (Workshop.Add 1 2", "\")\" is missing"},
        {"Workshop.Add 1 2)", "第 17 列"},
        {"12x", "not a number"},
        {"99999999999", "too large"},
        {"Workshop.Add & 2", "unexpected \"&\""},
        {"\"text\" 5", "nothing more was expected"},
    };
    for (const auto& c : cases) EXPECT_THAT(bad(c.line), testing::HasSubstr(c.complaint)) << c.line;
    EXPECT_THAT(bad("Workshop.Half " + std::string(5000, '(')), testing::HasSubstr("parentheses"));
}

}  // namespace
