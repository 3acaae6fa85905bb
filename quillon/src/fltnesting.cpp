#include <quillon/fltnesting.h>
#include <quillon/fltrecordtype.h>

void FltNesting::step(std::uint16_t opcode) noexcept {
    const FltRecordType* const type = fltRecordType(opcode);
    if (type == nullptr) return;
    const auto [kind, by] = type->level;
    switch (kind) {
        case FltLevelKind::kNone:
            break;
        case FltLevelKind::kLevel:
            level += by;
            break;
        case FltLevelKind::kSubface:
            subface += by;
            break;
        case FltLevelKind::kExtension:
            extension += by;
            break;
        case FltLevelKind::kAttribute:
            attribute += by;
            break;
    }
}
