// What can be called.
#pragma once

#include "ast.h"

#include <script/engine.h>

#include <memory>
#include <string>
#include <vector>

namespace script {

struct Function {
    std::string name;                     // as its author wrote it
    std::vector<std::string> parameters;  // in small letters
    std::size_t required = 0;             // the first ones; the others may be left out
    bool anyNumber = false;               // takes any number of values by position

    Verb verb;  // of the host's, else null

    // Of a script's function: the definition, and where to look for its faults.
    NodePointer definition;
    std::shared_ptr<const std::string> file;
};

}  // namespace script
