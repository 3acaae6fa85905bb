// Whether the result of a file is up to date.
#pragma once

#include <base/filereads.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace kilnbatch {

/// Of the content of a file; none when it cannot be read.
std::optional<std::string> hashOf(const std::filesystem::path& path);
std::string hashOfText(std::string_view text);

/// The files that were read or looked for: relative to `root` where they are below it.
std::vector<std::string> namesOf(const base::FileReads& reads, const std::filesystem::path& root);

/// What one result was made of and with, as a small JSON file says it.
// The JSON object moves without exceptions; what might throw in it are its own assertions.
// NOLINTNEXTLINE(bugprone-exception-escape)
struct Stamp {
    std::string options;                ///< a hash of all that decides beside the files
    std::optional<std::string> output;  ///< of the result's content; none when nothing is exported
    /// The files that were read or looked for, with the hash of each, none for one that was not
    /// there. Those below the folder of the batch are relative to it, so that it may move.
    std::map<std::string, std::optional<std::string>> files;
    nlohmann::json result;  ///< what is reported

    /// Of what was read below or beside `root`. Nothing when a file has been written meanwhile, so
    /// that nobody knows what of it was read.
    static std::optional<Stamp> of(const base::FileReads& reads, const std::filesystem::path& root);

    /// Nothing when there is none that can be read at `path`.
    static std::optional<Stamp> read(const std::filesystem::path& path);
    /// Throws `std::system_error`.
    void write(const std::filesystem::path& path) const;

    /// Whether the same would come of it again: nothing that it was made of has changed, and the
    /// result at `made` is what was made. `made` is empty when nothing is exported.
    bool isUpToDate(const std::string& optionsNow, const std::filesystem::path& root,
                    const std::filesystem::path& made) const;
};

}  // namespace kilnbatch
