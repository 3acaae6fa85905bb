#include "attrvalue.h"

#include "attrtable.h"

#include <quillon/fltfloat.h>
#include <quillon/flttext.h>

#include <cstring>
#include <limits>

namespace fltkilnutil {

namespace {

template <typename Number>
Number readAs(const void* address) noexcept {
    Number number;
    std::memcpy(&number, address, sizeof number);
    return number;
}

template <typename Number>
void writeAs(void* address, Number number) noexcept {
    std::memcpy(address, &number, sizeof number);
}

/// A field of 8 or 16 bits, cut down to its mask, extended as its type says.
template <typename Number>
std::uint32_t readNarrow(const void* address, std::uint32_t mask) noexcept {
    const auto number = readAs<Number>(address);
    const auto masked =
        mask == 0 ? number : static_cast<Number>(number & static_cast<Number>(mask));
    return static_cast<std::uint32_t>(static_cast<std::int32_t>(masked));
}

template <typename Word>
void writeMasked(void* address, std::uint32_t mask, std::uint32_t value) noexcept {
    const auto kept =
        mask == 0 ? Word{0} : static_cast<Word>(readAs<Word>(address) & static_cast<Word>(~mask));
    writeAs(address, static_cast<Word>(kept | static_cast<Word>(value)));
}

std::span<char> textField(void* address, const FltAttrDesc& descriptor) noexcept {
    return {static_cast<char*>(address), descriptor.field.size};
}

const char* enumText(const FltAttrDesc& descriptor, std::int32_t value) noexcept {
    const FltAttrEnum* table = descriptor.enumeration;
    if (table == nullptr) return "";
    // In a flag of one byte all but zero means yes. A wider field with a value of its own has no
    // text.
    if (table == yesNoTable && value != 0 && descriptor.field.size == 1) value = 1;
    for (; table->text != nullptr; ++table)
        if (table->value == value) return table->text;
    return "";
}

/// The float gets the lower half of the double. The upper half would fall on the field of the row
/// behind, which owns those bytes and is stored right after this one, so it is not written in the
/// first place.
void storeDoubleOverFloat(void* address, double value) noexcept {
    writeAs(address, static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(value)));
}

void* fieldAddress(const FltAttrBlock& block, const FltAttrDesc& descriptor) noexcept {
    return descriptor.field.address(block.base());
}

/// A row that is declared as a double over a 32-bit float. Storing changes its field even when the
/// text is what the field prints.
bool isDoubleOverFloat(const FltAttrDesc& descriptor) noexcept {
    return descriptor.type == FltAttrType::Double && descriptor.field.size < sizeof(double);
}

}  // namespace

std::string_view printField(const FltAttrBlock& block, const FltAttrDesc& descriptor,
                            NumberText& room) {
    switch (descriptor.width) {
        case FltAttrWidth::Text:
            return fltText(textField(fieldAddress(block, descriptor), descriptor));
        case FltAttrWidth::Float32:
            return {room, fltFormatReal(readAs<float>(fieldAddress(block, descriptor)), room)};
        case FltAttrWidth::Float64:
            return {room, fltFormatReal(readAs<double>(fieldAddress(block, descriptor)), room)};
        default:
            break;
    }
    const auto value = static_cast<std::int32_t>(fltAttrGetField(block, descriptor));
    if (descriptor.type == FltAttrType::Enumeration) return enumText(descriptor, value);
    return {room, fltFormatInteger(value, room)};
}

void storeField(const FltAttrBlock& block, const FltAttrDesc& descriptor) {
    void* const address = fieldAddress(block, descriptor);
    const std::string_view text = descriptor.value.text();
    if (isDoubleOverFloat(descriptor)) return storeDoubleOverFloat(address, fltParseReal(text));
    NumberText room;
    const std::string_view printed = printField(block, descriptor, room);
    if (text == printed) return;
    switch (descriptor.type) {
        case FltAttrType::Text:
            fltSetText(textField(address, descriptor), text);
            break;
        case FltAttrType::Integer:
            fltAttrSetField(block, descriptor, static_cast<std::uint32_t>(fltParseInteger(text)));
            break;
        case FltAttrType::Float:
            writeAs(address, fltNarrow(fltParseReal(text)));
            break;
        case FltAttrType::Double:
            writeAs(address, fltParseReal(text));
            break;
        case FltAttrType::Enumeration:
            // The text in the other language that says what the field prints changes nothing
            // either.
            if (std::int32_t value = 0; fltAttrEnumValue(descriptor.enumeration, text, value) &&
                                        printed != enumText(descriptor, value))
                fltAttrSetField(block, descriptor, static_cast<std::uint32_t>(value));
            break;
        case FltAttrType::Boolean:
            break;  // descriptors hold an enumeration instead
    }
}

}  // namespace fltkilnutil

using namespace fltkilnutil;

FltAttrRange fltAttrRange(FltAttrWidth width) noexcept {
    const auto rangeOf = []<typename Number>(Number) -> FltAttrRange {
        return {double{std::numeric_limits<Number>::lowest()},
                double{std::numeric_limits<Number>::max()}};
    };
    switch (width) {
        case FltAttrWidth::Int8:
            return rangeOf(std::int8_t{});
        case FltAttrWidth::Uint8:
            return rangeOf(std::uint8_t{});
        case FltAttrWidth::Int16:
            return rangeOf(std::int16_t{});
        case FltAttrWidth::Uint16:
            return rangeOf(std::uint16_t{});
        case FltAttrWidth::Float32:
            return rangeOf(float{});
        case FltAttrWidth::Float64:
            return rangeOf(double{});
        default:
            return rangeOf(std::int32_t{});
    }
}

std::uint32_t fltAttrGetField(FltAttrBlock block, const FltAttrDesc& descriptor) noexcept {
    if (block.target() != descriptor.target || descriptor.field.address == nullptr) return 0;
    const void* const address = fieldAddress(block, descriptor);
    const std::uint32_t mask = descriptor.mask;
    switch (descriptor.width) {
        case FltAttrWidth::Int32: {
            const auto whole = readAs<std::uint32_t>(address);
            if (mask == 0) return whole;
            // A range of bits with choices is told apart by its bits in place.
            if (descriptor.bitFlag == 0 && descriptor.enumeration != nullptr) return whole & mask;
            return (whole & mask) != 0 ? 1 : 0;
        }
        case FltAttrWidth::Word32:
            return readAs<std::uint32_t>(address);
        case FltAttrWidth::Bool32: {
            const auto whole = readAs<std::uint32_t>(address);
            if (mask == 0) return whole;
            return (whole & mask) != 0 ? 1 : 0;
        }
        case FltAttrWidth::Int16:
            return readNarrow<std::int16_t>(address, mask);
        case FltAttrWidth::Uint16:
            return readNarrow<std::uint16_t>(address, mask);
        case FltAttrWidth::Int8:
            return readNarrow<std::int8_t>(address, mask);
        case FltAttrWidth::Uint8:
            return readNarrow<std::uint8_t>(address, mask);
        default:
            return 0;
    }
}

void fltAttrSetField(FltAttrBlock block, const FltAttrDesc& descriptor,
                     std::uint32_t value) noexcept {
    if (block.target() != descriptor.target || descriptor.field.address == nullptr) return;
    void* const address = fieldAddress(block, descriptor);
    const std::uint32_t mask = descriptor.mask;
    if (descriptor.bitFlag != 0 && mask != 0 && value != 0) value = mask;
    switch (descriptor.width) {
        case FltAttrWidth::Int32:
        case FltAttrWidth::Word32:
        case FltAttrWidth::Bool32:
            return writeMasked<std::uint32_t>(address, mask, value);
        case FltAttrWidth::Int16:
        case FltAttrWidth::Uint16:
            return writeMasked<std::uint16_t>(address, mask, value);
        case FltAttrWidth::Int8:
        case FltAttrWidth::Uint8:
            return writeMasked<std::uint8_t>(address, mask, value);
        default:
            return;
    }
}

bool fltAttrEnumValue(const FltAttrEnum* table, std::string_view text,
                      std::int32_t& value) noexcept {
    if (table == nullptr) return false;
    const FltAttrEnum* other = nullptr;
    for (; table->text != nullptr; ++table) {
        if (table->text == text) {
            value = table->value;
            return true;
        }
        if (other == nullptr && table->otherText != nullptr && table->otherText == text)
            other = table;
    }
    if (other == nullptr) return false;
    value = other->value;
    return true;
}
