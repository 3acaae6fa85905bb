// How a record shows its fields to code that does not know its class.
#pragma once

#include <cstdint>
#include <string_view>

/// Receives the fields of a record, one call each, by their camelCase names.
/// `index` is the place in a field that holds several values, -1 for a single one.
class FltFieldVisitor {
public:
    virtual void integer(const char* name, int index, std::int64_t value) = 0;
    virtual void real(const char* name, int index, double value) = 0;
    /// A field of 32 bits; shown as any other real unless the visitor cares.
    virtual void single(const char* name, int index, float value) {
        real(name, index, static_cast<double>(value));
    }
    /// `value` ends at the field's terminator or its last byte.
    virtual void text(const char* name, std::string_view value) = 0;

protected:
    ~FltFieldVisitor() = default;
};
