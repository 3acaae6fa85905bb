#include "valuetext.h"

#include <fltkilnutil/attrtext.h>

namespace tessera {

std::string normalisedValue(FltAttrType type, std::string_view entered) {
    char text[kFltNumberTextSize];
    switch (type) {
        case FltAttrType::Integer:
            return {text, fltFormatInteger(fltParseInteger(entered), text)};
        case FltAttrType::Float:
        case FltAttrType::Double:
            return {text, fltFormatReal(fltParseReal(entered), text)};
        case FltAttrType::Boolean: {
            const bool no = !entered.empty() &&
                            std::string_view("fF0").find(entered[0]) != std::string_view::npos;
            return no ? "0" : "1";
        }
        default:
            return std::string(entered);
    }
}

bool isNormalised(FltAttrType type) noexcept {
    return type != FltAttrType::Text && type != FltAttrType::Enumeration;
}

}  // namespace tessera
