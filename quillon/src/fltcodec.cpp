#include "fltcodec.h"

#include <quillon/fltstream.h>

#include <bit>
#include <cstring>

namespace quillon {

// The text grows from its end, in one word whose lowest byte comes first. Stored at once, it can be
// loaded at once by the codec that writes it next.
void giveName(char (&id)[8], const DefaultName& name, FltStream& stream) {
    std::int16_t& counter = stream.header().*name.counter;
    static_assert(std::endian::native == std::endian::little);
    std::uint64_t text = 0;
    const auto prepend = [&text](char c) { text = text << 8 | static_cast<std::uint8_t>(c); };
    // Two letters and "-32768" are 8 characters, which fill the ID.
    auto number = static_cast<unsigned>(counter < 0 ? -counter : counter);
    do {
        prepend(static_cast<char>('0' + number % 10));
        number /= 10;
    } while (number != 0);
    if (counter < 0) prepend('-');
    for (auto c = name.prefix.rbegin(); c != name.prefix.rend(); ++c) prepend(*c);
    std::memcpy(id, &text, sizeof id);
    counter = static_cast<std::int16_t>(counter + 1);
}

}  // namespace quillon
