#include <quillon/fltnesting.h>
#include <quillon/fltopcode.h>

void FltNesting::step(std::uint16_t opcode) noexcept {
    switch (opcode) {
        case kFltPushLevel:
            ++level;
            break;
        case kFltPopLevel:
            --level;
            break;
        case kFltPushSubface:
            ++subface;
            break;
        case kFltPopSubface:
            --subface;
            break;
        case kFltPushExtension:
            ++extension;
            break;
        case kFltPopExtension:
            --extension;
            break;
        case kFltPushAttribute:
            ++attribute;
            break;
        case kFltPopAttribute:
            --attribute;
            break;
        default:
            break;
    }
}
