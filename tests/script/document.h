// What docs/scripting.md shows.
#pragma once

#include <string>
#include <vector>

struct Example {
    int line = 0;  // of its first line in the document
    std::string text;
    std::string printed;  // what it says that it prints
};

/// All examples in their order. The first makes the scene that the others suppose.
std::vector<Example> documentedExamples();
