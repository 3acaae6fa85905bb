// The page of a report: what is the same in each.
#pragma once

#include <nlohmann/json.hpp>

#include <string_view>

namespace fltool {

/// The page around the data of a report, which is one JSON object.
struct PageParts {
    std::string_view beforeData;
    std::string_view behindData;
};
PageParts pageParts() noexcept;

/// The words of the page by their names, each in Chinese and in English.
nlohmann::ordered_json pageTexts();
/// The sentences of the checks by the rules' codes, likewise, with places for values.
nlohmann::ordered_json ruleSentences();

}  // namespace fltool
