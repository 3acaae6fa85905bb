// The commands. Each reads the file at a UTF-8 path and prints to `out`.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

namespace checks {
struct Damage;
}

namespace fltool {

/// Why a command cannot do what it is asked to; `what()` is one line for the user.
class CommandError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct DumpOptions {
    std::string file;
    bool json = false;
    std::set<std::uint16_t> opcodes;  ///< the records to show; all when empty
};

/// What is said of bytes behind the last record that are too few for another.
std::string strayText(std::size_t count);
/// The same as a line of its own; nothing for none.
void noteStrayBytes(std::size_t count, std::ostream& notes);

/// Shows every record and the fields of those that are known. A damaged file is shown up to the
/// damage. Throws `FltFileError` at that place and `std::system_error` for a file that cannot be
/// read. One line on `notes` for what was left out at the file's end.
void dump(const DumpOptions& options, std::ostream& out, std::ostream& notes);

struct CheckOptions {
    std::string file;
    std::string target;  ///< its name, or a JSON file (UTF-8 path); empty for none
    bool json = false;
};

/// Prints one line per finding, or one JSON object: damage, and what the rules of the target find,
/// with the rule's code and severity. Returns the number of findings that are errors; all damage
/// is. Throws `std::system_error` for a file that cannot be read and `checks::TargetError`.
std::size_t check(const CheckOptions& options, std::ostream& out);

/// What is not as the format says in the bytes of a file, in their order.
std::vector<checks::Damage> damagesIn(std::span<const std::uint8_t> bytes);

struct ConvertOptions {
    std::string input;
    std::string output;
    std::uint32_t revision = 1580;  ///< OpenFlight revision x 100, 1420 to 1580 or 1600 to 1660
};

/// Writes the input's records at another revision. The output appears, or is replaced, only when
/// it is whole; it may be the input. Throws `CommandError` when it cannot be written, otherwise as
/// `dump`.
void convert(const ConvertOptions& options, std::ostream& out, std::ostream& notes);

/// Prints a table of counts and sizes. Throws as `dump`, before it prints anything.
void stats(const std::string& file, std::ostream& out, std::ostream& notes);

}  // namespace fltool
