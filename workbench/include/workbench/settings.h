// What the user has set, kept from one run to the next.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace workbench {

/// Values by name, in a text file with one "name=value" a line in UTF-8. A file that cannot be read
/// has none, one that cannot be written lasts until the program ends: nobody needs to hear of
/// either. Lines that are no such pair are dropped.
class Settings {
public:
    /// Reads the file at `path`; an empty path keeps the values in memory only.
    explicit Settings(std::string path);

    /// The value of a name; empty without one.
    std::string value(std::string_view name) const;
    /// Neither has a line break, and the name no "=".
    void set(std::string_view name, std::string_view value);

private:
    std::string path_;
    std::map<std::string, std::string, std::less<>> values_;
};

}  // namespace workbench
