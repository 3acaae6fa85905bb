// JSON texts, read a value at a time.
//
// A value, with all that is within it, becomes a short list of tokens; a list that holds numbers
// and nothing else is one token, whose numbers are read from the text itself. Only the part of the
// text that the value stands in is in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kiln {

/// Where a text stops being JSON.
struct JsonError {
    std::string what;
    const char* at;
    bool atEnd;  ///< the text ends too early
};

struct JsonToken {
    enum class Kind : std::uint8_t {
        kNull,
        kTrue,
        kFalse,
        kNumber,
        kText,
        kNumbers,
        kList,
        kObject
    };

    const char* text;    ///< of a text and of numbers, what stands between quotes or brackets
    std::size_t length;  ///< bytes of that
    std::size_t count;   ///< numbers, elements or members
    std::size_t span;    ///< tokens that it consists of: this one and all within. A member of an
                         ///< object is two, its name and its value.
    Kind kind;
    bool plain;                  ///< of a text: has neither escapes nor characters beyond ASCII
    std::uint32_t initials = 0;  ///< of an object: with which characters its names begin

    /// The bit that a name beginning with `character` sets in `initials`; others may, too.
    static constexpr std::uint32_t initial(char character) noexcept {
        return std::uint32_t{1} << (static_cast<unsigned char>(character) % 32);
    }
};

/// Moves `at` over blanks.
inline void skipJsonBlanks(const char*& at) noexcept {
    while (*at <= ' ' && (*at == ' ' || *at == '\n' || *at == '\r' || *at == '\t')) ++at;
}

/// Reads the outermost object of a text, whose members are either taken whole or, if they are
/// lists, element by element. Everything that it returns is valid until the next call. Throws
/// `JsonError`, what the source throws, and `std::bad_alloc`.
class JsonReader {
public:
    /// Puts up to `size` bytes of the text at `to`, and returns how many; 0 only at its end.
    using Source = std::function<std::size_t(char* to, std::size_t size)>;

    explicit JsonReader(Source source);

    /// Reads the beginning of the outermost object; false when the text is another kind of value.
    bool beginObject();
    /// Reads the next member's name; false at the object's end, behind which only blanks may stand.
    bool nextMember(std::string& name);
    /// Reads the beginning of a member that is a list; false, with nothing read, when it is none.
    bool beginList();
    /// Whether the list has another element; otherwise its end is read.
    bool nextElement();
    /// Reads a value: that of a member, or an element of a list.
    const JsonToken& value();

    /// How many bytes were read.
    std::size_t offset() const noexcept {
        return before_ + static_cast<std::size_t>(at_ - buffer_.data());
    }
    /// Of a place in the text that is still in memory, both counted from 1; columns are bytes.
    struct Position {
        std::size_t line, column;
    };
    Position positionOf(const char* place) const noexcept;

private:
    struct Short {};  // the value goes on behind what is in memory

    template <typename Step>
    auto whole(Step&& step);
    void refill(const char* from);
    [[noreturn]] void fail(const char* what) const;
    bool isEnd() const noexcept { return at_ == end_; }
    void skipBlanks() noexcept { skipJsonBlanks(at_); }
    void skipBlanksAndMore();
    void expect(char character, const char* what);
    void readValue();
    void readText();
    void readName();
    void readMemberName();
    void readNumber();
    bool readNumbers();
    void readWord(std::string_view word, JsonToken::Kind kind);
    bool endsContainer();
    JsonToken& add(JsonToken::Kind kind) {
        return tokens_.emplace_back(JsonToken{at_, 0, 0, 1, kind, true});
    }

    Source source_;
    bool exhausted_ = false;
    std::vector<char> buffer_;  // with NULs behind its text
    const char* at_;
    const char* end_;
    std::size_t before_ = 0;       // bytes before the buffer
    std::size_t linesBefore_ = 0;  // line ends among them
    std::size_t lineStart_ = 0;    // where the line begins that the buffer begins in
    bool first_ = true;            // no member or element was read yet
    std::vector<JsonToken> tokens_;
    std::vector<std::size_t> open_;  // the containers around the present value
};

/// Reads a number at `at`, as JSON has it, and moves `at` behind it; false when there is none. The
/// text ends with a NUL or another character that no number has. Exact: the nearest `double`, or
/// `float`, of the number that is written. False also for one that is too large.
bool readJsonNumber(const char*& at, double& value) noexcept;
bool readJsonNumber(const char*& at, float& value) noexcept;

/// The same for a whole number, not below 0, that has neither point nor exponent.
bool readJsonNumber(const char*& at, std::uint64_t& value) noexcept;

/// Appends what a text token says to `text`; false when it is not UTF-8 or has a wrong escape.
bool appendJsonText(const JsonToken& token, std::string& text);

}  // namespace kiln
