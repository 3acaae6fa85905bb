// A value that a script sets an attribute to, as the text that the attribute stores.
#pragma once

#include <fltkilnutil/fltattr.h>
#include <kiln/fp.h>

#include <stdexcept>
#include <string>
#include <string_view>

namespace tessera {

/// A refused call: one sentence for the script's author.
class Refusal : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The text in double quotes.
std::string quoted(std::string_view text);

/// The value as a text of the row. Throws `Refusal` for what the row would misread: no number, a
/// number that its field cannot hold, none of its choices.
std::string attributeText(const FltAttrDesc& row, const FPValue& value);

}  // namespace tessera
