#include "fixture.h"

#include <kiln/fptable.h>

namespace {

using ::testing::HasSubstr;

constexpr Interface_ID kSampleId(1, 2);

constexpr FPFunctionDesc kFunctions[] = {
    {0, "Nothing", -1, TYPE_VOID},
    {3, "Half", -1, TYPE_FLOAT, 0, {{"value", TYPE_FLOAT}}},
    {4,
     "Describe",
     -1,
     TYPE_STRING,
     0,
     {{"Node", TYPE_INODE}, {"text", TYPE_STRING}, {"Flag", TYPE_BOOL}, {"count", TYPE_INT}}},
    {5, "Throws", -1, TYPE_BOOL},
    {6, "Missing", -1, TYPE_BOOL},
    {7, "Shared", -1, TYPE_STRING},
    {8, "Refuses", -1, TYPE_BOOL},
    {9,
     "Spell",
     -1,
     TYPE_STRING_TAB,
     0,
     {{"value", TYPE_VALUE}, {"exact", TYPE_DOUBLE, 0, FP_OPTIONAL}}},
};
constexpr FPPropertyDesc kProperties[] = {
    {34, FP_NO_FUNCTION, "Constant", 0, TYPE_INT},
    {35, 36, "level", 0, TYPE_FLOAT},
};

class Sample final : public FPStaticInterface {
public:
    Sample()
        : FPStaticInterface(kSampleId, "Sample", 0, nullptr, FP_CORE, kFunctions, kProperties) {}

protected:
    FPStatus _dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams* params) override {
        const auto argument = [&](std::size_t i) -> FPValue& { return (*params)[i]; };
        switch (id) {
            case 0:
                return FPS_OK;
            case 3:
                result.SetFloat(argument(0).f / 2);
                return FPS_OK;
            case 4: {
                const std::string text =
                    std::string(argument(0).n ? argument(0).n->GetName() : "none") + "/" +
                    argument(1).s + "/" + std::to_string(argument(2).i) + "/" +
                    std::to_string(argument(3).i);
                result.SetOwnedString(KILN_strdup(text.c_str()));
                return FPS_OK;
            }
            case 5:
                throw 1;
            case 7:
                result.SetString("shared");
                return FPS_OK;
            case 8:
                result.SetString("not on a Sunday");
                return FPS_FAIL;
            case 9: {
                const std::string strings[] = {kiln::printed(argument(0)),
                                               kiln::printed(argument(1))};
                result.SetStrings(strings);
                return FPS_OK;
            }
            case 34:
                result.SetInt(static_cast<int>(0x80000000));
                return FPS_OK;
            case 35:
                result.SetFloat(level_);
                return FPS_OK;
            case 36:
                level_ = argument(0).f;
                return FPS_OK;
            default:
                return FPS_NO_SUCH_FUNCTION;
        }
    }

private:
    float level_ = 0;
};

class PublishingTest : public HostTest {
protected:
    // The printed result, or the failure.
    std::string call(const char* function,
                     const std::vector<kiln::ScriptArgument>& arguments = {}) {
        FPValue result;
        const kiln::Status status = kiln::callFunction(sample, function, arguments, result);
        return status ? kiln::printed(result) : status.message();
    }

    Sample sample;
};

TEST_F(PublishingTest, IsFoundWhileItLives) {
    EXPECT_EQ(GetCOREInterface(kSampleId), &sample);
    EXPECT_EQ(kiln::findInterface("sample"), &sample);
    EXPECT_EQ(kiln::findInterface("none"), nullptr);
    {
        const Sample second;
        EXPECT_EQ(GetCOREInterface(kSampleId), &sample) << "the first one stays";
        EXPECT_EQ(kiln::publishedInterfaces().size(), 2u);
    }
    EXPECT_EQ(kiln::publishedInterfaces().size(), 1u);
    EXPECT_EQ(GetCOREInterface(Interface_ID(9, 9)), nullptr);
    EXPECT_EQ(kiln::signatureOf(sample, *sample.FindFunction("half")),
              "Sample.Half value:<float> -> float");
}

TEST_F(PublishingTest, PlacesArgumentsByPositionAndKeyword) {
    INode* const node = addNode("Kasten");
    EXPECT_EQ(call("Half", {{"", FPValue::Float(3)}}), "1.5");
    EXPECT_EQ(call("half", {{"value", FPValue::Int(5)}}), "2.5");
    EXPECT_EQ(call("Nothing"), "ok");
    EXPECT_EQ(call("Describe", {{"", FPValue::Node(node)},
                                {"", FPValue::StringCopy("t")},
                                {"", FPValue::Bool(true)},
                                {"", FPValue::Float(7)}}),
              "\"Kasten/t/1/7\"");
    EXPECT_EQ(call("Describe", {{"", FPValue()},
                                {"count", FPValue::Bool(true)},
                                {"Flag", FPValue::Int(2)},
                                {"text", FPValue::String("k")}}),
              "\"none/k/1/1\"");
}

TEST_F(PublishingTest, SaysWhatIsWrongWithACall) {
    const FPValue text = FPValue::String("x");
    EXPECT_EQ(call("Halve"), "Sample: there is no function \"Halve\"");
    EXPECT_EQ(call("Half"), "Sample.Half: argument \"value\" is missing");
    EXPECT_EQ(call("Half", {{"", text}}),
              "Sample.Half: argument 1 \"value\" must be a float, not a string");
    EXPECT_EQ(call("Half", {{"Value", FPValue::Float(1)}}),
              "Sample.Half: there is no argument \"Value\"; it takes \"value\"");
    EXPECT_EQ(call("Half", {{"", FPValue::Float(1)}, {"", text}}),
              "Sample.Half: takes 1 argument, not 2");
    EXPECT_EQ(call("Nothing", {{"", text}}), "Sample.Nothing: takes no arguments, not 1");
    EXPECT_EQ(call("Half", {{"", FPValue::Int(1)}, {"value", FPValue::Int(1)}}),
              "Sample.Half: argument \"value\" is given twice");
    EXPECT_EQ(call("Half", {{"value", FPValue::Int(1)}, {"", FPValue::Int(1)}}),
              "Sample.Half: an argument without a keyword follows one with a keyword");
    // Conversions that would lose something.
    EXPECT_THAT(call("Half", {{"", FPValue::Int(16777217)}}), HasSubstr("must be a float"));
    EXPECT_THAT(call("Describe", {{"count", FPValue::Float(1.5f)}}),
                HasSubstr("argument 4 \"count\" must be an integer, not a float"));
    EXPECT_THAT(call("Describe", {{"count", FPValue::Float(2147483648.0f)}}),
                HasSubstr("must be an integer"));
    EXPECT_EQ(call("Throws"), "Sample.Throws: failed");
    EXPECT_EQ(call("Missing"), "Sample.Missing: is not implemented");
    FPValue result;
    EXPECT_EQ(kiln::callFunction(sample, "Refuses", {}, result).message(), "not on a Sunday");
    EXPECT_EQ(result.type, TYPE_VOID) << "a reason is no result";
}

TEST_F(PublishingTest, TakesAnyValueAsItIsAndLeavesOptionalOnesOut) {
    EXPECT_EQ(call("Spell", {{"", FPValue::Double(0.1)}}), "#(\"0.1\", \"ok\")");
    EXPECT_EQ(call("Spell", {{"", FPValue::Bool(true)}, {"exact", FPValue::Int(16777217)}}),
              "#(\"true\", \"16777217\")");
    EXPECT_THAT(call("Spell", {{"exact", FPValue::Double(1)}}), HasSubstr("\"value\" is missing"));
    EXPECT_THAT(call("Spell", {{"", FPValue()}}), HasSubstr("must be a value, not a void"));
    // A double is rounded to the host's float, and refused beyond it.
    EXPECT_EQ(call("Half", {{"", FPValue::Double(0.2)}}), "0.1");
    EXPECT_THAT(call("Half", {{"", FPValue::Double(1e39)}}), HasSubstr("must be a float"));
    EXPECT_EQ(call("Describe", {{"", FPValue()},
                                {"", FPValue::String("n")},
                                {"", FPValue::Bool(false)},
                                {"", FPValue::Double(-2147483648.0)}}),
              "\"none/n/0/-2147483648\"");
}

TEST_F(PublishingTest, ListsOfStringsAreCopiedWhole) {
    FPValue list;
    ASSERT_TRUE(kiln::callFunction(sample, "Spell", {{"", FPValue::Int(7)}}, list));
    const FPValue copy = list;
    list.Clear();
    EXPECT_THAT(copy.Strings(), ::testing::ElementsAre("7", "ok"));
    EXPECT_TRUE(FPValue::String("7").Strings().empty());
    FPValue none;
    none.SetStrings({});
    EXPECT_TRUE(FPValue(none).Strings().empty());
}

TEST_F(PublishingTest, OnlyInterfacesThatSaySoOfferVerbs) {
    EXPECT_FALSE(kiln::findVerb("Half"));
    class Verbs final : public FPStaticInterface {
    public:
        Verbs()
            : FPStaticInterface(Interface_ID(3, 4), "Verbs", 0, nullptr, FP_CORE | FP_VERBS,
                                kFunctions) {}

    protected:
        FPStatus _dispatch_fn(FunctionID, TimeValue, FPValue&, FPParams*) override {
            return FPS_OK;
        }
    };
    const Verbs verbs;
    const auto found = kiln::findVerb("half");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->target, &verbs);
    EXPECT_STREQ(found->function->name, "Half");
}

TEST_F(PublishingTest, ATableCallsItsFunctionsWithArgumentsThatFit) {
    static constexpr FPTableRow kRows[] = {
        {7,
         "half",
         TYPE_DOUBLE,
         [](const FPParams& params, FPValue& result) {
             if (params[0].d == 0) throw std::runtime_error("there is no half of nothing");
             result.SetDouble(params[0].d / 2);
         },
         {{"of", TYPE_DOUBLE}, {"any", TYPE_VALUE, 0, FP_OPTIONAL}}},
        {8, "none", TYPE_INT,
         [](const FPParams& params, FPValue& result) {
             result.SetInt(static_cast<int>(params.size()));
         }},
    };
    FPTableInterface table(Interface_ID(3, 5), "Table", 0, kRows);
    EXPECT_EQ(table.Functions().size(), 2u);
    const auto call = [&](FunctionID id, FPParams params, FPValue& result) {
        return table.Invoke(id, 0, result, &params);
    };
    FPValue result;
    EXPECT_EQ(call(7, {FPValue::Double(3), FPValue::String("x")}, result), FPS_OK);
    EXPECT_EQ(result.d, 1.5);
    EXPECT_EQ(call(7, {FPValue::Double(3), FPValue()}, result), FPS_OK);
    EXPECT_EQ(call(7, {FPValue::Double(0), FPValue()}, result), FPS_FAIL);
    EXPECT_STREQ(result.s, "there is no half of nothing");
    EXPECT_EQ(call(7, {FPValue::Int(3), FPValue()}, result), FPS_FAIL);
    EXPECT_EQ(call(7, {FPValue(), FPValue()}, result), FPS_FAIL);
    EXPECT_EQ(call(7, {FPValue::Double(3)}, result), FPS_FAIL);
    EXPECT_EQ(table.Invoke(7, 0, result, nullptr), FPS_FAIL);
    EXPECT_EQ(table.Invoke(8, 0, result, nullptr), FPS_OK);
    EXPECT_EQ(result.i, 0);
    EXPECT_EQ(call(8, {FPValue::Int(3)}, result), FPS_FAIL);
    EXPECT_EQ(call(9, {}, result), FPS_NO_SUCH_FUNCTION);
}

TEST_F(PublishingTest, PropertiesAreReadAndSet) {
    FPValue value;
    ASSERT_TRUE(kiln::getProperty(sample, "constant", value));
    EXPECT_EQ(static_cast<unsigned>(value.i), 0x80000000u);
    EXPECT_EQ(kiln::setProperty(sample, "Constant", value).message(),
              "Sample.Constant: is read-only");
    ASSERT_TRUE(kiln::setProperty(sample, "level", FPValue::Int(3)));
    ASSERT_TRUE(kiln::getProperty(sample, "level", value));
    EXPECT_EQ(kiln::printed(value), "3");
    EXPECT_EQ(kiln::setProperty(sample, "level", FPValue::String("x")).message(),
              "Sample.level: must be a float, not a string");
    EXPECT_FALSE(kiln::getProperty(sample, "nothing", value));
}

// Leaks and double frees show at the end of the test.
TEST_F(PublishingTest, StringsAreFreedByTheValueThatOwnsThem) {
    FPValue owned;
    ASSERT_TRUE(kiln::callFunction(sample, "Describe",
                                   {{"", FPValue()},
                                    {"", FPValue::StringCopy("a")},
                                    {"", FPValue::Bool(false)},
                                    {"", FPValue::Int(1)}},
                                   owned));
    EXPECT_TRUE(owned.OwnsString());
    FPValue copy = owned;
    EXPECT_NE(copy.s, owned.s);
    const FPValue moved = std::move(owned);
    EXPECT_STREQ(moved.s, copy.s);
    copy = FPValue::StringCopy("other");
    copy.SetInt(1);

    FPValue shared;
    ASSERT_TRUE(kiln::callFunction(sample, "Shared", {}, shared));
    EXPECT_FALSE(shared.OwnsString());
    const FPValue again = shared;
    EXPECT_EQ(again.s, shared.s);
}

}  // namespace
