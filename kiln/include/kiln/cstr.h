// The SDK's string.
#pragma once

#include <compare>
#include <string>
#include <utility>

/// A text in UTF-8 that owns its bytes. Never null: a null pointer makes an empty text.
class CStr {
public:
    CStr() = default;
    CStr(const char* text) : text_(text ? text : "") {}
    explicit CStr(std::string text) noexcept : text_(std::move(text)) {}

    /// The text, NUL-terminated; valid until the next change.
    const char* data() const noexcept { return text_.c_str(); }
    operator const char*() const noexcept { return text_.c_str(); }
    const std::string& str() const noexcept { return text_; }

    /// Length in bytes, without the terminator.
    int Length() const noexcept { return static_cast<int>(text_.size()); }
    bool isNull() const noexcept { return text_.empty(); }

    CStr& operator+=(const char* text) {
        if (text) text_ += text;
        return *this;
    }

    bool operator==(const CStr& other) const noexcept { return text_ == other.text_; }
    bool operator==(const char* other) const noexcept { return text_ == (other ? other : ""); }
    auto operator<=>(const CStr& other) const noexcept { return text_ <=> other.text_; }

private:
    std::string text_;
};
