#include <diagnostics/assertion.h>

#include <algorithm>
#include <cstring>

namespace diagnostics {

AviaryAssertion::AviaryAssertion(const char* sourceFile, int sourceLine) noexcept
    : file{}, line(sourceLine) {
    std::memcpy(file, sourceFile, std::min(std::strlen(sourceFile), sizeof file - 1));
}

}  // namespace diagnostics
