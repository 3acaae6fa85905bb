#include "commands.h"

#include <cstdio>

namespace kilnbatch {

// Its files are done by copies of a process, which this platform does not make.
// NOLINTNEXTLINE(performance-unnecessary-value-param)
int runBatchCommand(std::vector<std::string>) {
    std::fputs("kilnbatch: there is no \"batch\" on Windows; call kilnbatch once for each file\n",
               stderr);
    return 1;
}

}  // namespace kilnbatch
