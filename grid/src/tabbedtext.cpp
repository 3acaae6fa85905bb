#include "tabbedtext.h"

#include <algorithm>

namespace grid {

std::string quotedForTabs(std::string_view text) {
    if (text.find_first_of("\t\r\n\"") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"') quoted += '"';
        quoted += character;
    }
    quoted += '"';
    return quoted;
}

namespace {

// Takes a quoted text off the front of `rest`. A quote that is never closed reaches to the end.
std::string takeQuoted(std::string_view& rest) {
    std::string text;
    size_t at = 1;
    while (at < rest.size()) {
        if (rest[at] != '"') {
            text += rest[at++];
        } else if (rest.substr(at).starts_with("\"\"")) {
            text += '"';
            at += 2;
        } else {
            ++at;
            break;
        }
    }
    rest.remove_prefix(at);
    return text;
}

std::string takeCell(std::string_view& rest) {
    std::string text = rest.starts_with('"') ? takeQuoted(rest) : std::string();
    const size_t end = std::min(rest.find_first_of("\t\r\n"), rest.size());
    text += rest.substr(0, end);
    rest.remove_prefix(end);
    return text;
}

}  // namespace

std::vector<std::vector<std::string>> splitTabs(std::string_view text) {
    std::vector<std::vector<std::string>> rows;
    while (!text.empty()) {
        std::vector<std::string>& row = rows.emplace_back();
        row.push_back(takeCell(text));
        while (text.starts_with('\t')) {
            text.remove_prefix(1);
            row.push_back(takeCell(text));
        }
        if (text.starts_with("\r\n")) {
            text.remove_prefix(2);
        } else if (!text.empty()) {
            text.remove_prefix(1);
        }
    }
    return rows;
}

}  // namespace grid
