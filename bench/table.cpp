#include "table.h"

#include <cmath>
#include <cstdio>
#include <string_view>
#include <utility>

namespace bench {
namespace {

// The names are ours and hold no control characters.
std::string quoted(const std::string& text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') result += '\\';
        result += c;
    }
    return result + '"';
}

/// JSON has no infinity and no NaN.
std::string number(double value) {
    if (!std::isfinite(value)) return "null";
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", value);
    return text;
}

}  // namespace

Table::Table(std::string program, int& count, char** arguments) : program_(std::move(program)) {
    int kept = 1;
    for (int i = 1; i < count; ++i) {
        if (std::string_view(arguments[i]) == "--json")
            json_ = true;
        else
            arguments[kept++] = arguments[i];
    }
    count = kept;
    arguments[kept] = nullptr;
}

void Table::value(const std::string& name, double figure, const char* unit, double bound) {
    print({name, figure, std::nan(""), unit, bound, figure <= bound});
}

void Table::ratio(const std::string& name, double figure, double measure, const char* unit,
                  double bound) {
    print({name, figure, measure, unit, bound, figure <= bound * measure});
}

void Table::print(const Row& row) {
    if (!row.held) ++missed_;
    if (json_)
        printJson(row);
    else
        printText(row);
    std::fflush(stdout);
}

void Table::printJson(const Row& row) const {
    std::printf(
        R"({"program":%s,"name":%s,"value":%s,"measure":%s,"ratio":%s,"unit":%s,"bound":%s,"held":%s})"
        "\n",
        quoted(program_).c_str(), quoted(row.name).c_str(), number(row.figure).c_str(),
        number(row.measure).c_str(), number(row.figure / row.measure).c_str(),
        quoted(row.unit).c_str(), number(row.bound).c_str(), row.held ? "true" : "false");
}

void Table::printText(const Row& row) {
    if (!std::exchange(headed_, true))
        std::printf("%-62s %12s %12s %-5s %6s %6s\n", program_.c_str(), "ours", "measure", "unit",
                    "ratio", "bound");
    std::printf("%-62s %12.3f ", row.name.c_str(), row.figure);
    if (std::isnan(row.measure))
        std::printf("%12s %-5s %6s", "", row.unit, "");
    else
        std::printf("%12.3f %-5s %6.2f", row.measure, row.unit, row.figure / row.measure);
    if (std::isfinite(row.bound)) std::printf(" %6.2f", row.bound);
    std::puts(row.held ? "" : "  MISSED");
}

}  // namespace bench
