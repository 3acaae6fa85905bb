// What a file of an older revision cannot say.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

class FltFace;
class FltHeader;
struct FltNewerRecord;

namespace interchange {

/// Counts what a scene says that the revision of its file has no record or no fields for. Records
/// that a revision does not know are written nevertheless; its readers pass over them.
class Losses {
public:
    /// For a file of `revision`, from a database of `source`. Only an older one loses anything.
    Losses(std::uint32_t revision, std::uint32_t source)
        : revision_(revision), isOlder_(revision < source) {}

    /// Whether the file is older than its database. Otherwise nothing need be counted.
    bool mayHappen() const noexcept { return isOlder_; }

    void record(std::uint16_t opcode);
    void face(const FltFace& face);
    void header(const FltHeader& header);

    /// The summary of an export, for the user, with what is lost behind it: ", which
    /// OpenFlight 14.2 cannot say in full: ..." in the host's language; the summary alone when
    /// nothing is.
    std::string toldBehind(const std::string& summary) const;

private:
    std::uint32_t revision_;
    bool isOlder_;
    std::map<const FltNewerRecord*, std::size_t> records_;
    std::size_t faces_ = 0;
    bool header_ = false;
};

}  // namespace interchange
