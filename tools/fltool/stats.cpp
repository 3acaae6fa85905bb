#include "commands.h"
#include "progress.h"

#include <quillon/fltfilereader.h>
#include <quillon/fltrecordtype.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <ostream>

namespace fltool {

namespace {

struct Row {
    std::size_t count = 0;
    std::size_t bytes = 0;
    std::uint16_t shortest = 0xFFFF;
    std::uint16_t longest = 0;
    std::int32_t depth = 0;

    void add(std::uint16_t length, std::int32_t level) {
        ++count;
        bytes += length;
        shortest = std::min(shortest, length);
        longest = std::max(longest, length);
        depth = std::max(depth, level);
    }
};

void printRow(std::ostream& out, const char* opcode, const char* name, const Row& row) {
    char line[160];
    std::snprintf(line, sizeof line, "%6s %-32s %10zu %12zu %8u %8u %6d\n", opcode, name, row.count,
                  row.bytes, row.count == 0 ? 0U : static_cast<unsigned>(row.shortest),
                  static_cast<unsigned>(row.longest), row.depth);
    out << line;
}

}  // namespace

void stats(const std::string& file, std::ostream& out, std::ostream& notes) {
    const FltFileBytes bytes = FltFileBytes::load(file);
    FltFileReader reader(bytes.bytes());
    std::map<std::uint16_t, Row> rows;
    Row all;
    {
        Progress progress(bytes.bytes().size());
        while (reader.next()) {
            progress.reached(reader.offset());
            rows[reader.opcode()].add(reader.length(), reader.level());
            all.add(reader.length(), reader.level());
        }
    }
    if (reader.hasHeader()) out << "format revision " << reader.header().formatRevision << "\n\n";
    out << "opcode name                                  count        bytes shortest  longest  "
           "depth\n";
    for (const auto& [opcode, row] : rows)
        printRow(out, std::to_string(opcode).c_str(), fltRecordName(opcode), row);
    printRow(out, "", "all", all);
    noteStrayBytes(reader.strayBytes(), notes);
}

}  // namespace fltool
