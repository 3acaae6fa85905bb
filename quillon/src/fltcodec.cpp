#include "fltcodec.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace quillon {

void giveName(char (&id)[8], std::string_view prefix, std::int16_t& counter) {
    // Two letters and "-32768" are 8 characters, which fill the ID.
    char* digits = std::copy(prefix.begin(), prefix.end(), id);
    char* end = std::to_chars(digits, std::end(id), counter).ptr;
    std::fill(end, std::end(id), '\0');
    counter = static_cast<std::int16_t>(counter + 1);
}

}  // namespace quillon
