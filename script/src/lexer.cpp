#include "lexer.h"

#include <base/text.h>

#include <array>
#include <charconv>
#include <cstdio>

namespace script {

namespace {

bool isNameStart(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte | 0x20u) - 'a' < 26u || byte == '_' || byte >= 0x80;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

bool isSpace(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

class Lexer {
public:
    Lexer(std::string_view text, const std::string& file) : text_(text), file_(file) {
        if (text_.starts_with("\xEF\xBB\xBF")) at_ = lineStart_ = 3;
    }

    std::vector<Token> all() {
        std::vector<Token> tokens;
        do tokens.push_back(next());
        while (tokens.back().kind != TokenKind::kEnd);
        return tokens;
    }

private:
    char peek(std::size_t ahead = 0) const {
        return at_ + ahead < text_.size() ? text_[at_ + ahead] : '\0';
    }
    bool atEnd() const { return at_ >= text_.size(); }
    Position here() const { return {line_, at_ - lineStart_ + 1}; }
    [[noreturn]] void fail(Position where, const std::string& what) const {
        throw Error(file_, where, what);
    }

    void newLine() {
        ++line_;
        lineStart_ = at_;
    }

    // Spaces, comments, and line ends behind a backslash.
    void skipSpace() {
        for (;;) {
            if (peek() == ' ' || peek() == '\t' || peek() == '\r') {
                ++at_;
            } else if (peek() == '-' && peek(1) == '-') {
                while (!atEnd() && peek() != '\n') ++at_;
            } else if (peek() == '\\' &&
                       (peek(1) == '\n' || (peek(1) == '\r' && peek(2) == '\n'))) {
                at_ += peek(1) == '\n' ? 2 : 3;
                newLine();
            } else {
                return;
            }
        }
    }

    Token next() {
        Token token;
        const std::size_t before = at_;
        skipSpace();
        token.spaceBefore = at_ > before || at_ == 0 || isSpace(text_[at_ - 1]);
        token.position = here();
        if (!atEnd()) read(token, peek());
        token.spaceAfter = atEnd() || isSpace(peek());
        return token;
    }

    void read(Token& token, char c) {
        if (c == '\n' || c == ';') {
            token.kind = TokenKind::kNewline;
            ++at_;
            if (c == '\n') newLine();
        } else if (isNameStart(c)) {
            name(token);
        } else if (isDigit(c) || (c == '.' && isDigit(peek(1)))) {
            number(token);
        } else if (c == '"') {
            quoted(token, '"', TokenKind::kString, "string");
        } else if (c == '$') {
            node(token);
        } else {
            sign(token, c);
        }
    }

    std::string word() {
        const std::size_t start = at_;
        while (isNameStart(peek()) || isDigit(peek())) ++at_;
        return std::string(text_.substr(start, at_ - start));
    }

    void name(Token& token) {
        token.kind = TokenKind::kName;
        token.spelling = word();
        token.text = base::smallLetters(token.spelling);
        if (peek() != ':') return;
        ++at_;
        token.kind = TokenKind::kKeyword;
    }

    void node(Token& token) {
        ++at_;
        if (peek() == '\'') return quoted(token, '\'', TokenKind::kNode, "node name");
        token.kind = TokenKind::kNode;
        token.text = word();
    }

    void quoted(Token& token, char quote, TokenKind kind, const char* what) {
        token.kind = kind;
        for (++at_; peek() != quote || atEnd(); ++at_) {
            if (atEnd() || peek() == '\n')
                fail(token.position, std::string("the ") + what + " is not closed");
            token.text += peek() == '\\' ? escaped() : peek();
        }
        ++at_;
    }

    char escaped() {
        const Position where = here();
        ++at_;
        switch (peek()) {
            case 'n':
                return '\n';
            case 't':
                return '\t';
            case 'r':
                return '\r';
            case '\\':
            case '"':
            case '\'':
                return peek();
            default:
                fail(where,
                     "a backslash in a text stands before n, t, r, a quote or another "
                     "backslash; write \"\\\\\" for a backslash itself");
        }
    }

    void number(Token& token) {
        token.kind = TokenKind::kNumber;
        if (peek() == '0' && (peek(1) | 0x20) == 'x') return hexadecimal(token);
        const char* const first = text_.data() + at_;
        double value = 0;
        const auto [end, error] = std::from_chars(first, text_.data() + text_.size(), value);
        const std::string_view digits(first, static_cast<std::size_t>(end - first));
        at_ += digits.size();
        if (isNameStart(peek())) fail(token.position, "this is not a number");
        if (error != std::errc()) fail(token.position, "this number is too large or too small");
        if (digits.find_first_of(".eE") != digits.npos) {
            token.literal = Value(value);
            return;
        }
        if (value > 2147483647.0)
            fail(token.position, "this integer is too large; write it with \".0\" for a float");
        token.literal = Value(static_cast<std::int32_t>(value));
    }

    // The bits of a word, so that 0x80000000 is the integer with only its top bit set.
    void hexadecimal(Token& token) {
        at_ += 2;
        const char* const first = text_.data() + at_;
        std::uint32_t bits = 0;
        const auto [end, error] = std::from_chars(first, text_.data() + text_.size(), bits, 16);
        at_ += static_cast<std::size_t>(end - first);
        if (error != std::errc() || isNameStart(peek()) || isDigit(peek()))
            fail(token.position, "this is not a number of up to eight hexadecimal digits");
        token.literal = Value(static_cast<std::int32_t>(bits));
    }

    void sign(Token& token, char c) {
        static constexpr std::array<std::string_view, 10> kPairs = {
            "==", "!=", "<=", ">=", "+=", "-=", "*=", "/=", "#("};
        token.kind = TokenKind::kSign;
        for (const std::string_view pair : kPairs)
            if (!pair.empty() && text_.substr(at_, 2) == pair) token.text = pair;
        if (token.text.empty() && std::string_view("()[]=<>+-*/^.,").find(c) != std::string::npos)
            token.text = c;
        if (token.text.empty()) fail(token.position, "unexpected " + named(c));
        at_ += token.text.size();
    }

    static std::string named(char c) {
        if (c > ' ' && c <= '~') return std::string("\"") + c + "\"";
        char text[16];
        std::snprintf(text, sizeof text, "byte 0x%02X", static_cast<unsigned char>(c));
        return text;
    }

    std::string_view text_;
    const std::string& file_;
    std::size_t at_ = 0;
    std::size_t line_ = 1;
    std::size_t lineStart_ = 0;
};

}  // namespace

std::vector<Token> tokensOf(std::string_view text, const std::string& file) {
    return Lexer(text, file).all();
}

}  // namespace script
