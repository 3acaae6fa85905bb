// The object record.
#pragma once

#include <quillon/fltrecordof.h>

/// Object; named "o%d" on output.
class FltObject : public FltRecordOf<FltObject, FltNamedRec, kFltObject> {
public:
    std::int32_t flags = 0;
    std::int16_t relativePriority = 0;
    std::int16_t specialEffect1 = 0;
    std::int16_t specialEffect2 = 0;
    std::int16_t transparency = 0;
    std::int16_t significance = 0;
};
