// Text of files that do not say how they are encoded, by the name that import and export use.
#pragma once

#include <fltkilnutil/textencoding.h>

namespace interchange {

using fltkilnutil::textOf;

}  // namespace interchange
