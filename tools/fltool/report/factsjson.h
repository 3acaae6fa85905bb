// The facts of a model as JSON.
#pragma once

#include "facts.h"

#include <nlohmann/json.hpp>

#include <functional>
#include <string>

namespace fltool {

using Json = nlohmann::ordered_json;

/// Sums over the models of a report.
struct Totals {
    std::uint64_t models = 0, unreadable = 0, bytes = 0, nodes = 0, faces = 0, textureBytes = 0,
                  lightPoints = 0, errors = 0, warnings = 0, hints = 0, damage = 0, missing = 0;

    std::array<std::uint64_t, 256> rules{};  ///< what each rule found

    void add(const Facts& facts, const checks::Target& target);
};
Json jsonOf(const Totals& totals, const checks::Target& target);

/// The line of a model in the table of all: figures and counts.
Json rowOf(const Facts& facts, const checks::Target& target);

/// Everything else. Pictures are the text that `picture` makes of the bytes of a PNG file.
/// Findings have their sentences in English where `sentences` says so.
Json detailsOf(const Facts& facts, const checks::Target& target, bool sentences);

/// The JSON in one line, of ASCII alone and without the characters that mean something to HTML, so
/// that it may stand in a script element: no text in it can end that element.
std::string forPage(const Json& json);
/// In one line, for programs.
std::string forPrograms(const Json& json);

}  // namespace fltool
