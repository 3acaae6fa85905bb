// The parts of a report as JSON, for who puts them into something larger.
#pragma once

#include <checks/report.h>

#include <nlohmann/json.hpp>

namespace checks {

nlohmann::ordered_json jsonOf(const Statistics& figures);
nlohmann::ordered_json jsonOf(const std::vector<Damage>& damages);
/// How many errors, warnings and hints there are.
nlohmann::ordered_json countsJson(const Report& report, const Target& target);
/// The rules that found something, each with its severity and count.
nlohmann::ordered_json rulesJson(const Report& report, const Target& target);

}  // namespace checks
