#include "json.h"

#include <base/text.h>

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <iterator>
#include <limits>
#include <type_traits>

namespace kiln {

namespace {

constexpr std::size_t kWindow = std::size_t{1} << 20;

/// What else numbers and blanks between them consist of.
bool isPartOfNumbers(char c) noexcept {
    return c == 'e' || c == 'E' || c == ' ' || c == '\n' || c == '\r' || c == '\t';
}

constexpr std::size_t kBlock = sizeof(__m128i);
constexpr std::size_t kPadding = kBlock;  // bytes that may be read behind the text

__m128i blockAt(const char* at) noexcept {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(at));
}

/// Which bytes of a block are not from `first` to `last`, one bit each.
unsigned outside(__m128i block, char first, char last) noexcept {
    const __m128i low = _mm_cmplt_epi8(block, _mm_set1_epi8(first));
    const __m128i high = _mm_cmpgt_epi8(block, _mm_set1_epi8(last));
    return static_cast<unsigned>(_mm_movemask_epi8(_mm_or_si128(low, high)));
}

unsigned equal(__m128i block, char character) noexcept {
    return static_cast<unsigned>(
        _mm_movemask_epi8(_mm_cmpeq_epi8(block, _mm_set1_epi8(character))));
}

std::size_t countOf(char character, const char* at, const char* end) noexcept {
    std::size_t count = 0;
    for (; end - at >= static_cast<std::ptrdiff_t>(kBlock); at += kBlock) {
        const __m128i same = _mm_cmpeq_epi8(blockAt(at), _mm_set1_epi8(character));
        const __m128i sums = _mm_sad_epu8(_mm_and_si128(same, _mm_set1_epi8(1)), __m128i());
        count += static_cast<std::size_t>(_mm_cvtsi128_si64(sums)) +
                 static_cast<std::size_t>(_mm_extract_epi16(sums, 4));
    }
    return count + static_cast<std::size_t>(std::count(at, end, character));
}

/// Moves over what numbers, their commas and blanks consist of.
void skipNumbers(const char*& at) noexcept {
    for (;;) {
        // Nearly all of it stands together in the character set.
        const __m128i block = blockAt(at);
        const unsigned others = outside(block, '+', '9');
        at += others == 0 ? kBlock : static_cast<std::size_t>(std::countr_zero(others));
        if (others == 0) continue;
        if (!isPartOfNumbers(*at)) return;
        ++at;
    }
}

/// Moves over ASCII characters that stand for themselves in a text.
void skipText(const char*& at) noexcept {
    for (;;) {
        const __m128i block = blockAt(at);
        // Bytes beyond ASCII count as negative.
        const unsigned others =
            outside(block, ' ', '\x7F') | equal(block, '"') | equal(block, '\\');
        if (others != 0) {
            at += std::countr_zero(others);
            return;
        }
        at += kBlock;
    }
}

bool isDigit(char c) noexcept {
    return c >= '0' && c <= '9';
}

/// A decimal number: the digits without point, and what power of ten to multiply them with.
struct Decimal {
    std::uint64_t digits = 0;
    int exponent = 0;
    std::ptrdiff_t count = 0;  // of digits, leading zeros included
    bool negative = false;
};

void readDigits(const char*& at, Decimal& decimal) noexcept {
    const char* const start = at;
    for (; isDigit(*at); ++at)
        decimal.digits = decimal.digits * 10 + static_cast<unsigned>(*at - '0');
    decimal.count += at - start;
}

// Follows the grammar; `digits` overflows with more than 19 of them.
bool readDecimal(const char*& at, Decimal& decimal) noexcept {
    decimal.negative = *at == '-';
    if (decimal.negative) ++at;
    if (!isDigit(*at)) return false;
    if (*at == '0' && isDigit(at[1])) return false;
    readDigits(at, decimal);
    if (*at == '.') {
        const char* const start = ++at;
        readDigits(at, decimal);
        if (at == start) return false;
        constexpr std::ptrdiff_t kMost = 1'000'000;  // beyond all that counts
        decimal.exponent = -static_cast<int>(std::min(at - start, kMost));
    }
    if (*at != 'e' && *at != 'E') return true;
    ++at;
    const bool negative = *at == '-';
    if (*at == '+' || *at == '-') ++at;
    if (!isDigit(*at)) return false;
    int exponent = 0;
    for (; isDigit(*at); ++at) exponent = std::min(exponent * 10 + (*at - '0'), 1'000'000);
    decimal.exponent += negative ? -exponent : exponent;
    return true;
}

constexpr double kPowers[] = {1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,
                              1e8,  1e9,  1e10, 1e11, 1e12, 1e13, 1e14, 1e15,
                              1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};

/// The nearest double, if digits and power of ten are ones that it holds exactly: their product or
/// quotient is then rounded once.
bool takeNearest(const Decimal& decimal, double& value) noexcept {
    constexpr std::uint64_t kMostDigits = std::uint64_t{1} << 53;
    constexpr int kMostPower = static_cast<int>(std::size(kPowers)) - 1;
    if (decimal.count > 19 || decimal.digits > kMostDigits || decimal.exponent < -kMostPower ||
        decimal.exponent > kMostPower)
        return false;
    const auto digits = static_cast<double>(decimal.digits);
    const double magnitude = decimal.exponent < 0 ? digits / kPowers[-decimal.exponent]
                                                  : digits * kPowers[decimal.exponent];
    value = decimal.negative ? -magnitude : magnitude;
    return true;
}

/// The nearest single, if rounding the nearest double leads there: not where the number may lie on
/// the other side of the middle between two singles than its nearest double does.
bool takeNearest(const Decimal& decimal, float& value) noexcept {
    double nearest = 0;
    if (!takeNearest(decimal, nearest)) return false;
    constexpr std::uint64_t kBelowSingle = (std::uint64_t{1} << 29) - 1, kMiddle = 1U << 28;
    const std::uint64_t below = std::bit_cast<std::uint64_t>(nearest) & kBelowSingle;
    const double magnitude = std::abs(nearest);
    const bool isNormal = magnitude >= 2.0 * std::numeric_limits<float>::min() &&
                          magnitude <= std::numeric_limits<float>::max() / 2.0;
    if (nearest != 0 && (!isNormal || (below >= kMiddle - 1 && below <= kMiddle + 1))) return false;
    value = static_cast<float>(nearest);
    return true;
}

template <typename T>
bool readNumberOf(const char*& at, T& value) noexcept {
    const char* const start = at;
    Decimal decimal;
    if (!readDecimal(at, decimal)) return false;
    if (takeNearest(decimal, value)) return true;
    if (std::from_chars(start, at, value).ec != std::errc::result_out_of_range) return true;
    value = decimal.negative ? -T{0} : T{0};  // unless it is too large
    const char* const first = std::find_if(start, at, [](char c) { return c >= '1' && c <= '9'; });
    const std::ptrdiff_t zeros = std::count(start, first, '0');
    return decimal.count - zeros + decimal.exponent <= 0;
}

int hexDigit(char c) noexcept {
    if (isDigit(c)) return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The four digits of "\uXXXX"; -1 for anything else.
int codeUnit(std::string_view text, std::size_t at) noexcept {
    if (text.size() < at + 4) return -1;
    int unit = 0;
    for (std::size_t i = at; i < at + 4; ++i) {
        const int digit = hexDigit(text[i]);
        if (digit < 0) return -1;
        unit = unit * 16 + digit;
    }
    return unit;
}

void appendUtf8(std::string& text, std::uint32_t character) {
    const auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
    if (character < 0x80) return put(character);
    if (character < 0x800) {
        put(0xC0 | character >> 6);
    } else {
        if (character < 0x10000) {
            put(0xE0 | character >> 12);
        } else {
            put(0xF0 | character >> 18);
            put(0x80 | (character >> 12 & 0x3F));
        }
        put(0x80 | (character >> 6 & 0x3F));
    }
    put(0x80 | (character & 0x3F));
}

// Appends the escape at `at`, behind its backslash, and moves behind it; false for a wrong one.
bool appendEscape(std::string_view from, std::size_t& at, std::string& text) {
    constexpr std::string_view kNames = "\"\\/bfnrt";
    constexpr std::string_view kMeanings = "\"\\/\b\f\n\r\t";
    const char name = from[at++];
    if (const std::size_t found = kNames.find(name); found != std::string_view::npos) {
        text += kMeanings[found];
        return true;
    }
    const int unit = name == 'u' ? codeUnit(from, at) : -1;
    if (unit < 0) return false;
    at += 4;
    auto character = static_cast<std::uint32_t>(unit);
    if (character >= 0xD800 && character < 0xE000) {
        const bool pair = character < 0xDC00 && from.substr(at, 2) == "\\u";
        const int low = pair ? codeUnit(from, at + 2) : -1;
        if (low < 0xDC00 || low >= 0xE000) return false;
        at += 6;
        character =
            0x10000 + ((character - 0xD800) << 10) + static_cast<std::uint32_t>(low - 0xDC00);
    }
    appendUtf8(text, character);
    return true;
}

}  // namespace

bool readJsonNumber(const char*& at, double& value) noexcept {
    return readNumberOf(at, value);
}
bool readJsonNumber(const char*& at, float& value) noexcept {
    return readNumberOf(at, value);
}

bool readJsonNumber(const char*& at, std::uint64_t& value) noexcept {
    const char* const start = at;
    Decimal decimal;
    readDigits(at, decimal);
    value = decimal.digits;
    constexpr int kSafeDigits = 19;
    return at != start && (*start != '0' || at == start + 1) && decimal.count <= kSafeDigits &&
           *at != '.' && *at != 'e' && *at != 'E';
}

bool appendJsonText(const JsonToken& token, std::string& text) {
    const std::string_view from(token.text, token.length);
    if (token.plain) {
        text += from;
        return true;
    }
    for (std::size_t at = 0; at < from.size();) {
        if (from[at] == '\\') {
            if (!appendEscape(from, ++at, text)) return false;
            continue;
        }
        const std::size_t length = base::characterAt(from, at);
        if (length == 0) return false;
        text += from.substr(at, length);
        at += length;
    }
    return true;
}

// ---------------------------------------------------------------- the text in memory

JsonReader::JsonReader(Source source)
    : source_(std::move(source)), buffer_(kPadding), at_(buffer_.data()), end_(buffer_.data()) {}

/// Runs a step, and again from its beginning whenever it comes to the end of what is in memory.
template <typename Step>
auto JsonReader::whole(Step&& step) {
    for (;;) {
        const char* const start = at_;
        try {
            return step();
        } catch (const Short&) {
            refill(start);
        }
    }
}

// Keeps the text from `from` on, which is read anew, and adds as much as is there, or a window.
void JsonReader::refill(const char* from) {
    const auto dropped = static_cast<std::size_t>(from - buffer_.data());
    const auto kept = static_cast<std::size_t>(end_ - from);
    const std::string_view past(buffer_.data(), dropped);
    linesBefore_ += countOf('\n', buffer_.data(), from);
    if (const std::size_t last = past.rfind('\n'); last != past.npos)
        lineStart_ = before_ + last + 1;
    before_ += dropped;
    std::memmove(buffer_.data(), from, kept);
    const std::size_t most = kept + std::max(kept, kWindow);
    buffer_.resize(most + kPadding);
    std::size_t length = kept;
    while (length < most) {
        const std::size_t more = source_(buffer_.data() + length, most - length);
        if (more == 0) {
            exhausted_ = true;
            break;
        }
        length += more;
    }
    std::fill_n(buffer_.begin() + static_cast<std::ptrdiff_t>(length), kPadding, '\0');
    at_ = buffer_.data();
    end_ = at_ + length;
}

JsonReader::Position JsonReader::positionOf(const char* place) const noexcept {
    Position position{linesBefore_ + 1, 0};
    std::size_t start = lineStart_;
    for (const char* at = buffer_.data(); at < place; ++at) {
        if (*at != '\n') continue;
        ++position.line;
        start = before_ + static_cast<std::size_t>(at + 1 - buffer_.data());
    }
    position.column = before_ + static_cast<std::size_t>(place - buffer_.data()) - start + 1;
    return position;
}

void JsonReader::fail(const char* what) const {
    if (isEnd() && !exhausted_) throw Short();
    throw JsonError{isEnd() ? "the file ends too early" : what, at_, isEnd()};
}

// Also makes sure that what was read before does not go on behind what is in memory.
void JsonReader::skipBlanksAndMore() {
    skipBlanks();
    if (isEnd() && !exhausted_) throw Short();
}

void JsonReader::expect(char character, const char* what) {
    skipBlanks();
    if (*at_ != character) fail(what);
    ++at_;
}

// ---------------------------------------------------------------- the outermost object

bool JsonReader::beginObject() {
    return whole([this] {
        skipBlanksAndMore();
        constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
        if (std::string_view(at_, end_).starts_with(kByteOrderMark)) at_ += kByteOrderMark.size();
        skipBlanksAndMore();
        first_ = true;
        if (isEnd()) fail("");
        if (*at_ != '{') return false;
        ++at_;
        return true;
    });
}

bool JsonReader::nextMember(std::string& name) {
    return whole([&] {
        const bool first = first_;
        skipBlanks();
        if (*at_ == '}') {
            ++at_;
            skipBlanksAndMore();
            if (!isEnd()) fail("nothing may stand behind the end");
            return false;
        }
        if (!first) expect(',', "expected ',' or '}'");
        tokens_.clear();
        readName();
        skipBlanksAndMore();
        name.clear();
        if (!appendJsonText(tokens_.front(), name)) fail("the name is not UTF-8");
        first_ = false;
        return true;
    });
}

bool JsonReader::beginList() {
    return whole([this] {
        skipBlanksAndMore();
        if (*at_ != '[') return false;
        ++at_;
        first_ = true;
        return true;
    });
}

bool JsonReader::nextElement() {
    return whole([this] {
        skipBlanks();
        if (*at_ == ']') {
            ++at_;
            first_ = false;
            return false;
        }
        if (!first_) expect(',', "expected ',' or ']'");
        skipBlanksAndMore();
        first_ = false;
        return true;
    });
}

const JsonToken& JsonReader::value() {
    whole([this] {
        tokens_.clear();
        open_.clear();
        readValue();
        skipBlanksAndMore();
    });
    return tokens_.front();
}

// ---------------------------------------------------------------- values

// Does not recurse: values may be within one another as deep as the text says.
void JsonReader::readValue() {
    using Kind = JsonToken::Kind;
    do {
        skipBlanks();
        switch (*at_) {
            case '{':
            case '[': {
                if (*at_ == '[' && readNumbers()) break;
                const bool isObject = *at_ == '{';
                open_.push_back(tokens_.size());
                add(isObject ? Kind::kObject : Kind::kList);
                ++at_;
                skipBlanks();
                if (*at_ == (isObject ? '}' : ']')) break;
                if (isObject) readMemberName();
                continue;
            }
            case '"':
                readText();
                break;
            case 't':
                readWord("true", Kind::kTrue);
                break;
            case 'f':
                readWord("false", Kind::kFalse);
                break;
            case 'n':
                readWord("null", Kind::kNull);
                break;
            default:
                readNumber();
        }
        while (!open_.empty() && endsContainer()) {
        }
    } while (!open_.empty());
}

// Behind a value: whether the container around it ends here, or another value follows in it.
bool JsonReader::endsContainer() {
    const std::size_t index = open_.back();
    const bool isObject = tokens_[index].kind == JsonToken::Kind::kObject;
    if (tokens_.size() > index + 1) ++tokens_[index].count;
    skipBlanks();
    if (*at_ == (isObject ? '}' : ']')) {
        ++at_;
        tokens_[index].span = tokens_.size() - index;
        open_.pop_back();
        return true;
    }
    expect(',', isObject ? "expected ',' or '}'" : "expected ',' or ']'");
    if (isObject) readMemberName();
    return false;
}

// Of a member of the object around the present value.
void JsonReader::readMemberName() {
    const std::size_t index = tokens_.size();
    readName();
    const JsonToken& name = tokens_[index];
    tokens_[open_.back()].initials |=
        name.plain ? JsonToken::initial(*name.text) : std::uint32_t{0xFFFFFFFF};
}

void JsonReader::readName() {
    skipBlanks();
    if (*at_ != '"') fail("expected a name in quotes");
    readText();
    expect(':', "expected ':'");
}

void JsonReader::readText() {
    ++at_;
    JsonToken& token = add(JsonToken::Kind::kText);
    for (;; ++at_) {
        skipText(at_);
        if (*at_ == '"') break;
        token.plain = false;
        if (static_cast<unsigned char>(*at_) < 0x20) fail("a text has no end on its line");
        if (*at_ == '\\') ++at_;
        if (isEnd()) fail("");
    }
    token.length = static_cast<std::size_t>(at_ - token.text);
    ++at_;
}

void JsonReader::readNumber() {
    JsonToken& token = add(JsonToken::Kind::kNumber);
    Decimal ignored;
    std::uint64_t whole = 0;
    if (!readJsonNumber(at_, whole)) {
        at_ = token.text;
        if (!readDecimal(at_, ignored)) fail("expected a value");
    }
    token.length = static_cast<std::size_t>(at_ - token.text);
}

// Takes a list for one of numbers by its characters alone. What these say is seen to when they are
// read as numbers.
bool JsonReader::readNumbers() {
    const char* at = at_ + 1;
    skipJsonBlanks(at);
    if (*at != '-' && !isDigit(*at)) return false;
    skipNumbers(at);
    if (at == end_) {
        at_ = at;
        fail("");
    }
    if (*at != ']') return false;
    JsonToken& token = add(JsonToken::Kind::kNumbers);
    ++token.text;
    token.length = static_cast<std::size_t>(at - token.text);
    token.count = countOf(',', token.text, at) + 1;
    at_ = at + 1;
    return true;
}

void JsonReader::readWord(std::string_view word, JsonToken::Kind kind) {
    add(kind);
    for (const char c : word) {
        if (*at_ != c) fail("expected a value");
        ++at_;
    }
}

}  // namespace kiln
