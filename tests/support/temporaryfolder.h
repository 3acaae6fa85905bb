// A folder for the files of one test.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <string>

/// A new, empty folder that goes with the object. No other test has it, in this process or in one
/// that runs at the same time. Unless a prefix is given, its name holds a space and more than
/// ASCII, as users' folders do.
class TemporaryFolder {
public:
    explicit TemporaryFolder(const std::u8string& prefix = u8"tessera 测试 ") {
        std::random_device random;
        do {
            const std::string digits = std::to_string(random());
            path_ = std::filesystem::temp_directory_path() /
                    (prefix + std::u8string(digits.begin(), digits.end()));
        } while (!std::filesystem::create_directory(path_));
    }
    ~TemporaryFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::filesystem::path& path() const { return path_; }

    /// The path of `name` in UTF-8, with "/" between folders; of the folder itself if `name` is
    /// empty.
    std::string file(const char8_t* name) const {
        const std::u8string text = (*name ? path_ / name : path_).generic_u8string();
        return {text.begin(), text.end()};
    }
    std::string file(const char* name) const {
        return file(std::u8string(name, name + std::char_traits<char>::length(name)).c_str());
    }

    /// Writes the bytes to a file and returns its path in UTF-8.
    template <class Name>
    std::string write(const Name* name, std::span<const std::uint8_t> bytes) const {
        std::ofstream(path_ / name, std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return file(name);
    }

    std::size_t fileCount() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(path_), {}));
    }

private:
    std::filesystem::path path_;
};
