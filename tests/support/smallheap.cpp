// Linked into test programs that run a second time with the memory that users' scenes have, which
// the address sanitizer otherwise replaces.
#include <kiln/host/diagnostics.h>

#include <cstdlib>

namespace {

[[maybe_unused]] const bool kChosen = [] {
    if (std::getenv("TESSERA_SMALL_HEAP") != nullptr) kiln::useSmallHeap(true);
    return true;
}();

}  // namespace
