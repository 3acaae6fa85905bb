#include "document.h"

#include <fstream>

namespace {

void addLine(Example& example, const std::string& line) {
    example.text += line + "\n";
    const std::size_t arrow = line.find("--> ");
    if (arrow != std::string::npos) example.printed += line.substr(arrow + 4) + "\n";
}

}  // namespace

std::vector<Example> documentedExamples() {
    std::ifstream document(SCRIPTING_DOCUMENT);
    std::vector<Example> all;
    int number = 0;
    bool inside = false;
    for (std::string line; std::getline(document, line);) {
        ++number;
        if (line == "```ks") {
            inside = true;
            all.push_back({number + 1, "", ""});
        } else if (line == "```") {
            inside = false;
        } else if (inside) {
            addLine(all.back(), line);
        }
    }
    return all;
}
