#include "attributestore.h"

#include "recordkinds.h"

#include <base/utf16.h>
#include <fltkilnutil/attrtext.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <windows.h>

namespace tessera {
namespace {

int lightIcon(NodeHandle handle) noexcept {
    KilnLight options;
    if (!fltGetOptions(nodeOf(handle), options)) return kindRowByIcon(IconKind::kOmniLight);
    switch (options.palette.lightType) {
        case 0:
            return kindRowByIcon(IconKind::kLightSource);
        case 1:
            return kindRowByIcon(IconKind::kOmniLight);
        case 2:
            return kindRowByIcon(IconKind::kSpotLight);
        default:
            return -1;
    }
}

}  // namespace

std::optional<FltNodeKind> recordKind(NodeHandle handle) noexcept {
    FltNodeKind kind{};
    if (!fltGetKind(nodeOf(handle), true, kind)) return std::nullopt;
    return kind;
}

bool isOfKind(NodeHandle handle, FltNodeKind kind) noexcept {
    return recordKind(handle) == kind;
}

int iconOf(NodeHandle handle) noexcept {
    const std::optional<FltNodeKind> kind = recordKind(handle);
    if (!kind) return kindRowByIcon(IconKind::kPlain);
    if (*kind == FltNodeKind::LightSource) return lightIcon(handle);
    return kindRowByOpcode(static_cast<std::uint16_t>(*kind));
}

FltAttrGroup* loadAttributes(NodeHandle handle) noexcept {
    return fltAttrLoad(nodeOf(handle), kFltRevision);
}

bool storeAttribute(NodeHandle handle, FltAttrGroup& set, FltAttrDesc& attribute,
                    const std::string& value) noexcept {
    return fltAttrStoreRow(nodeOf(handle), set, attribute, value.c_str());
}

bool editAttribute(NodeHandle handle, FltAttrGroup& set, FltAttrDesc& attribute,
                   const std::string& value) noexcept {
    return fltAttrEdit(nodeOf(handle), kFltRevision, set, attribute, value.c_str());
}

FltAttrDesc* attributeAt(const FltAttrGroup& set, int row) noexcept {
    FltAttrDesc* at = set.descriptors;
    for (; row > 0 && !at->isTerminator(); --row) ++at;
    return row < 0 || at->isTerminator() ? nullptr : at;
}

bool equalIgnoringCase(std::string_view a, std::string_view b) {
    const std::wstring wideA = base::toWide(a);
    const std::wstring wideB = base::toWide(b);
    return ::CompareStringOrdinal(wideA.c_str(), static_cast<int>(wideA.size()), wideB.c_str(),
                                  static_cast<int>(wideB.size()), TRUE) == CSTR_EQUAL;
}

bool sameValue(const FltAttrDesc& a, FltAttrType typeOfB, const char* textOfB) {
    if (a.type != typeOfB) return false;
    switch (a.type) {
        case FltAttrType::Integer:
            return fltParseInteger(a.value.text()) == fltParseInteger(textOfB);
        case FltAttrType::Float:
        case FltAttrType::Double: {
            const double x = fltParseReal(a.value.text());
            const double y = fltParseReal(textOfB);
            return !(x < y) && !(y < x);
        }
        default:
            return equalIgnoringCase(a.value.text(), textOfB);
    }
}

}  // namespace tessera
