// Why something is not done with a reference to another file.
#pragma once

#include <stdexcept>

namespace xref {

/// In words for the user, in the host's language. Nothing is changed then.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace xref
