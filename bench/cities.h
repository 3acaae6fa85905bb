// The cities that programs over many files are measured with.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

namespace bench {

/// A city of many files and one of few, in a folder that goes with the object.
class Cities {
public:
    static constexpr std::size_t kFewFiles = 500;

    /// The first argument, where there is one, is the number of files; else there are 10,000.
    Cities(const char* program, int count, char** arguments);
    ~Cities();
    Cities(const Cities&) = delete;
    Cities& operator=(const Cities&) = delete;

    std::size_t files() const noexcept { return files_; }
    /// "10000 files: ", for the rows of the table.
    std::string named(const char* what) const;

    std::filesystem::path operator/(const char* name) const { return folder_ / name; }
    std::filesystem::path many() const { return folder_ / "city"; }
    std::filesystem::path few() const { return folder_ / "few"; }

    /// The databases of the large one, in order.
    std::vector<std::filesystem::path> databases() const;

private:
    std::size_t files_;
    std::filesystem::path folder_;
};

}  // namespace bench
