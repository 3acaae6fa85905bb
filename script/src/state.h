// What an engine knows.
#pragma once

#include "function.h"

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
    bool running = false;
};

/// The verbs that need no scene.
void addLanguageVerbs(Engine& engine, Engine::State& state);

}  // namespace script
