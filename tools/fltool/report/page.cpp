#include "page.h"

#include <base/texttable.h>
#include <checks/catalogue.h>

#include <array>

namespace fltool {

namespace {

struct NamedText {
    const char* name;
    const char* chinese;
    const char* english;
};

// The page holds both languages, so that nothing looks them up here.
constexpr NamedText kTexts[] = {
#define TEXT_ROW(name, id, chinese, english) {#name, chinese, english},
#include <checks/recordwords.inc>
#include "texts.inc"
#undef TEXT_ROW
};

}  // namespace

nlohmann::ordered_json pageTexts() {
    auto texts = nlohmann::ordered_json::object();
    for (const NamedText& text : kTexts) texts[text.name] = {text.chinese, text.english};
    return texts;
}

nlohmann::ordered_json ruleSentences() {
    auto sentences = nlohmann::ordered_json::object();
    for (const checks::RuleInfo& rule : checks::catalogue())
        sentences[rule.code] = {checks::sentenceOf(rule.rule, base::Language::kChinese),
                                checks::sentenceOf(rule.rule, base::Language::kEnglish)};
    return sentences;
}

}  // namespace fltool
