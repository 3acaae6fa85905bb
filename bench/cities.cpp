#include "cities.h"

#include "ownprocess.h"

#include <city.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace bench {

namespace fs = std::filesystem;

Cities::Cities(const char* program, int count, char** arguments)
    : folder_(fs::temp_directory_path() /
              (std::string(program) + '-' + std::to_string(::getpid()))) {
    constexpr std::size_t kFiles = 10000;
    files_ = count > 1 ? std::strtoul(arguments[1], nullptr, 10) : kFiles;
    inOwnProcess([&] {
        samples::writeCity(many(), files_);
        samples::writeCity(few(), kFewFiles);
        return Measures();
    });
}

Cities::~Cities() {
    std::error_code ignored;
    fs::remove_all(folder_, ignored);
}

std::string Cities::named(const char* what) const {
    return std::to_string(files_) + ' ' + what + ": ";
}

std::vector<fs::path> Cities::databases() const {
    std::vector<fs::path> files;
    for (const auto& entry : fs::recursive_directory_iterator(many()))
        if (entry.path().extension() == ".flt") files.push_back(entry.path());
    std::ranges::sort(files);
    return files;
}

}  // namespace bench
