#include <quillon/fltfactory.h>
#include <quillon/fltheader.h>
#include <quillon/fltrecordtype.h>

std::unique_ptr<FltRecord> fltCreateRecord(std::uint16_t opcode) {
    if (opcode == kFltHeader) return std::make_unique<FltHeader>();
    return fltCreateFileRecord(opcode);
}

std::unique_ptr<FltRecord> fltCreateFileRecord(std::uint16_t opcode) {
    const FltRecordType* const type = fltRecordType(opcode);
    return type != nullptr && type->isStored() ? type->create() : nullptr;
}
