#include "fltcodec.h"

#include <cstdio>

namespace quillon {

void nameRecord(char (&id)[8], const char* pattern, std::int16_t& counter) {
    if (id[0] != 0) return;
    char name[32];
    std::snprintf(name, sizeof name, pattern, counter);
    fltSetText(id, name);
    counter = static_cast<std::int16_t>(counter + 1);
}

}  // namespace quillon
