// What files refer to, for checks that come one after the other.
#pragma once

#include <base/filestamp.h>

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace checks {

/// The files that databases refer to, as they were read: again only when they have changed since.
class KnownReferences {
public:
    /// The names of files that the database at `path` refers to, as they stand in it; none when it
    /// cannot be read, though one that is gone keeps those that it had. What was read up to a
    /// damage counts. `path` is UTF-8.
    std::vector<std::string> namesIn(const std::string& path);

private:
    struct Known {
        std::optional<base::FileStamp> stamp;
        std::string names;  ///< with a NUL behind each: there may be very many files
    };
    std::unordered_map<std::string, Known> files_;
};

}  // namespace checks
