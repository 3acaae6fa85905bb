// Files for the program to work on, and the program as a function.
#pragma once

#include "../quillon/support.h"
#include "../support/temporaryfolder.h"

#include "airport.h"
#include "commandline.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

/// A folder that can be given files for the program.
class Folder : public TemporaryFolder {
public:
    using TemporaryFolder::write;
    std::string write(const char* name, std::string_view words) const {
        return write(name, hex(words));
    }
    Bytes read(const char* name) const {
        std::ifstream bytes(path() / name, std::ios::binary);
        return {std::istreambuf_iterator<char>(bytes), {}};
    }
    std::string writeAirport() const {
        EXPECT_TRUE(samples::writeScene(samples::makeAirport(), file("airport.flt")));
        return file("airport.flt");
    }
};
;

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
