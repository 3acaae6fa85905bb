#include "checkscene.h"

#include <checks/target.h>
#include <gtest/gtest.h>

namespace {

using checks::Rule;
using checks::Severity;
using checks::Target;

std::string refusalOf(std::string_view text) {
    try {
        checks::readTarget(text, "ours.json");
        return "";
    } catch (const checks::TargetError& error) {
        return error.what();
    }
}

TEST(Target, TakesWhatTheFileSays) {
    const Target target = checks::readTarget(
        R"({"name": "ours", "base": "tiled simulation database", "revision": 1580,
            "units": "feet", "limits": {"depth": 9, "lightSources": 0}, "findings": 3,
            "rules": {"NAME_CHARS": "off", "LOD_GAP": "error"}})",
        "ours.json");
    EXPECT_EQ(target.name, "ours");
    EXPECT_EQ(target.revision, 1580U);
    EXPECT_EQ(target.units, 4);
    EXPECT_EQ(target.limits.depth, 9U);
    EXPECT_EQ(target.limits.lightSources, 0U);
    EXPECT_EQ(target.limits.textureSide, 1024U);  // that of its base
    EXPECT_EQ(target.mostFindings, 3U);
    EXPECT_EQ(target.severityOf(Rule::NAME_CHARS), Severity::kOff);
    EXPECT_EQ(target.severityOf(Rule::LOD_GAP), Severity::kError);
    EXPECT_EQ(target.severityOf(Rule::TEX_SIZE), Severity::kError);
    EXPECT_EQ(target.severityOf(Rule::FACE_CONCAVE), Severity::kHint);
}

TEST(Target, RefusesABrokenFileWithItsLine) {
    EXPECT_EQ(refusalOf("{\n\"name\": \"a\",\n}"), "ours.json, line 3: this is no JSON");
    EXPECT_EQ(refusalOf(""), "ours.json, line 1: this is no JSON");
    EXPECT_EQ(refusalOf("{\n\"findings\": 1e999}"), "ours.json, line 2: this is no JSON");
    EXPECT_EQ(refusalOf("{\"name\": \"units\",\n\"units\": 0}"),
              "ours.json, line 2: \"units\" must be a text");
    EXPECT_EQ(refusalOf("[]"), "ours.json, line 1: a target must be an object");
    EXPECT_EQ(refusalOf("{\n\"rules\": {\n\"NO_RULE\": \"off\"}}"),
              "ours.json, line 3: \"NO_RULE\" is no rule");
    EXPECT_EQ(refusalOf("{\"rules\": {\n\n\"LOD_GAP\": \"loud\"}}"),
              "ours.json, line 3: \"LOD_GAP\" must be \"error\", \"warning\", \"hint\" or \"off\"");
    EXPECT_EQ(refusalOf("{\"limits\":\n{\"depth\": -1}}"),
              "ours.json, line 2: \"depth\" must be a whole number from 0 to 1000000000");
    EXPECT_EQ(refusalOf("{\n\"revision\": 1590}"),
              "ours.json, line 2: \"revision\" must be 1420 to 1580 or 1600 to 1660");
    for (const char* const text :
         {"{\"limits\": 3}", "{\"limits\": {\"width\": 3}}", "{\"units\": \"ells\"}",
          "{\"units\": 0}", "{\"base\": \"ours\"}", "{\"wishes\": {}}", "{\"name\": null}",
          "{\"findings\": 1.5}", "{\"findings\": 1000000001}", "{\"rules\": {\"LOD_GAP\": 1}}"})
        EXPECT_NE(refusalOf(text), "") << text;
}

TEST(Target, SaysWhatIsWrongInBothLanguages) {
    const auto chineseOf = [](auto&& read) -> std::string {
        try {
            read();
            return "";
        } catch (const checks::TargetError& error) {
            EXPECT_EQ(error.text(base::Language::kEnglish), error.what());
            return error.text(base::Language::kChinese);
        }
    };
    EXPECT_EQ(chineseOf([] { checks::readTarget("{\n\"units\": 1}", "ours.json"); }),
              "ours.json，第 2 行：\"units\" 必须是文本");
    EXPECT_EQ(
        chineseOf([] { checks::readTarget("{\"rules\": {\"LOD_GAP\": \"loud\"}}", "ours.json"); }),
        "ours.json，第 1 行：\"LOD_GAP\" 必须是 \"error\"、\"warning\"、\"hint\" 或 \"off\"");
    EXPECT_NE(chineseOf([] { checks::findTarget("17.0"); }).find("不是内置的检查目标"),
              std::string::npos);
}

TEST(Target, KnowsTheBuiltInOnesByName) {
    for (const std::string& name : checks::targetNames())
        EXPECT_EQ(checks::findTarget(name).name, name);
    EXPECT_EQ(checks::findTarget("15.51").revision, 1551U);
    EXPECT_EQ(checks::findTarget("16.6").revision, 1660U);
    EXPECT_FALSE(checks::findTarget("general").revision);
    EXPECT_THROW(checks::findTarget("17.0"), checks::TargetError);
}

TEST(Target, SwitchesRulesOffAndCountsBeyondItsFindings) {
    CheckScene scene;
    for (int i = 0; i < 5; ++i) scene.add(scene.group, FltObject());
    Target target;
    target.mostFindings = 2;
    const checks::Report some = scene.check(target);
    EXPECT_EQ(some.findings.size(), 2U);
    EXPECT_EQ(some.countOf(Rule::GROUP_EMPTY), 5U);
    EXPECT_EQ(some.countOf(Severity::kHint, target), 5U);
    EXPECT_EQ(some.countOf(Severity::kError, target), 0U);
    target.severities[static_cast<std::size_t>(Rule::GROUP_EMPTY)] = Severity::kOff;
    EXPECT_EQ(listOf(scene.check(target)), "");
}

TEST(Catalogue, SaysEverySentenceInBothLanguages) {
    for (const checks::RuleInfo& rule : checks::catalogue()) {
        const std::string english = sentenceOf(rule.rule, base::Language::kEnglish);
        const std::string chinese = sentenceOf(rule.rule, base::Language::kChinese);
        EXPECT_NE(english, "") << rule.code;
        EXPECT_NE(chinese, english) << rule.code;
        for (const char* const place : {"{0}", "{1}", "{2}", "{3}"})
            EXPECT_EQ(english.find(place) == std::string::npos,
                      chinese.find(place) == std::string::npos)
                << rule.code;
        EXPECT_EQ(checks::ruleOf(rule.code), rule.rule);
    }
    EXPECT_FALSE(checks::ruleOf("lod_gap"));
}

TEST(Report, IsJsonWithCountsAndFindings) {
    CheckScene scene;
    scene.add(scene.group, FltObject())->SetName("empty \"one\"");
    const Target target;
    const std::string json = toJson(scene.check(target), target, "a.flt", "handle");
    EXPECT_NE(json.find("\"hints\": 1"), std::string::npos) << json;
    EXPECT_NE(json.find("\"code\": \"GROUP_EMPTY\""), std::string::npos);
    EXPECT_NE(json.find("\"node\": \"empty \\\"one\\\"\""), std::string::npos);
    EXPECT_NE(json.find("\"polygons\": 1"), std::string::npos);
}

}  // namespace
