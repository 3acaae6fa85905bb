// The codec that sets a field by its name, for the source files of the classes that have it.
#pragma once

#include "fltlayout.h"

#include <quillon/fltfieldedit.h>

#include <charconv>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

namespace quillon {

namespace {

/// Gives the field `wanted` the value that a text says, wherever the layout names it.
struct AssignCodec {
    static constexpr bool kReads = true;
    std::string_view wanted;
    std::string_view text;  ///< of numbers, what has not been taken yet
    bool isFound = false;
    bool isRefused = false;

    template <FltNumber T>
    void field(const char* name, T& value) {
        if (name == wanted) take(value);
    }
    template <FltNumber T, std::size_t size>
    void field(const char* name, T (&numbers)[size]) {
        for (T& value : numbers) field(name, value);
    }
    template <FltNumber T, std::size_t rows, std::size_t columns>
    void field(const char* name, T (&matrix)[rows][columns]) {
        for (auto& row : matrix) field(name, row);
    }
    template <std::size_t size>
    void field(const char* name, char (&characters)[size]) {
        if (name != wanted) return;
        isFound = true;
        isRefused = text.size() >= size || text.find('\0') != text.npos;
        if (!isRefused) fltSetText(characters, std::exchange(text, {}));
    }
    void field(const char* name, auto& point) requires requires { point.x, point.y, point.z; }
    {
        field(name, point.x);
        field(name, point.y);
        field(name, point.z);
    }
    void field(const char* name, FltColor3f& color) {
        field(name, color.red);
        field(name, color.green);
        field(name, color.blue);
    }
    void items(auto& list, auto&& layoutItem, std::size_t = kAnyCount) {
        for (auto& each : list) layoutItem(*this, each);
    }
    void rest(const char*, auto&) {}
    void reserved(std::uint32_t) {}

private:
    template <FltNumber T>
    void take(T& value) {
        isFound = true;
        text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
        const std::string_view word = text.substr(0, text.find(' '));
        text.remove_prefix(word.size());
        const char* const end = word.data() + word.size();
        if constexpr (std::is_floating_point_v<T>) {
            T read = 0;
            const auto [behind, error] = std::from_chars(word.data(), end, read);
            isRefused |= error != std::errc() || behind != end || !std::isfinite(read);
            value = read;
        } else {
            std::int64_t read = 0;
            const auto [behind, error] = std::from_chars(word.data(), end, read);
            isRefused |= error != std::errc() || behind != end || !std::in_range<T>(read);
            value = static_cast<T>(read);
        }
    }
};

}  // namespace

/// Of one class; instantiated in its source file, which has the layout.
template <typename Record>
FltFieldSet assignField(Record& record, std::string_view field, std::string_view text) {
    Record changed = record;
    AssignCodec codec{field, text};
    Layout<Record>::fields(codec, changed);
    if (!codec.isFound) return FltFieldSet::kNoField;
    if (codec.isRefused || codec.text.find_first_not_of(' ') != codec.text.npos)
        return FltFieldSet::kRefused;
    record = std::move(changed);
    return FltFieldSet::kDone;
}

}  // namespace quillon
