// What the records of external references name.
#pragma once

#include <string>
#include <string_view>

namespace interchange {

struct FileReference {
    std::string file;  ///< UTF-8
    std::string part;  ///< the name of a node in it; empty for all of it
};

/// The parts of an external reference's file name (UTF-8), which may have the name of a node in
/// angle brackets behind it: "trees.flt<oak>".
FileReference parsedReference(std::string_view name);

}  // namespace interchange
