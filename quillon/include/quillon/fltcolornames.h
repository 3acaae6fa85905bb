// The names of the colors, which stand behind them in the record of their palette.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

/// Names by entry. In the record stands how many there are (32 bits), then for each how long it is
/// with what precedes the name (16 bits), 16 reserved bits, the entry (16 bits), 16 reserved bits,
/// and the name with its terminator.
class FltColorNames {
public:
    static constexpr std::size_t kLongest = 79;  ///< bytes of a name, without its terminator

    /// Reads them; false where the bytes are no such table, which then has no names.
    bool read(std::span<const std::uint8_t> table);

    /// The bytes of the name of `entry`; empty without one. Of several the first counts.
    std::string of(std::int32_t entry) const;

    /// `table`, which can be read, with that name for `entry`; without one where `name` is empty.
    /// All others stay as they stand.
    static std::vector<std::uint8_t> with(std::span<const std::uint8_t> table, std::int32_t entry,
                                          const std::string& name);

private:
    std::map<std::int32_t, std::string> names_;
};
