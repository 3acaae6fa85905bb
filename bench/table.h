// What every benchmark program prints: one row for each figure, and whether its bound holds.
#pragma once

#include <limits>
#include <string>

namespace bench {

inline constexpr double kNoBound = std::numeric_limits<double>::infinity();

/// The rows of one program, printed as they come: aligned for people, or with `--json` one JSON
/// object a line. A program returns `status()` from its `main`.
class Table {
public:
    /// Takes `--json` out of the command line.
    Table(std::string program, int& count, char** arguments);

    /// A figure that stands alone and must not be above `bound`, which has the same unit.
    void value(const std::string& name, double figure, const char* unit, double bound = kNoBound);
    /// A figure beside what it is measured against, both of the same run and in the same unit.
    /// Their ratio must not be above `bound`.
    void ratio(const std::string& name, double figure, double measure, const char* unit,
               double bound = kNoBound);

    /// 1 if a bound was missed, otherwise 0.
    int status() const noexcept { return missed_ > 0 ? 1 : 0; }

private:
    struct Row {
        const std::string& name;
        double figure;
        double measure;  ///< NaN without one
        const char* unit;
        double bound;
        bool held;
    };
    void print(const Row& row);
    void printJson(const Row& row) const;
    void printText(const Row& row);

    std::string program_;
    bool json_ = false;
    bool headed_ = false;
    int missed_ = 0;
};

}  // namespace bench
