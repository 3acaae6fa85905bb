// Writes the sample scenes into a folder.
#include "airport.h"
#include "city.h"
#include "faults.h"
#include "harbour.h"

#include <base/paths.h>
#include <tessera_version.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

namespace {

bool writeSamples(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    const std::string path = base::textOf(folder / "airport.flt");
    if (!samples::writeScene(samples::makeAirport(), path)) {
        std::fprintf(stderr, "make_samples: cannot write %s\n", path.c_str());
        return false;
    }
    std::printf("%s\n", path.c_str());
    samples::writeSceneFile(samples::makeAirliner(), folder / "aircraft/airliner.flt");
    if (!samples::writeFaults(base::textOf(folder))) {
        std::fprintf(stderr, "make_samples: cannot write the faulty scene\n");
        return false;
    }
    samples::writeHarbour(folder / "harbour");
    return true;
}

/// Writes the city that "--city N FOLDER" asks for.
bool writeCityOf(const std::string& number, const std::filesystem::path& folder) {
    constexpr unsigned long kMost = 10'000'000;
    char* end = nullptr;
    const unsigned long files = std::strtoul(number.c_str(), &end, 10);
    if (number.empty() || *end != '\0' || files == 0 || files > kMost) {
        std::fprintf(stderr, "make_samples: a city has 1 to %lu files\n", kMost);
        return false;
    }
    samples::writeCity(folder, files);
    return true;
}

int run(const std::vector<std::filesystem::path>& words) {
    if (words.size() == 1 && words[0] == "--version") {
        std::puts("make_samples " TESSERA_VERSION);
        return 0;
    }
    const bool isCity = words.size() == 3 && words[0] == "--city";
    if (words.size() != 1 && !isCity) {
        std::fputs(
            "usage: make_samples FOLDER\n       make_samples --city N FOLDER\n"
            "       make_samples --version\n",
            stderr);
        return 2;
    }
    try {
        const bool isDone =
            isCity ? writeCityOf(base::textOf(words[1]), words[2]) : writeSamples(words[0]);
        return isDone ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_samples: %s\n", error.what());
        return 1;
    }
}

}  // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** arguments) {
    return run({arguments + (count > 0 ? 1 : 0), arguments + count});
}
#else
int main(int count, char** arguments) {
    return run({arguments + (count > 0 ? 1 : 0), arguments + count});
}
#endif
