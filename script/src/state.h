// What an engine knows.
#pragma once

#include "function.h"
#include "scriptsteps.h"

#include <map>
#include <string>
#include <unordered_map>

namespace script {

struct NodeProperty {
    PropertyReader read;
    PropertyWriter write;  // null for a read-only one
};

struct Engine::State {
    std::unordered_map<std::string, Value> variables;
    std::map<std::string, std::shared_ptr<const Function>> verbs;
    std::unordered_map<std::string, ValueReader> values;
    std::map<std::string, NodeProperty> nodeProperties;
    std::function<void(std::string_view)> output;
    std::function<bool()> stop;
    Limits limits;
    ScriptSteps script;  ///< of the outermost

    std::size_t running = 0;      // scripts within each other; 0 when none runs
    std::uint64_t steps = 0;      // of the outermost and all that it runs
    const char* stack = nullptr;  // where the outermost began
};

/// Runs a script, which may be one that another one runs. Throws `Error`.
Value runScript(Engine::State& state, std::string_view text, const std::string& file);

/// The verbs that need no scene.
void addLanguageVerbs(Engine& engine, Engine::State& state);

}  // namespace script
