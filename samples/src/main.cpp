// Writes the sample scenes into a folder.
#include "airport.h"

#include <base/paths.h>

#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>

namespace {

bool writeSamples(const std::filesystem::path& folder) {
    std::filesystem::create_directories(folder);
    const std::string path = base::textOf(folder / "airport.flt");
    if (!samples::writeScene(samples::makeAirport(), path)) {
        std::fprintf(stderr, "make_samples: cannot write %s\n", path.c_str());
        return false;
    }
    std::printf("%s\n", path.c_str());
    return true;
}

int run(int count, const std::filesystem::path& folder) {
    if (count != 2) {
        std::fputs("usage: make_samples FOLDER\n", stderr);
        return 2;
    }
    try {
        return writeSamples(folder) ? 0 : 1;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make_samples: %s\n", error.what());
        return 1;
    }
}

}  // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** arguments) {
    return run(count, count == 2 ? arguments[1] : L"");
}
#else
int main(int count, char** arguments) {
    return run(count, count == 2 ? arguments[1] : "");
}
#endif
