#include "recordcache.h"

#include <quillon/fltrecord.h>

namespace interchange {

FltRecord* RecordCache::of(std::uint16_t opcode) {
    if (opcode >= records_.size()) return nullptr;
    std::unique_ptr<FltRecord>& record = records_[opcode];
    if (!record) record = create_(opcode);
    return record.get();
}

FltRecord* RecordCache::fresh(std::uint16_t opcode) {
    if (opcode >= records_.size()) return nullptr;
    records_[opcode] = create_(opcode);
    return records_[opcode].get();
}

}  // namespace interchange
