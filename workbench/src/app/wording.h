// The program's name, and numbers and times as it shows them.
#pragma once

#include <workbench/texts.h>

#include <chrono>
#include <cstdio>
#include <string>

namespace workbench {

inline constexpr char kProgramName[] = "Workbench";

/// 1234567 as "1,234,567".
inline std::string grouped(std::size_t number) {
    std::string text = std::to_string(number);
    for (std::size_t at = text.size(); at > 3; at -= 3) text.insert(at - 3, 1, ',');
    return text;
}

/// "1 node", "2,000 nodes".
inline std::string counted(std::size_t number, TextId one, TextId many) {
    return number == 1 ? textOf(one) : textOf(many, {grouped(number)});
}

inline std::string secondsSince(std::chrono::steady_clock::time_point start) {
    char text[32];
    std::snprintf(text, sizeof text, "%.2f s",
                  std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    return text;
}

}  // namespace workbench
