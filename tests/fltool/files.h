// Files for the program to work on, and the program as a function.
#pragma once

#include "../quillon/support.h"

#include "airport.h"
#include "commandline.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

/// A folder of its own, gone with the object. Its name holds more than ASCII.
class Folder {
public:
    Folder() {
        path_ = std::filesystem::temp_directory_path() /
                (u8"fltool \u673a\u573a " + suffix(std::random_device{}()));
        std::filesystem::create_directories(path_);
    }
    ~Folder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::filesystem::path path(const char* name) const { return path_ / name; }
    /// The path of `name` in UTF-8.
    std::string text(const char* name) const {
        const std::u8string utf8 = path(name).u8string();
        return {utf8.begin(), utf8.end()};
    }
    std::string write(const char* name, const Bytes& bytes) const {
        std::ofstream(path(name), std::ios::binary)
            .write(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::streamsize>(bytes.size()));
        return text(name);
    }
    std::string write(const char* name, std::string_view words) const {
        return write(name, hex(words));
    }
    Bytes read(const char* name) const {
        std::ifstream file(path(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    std::string writeAirport() const {
        EXPECT_TRUE(samples::writeScene(samples::makeAirport(), text("airport.flt")));
        return text("airport.flt");
    }
    std::size_t count() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(path_), {}));
    }

private:
    static std::u8string suffix(unsigned number) {
        const std::string digits = std::to_string(number);
        return {digits.begin(), digits.end()};
    }

    std::filesystem::path path_;
};

/// One line of an error, as every failure of the tool ends in.
MATCHER(IsOneErrorLine, "") {
    return arg.starts_with("fltool: ") && arg.size() > 9 && arg.find('\n') == arg.size() - 1;
}

struct Outcome {
    int code;
    std::string out;
    std::string error;
};

inline Outcome runTool(const std::vector<std::string>& arguments) {
    std::ostringstream out;
    std::ostringstream error;
    const int code = fltool::run(arguments, out, error);
    return {code, out.str(), error.str()};
}

/// A header that says 15.8 and nothing more.
inline const std::string kHeader = "0001 0148 'db':8 0000062C 00:312 ";
