#include <workbench/scriptline.h>

#include <kiln/host/script.h>

#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>
#include <vector>

namespace workbench {
namespace {

enum class TokenKind {
    kEnd,
    kName,
    kKeyword,
    kNode,
    kString,
    kInteger,
    kFloat,
    kOpen,
    kClose,
    kDot,
    kEquals
};

struct Token {
    TokenKind kind = TokenKind::kEnd;
    std::string text;  // name, keyword, node name or string
    double number = 0;
    std::size_t column = 1;
};

/// What is wrong with a line; becomes the text of its result.
struct ScriptError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

[[noreturn]] void failAt(std::size_t column, const std::string& what) {
    throw ScriptError("Column " + std::to_string(column) + ": " + what);
}

bool isNameStart(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return (byte | 0x20u) - 'a' < 26u || byte == '_' || byte >= 0x80;
}

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}

class Lexer {
public:
    explicit Lexer(std::string_view line) : line_(line) {}

    std::vector<Token> all() {
        std::vector<Token> tokens;
        do tokens.push_back(next());
        while (tokens.back().kind != TokenKind::kEnd);
        return tokens;
    }

private:
    char peek(std::size_t ahead = 0) const {
        return at_ + ahead < line_.size() ? line_[at_ + ahead] : '\0';
    }

    Token next() {
        Token token;
        while (peek() == ' ' || peek() == '\t') ++at_;
        token.column = at_ + 1;
        if (at_ >= line_.size() || line_.substr(at_, 2) == "--") {
            at_ = line_.size();
            return token;
        }
        const char c = peek();
        if (isNameStart(c)) return name(std::move(token));
        if (isDigit(c) || (c == '-' && (isDigit(peek(1)) || peek(1) == '.')))
            return number(std::move(token));
        if (c == '"') return quoted(std::move(token), '"', TokenKind::kString, "string");
        if (c == '$') return node(std::move(token));
        return sign(std::move(token), c);
    }

    Token sign(Token token, char c) {
        switch (c) {
            case '(':
                token.kind = TokenKind::kOpen;
                break;
            case ')':
                token.kind = TokenKind::kClose;
                break;
            case '.':
                token.kind = TokenKind::kDot;
                break;
            case '=':
                token.kind = TokenKind::kEquals;
                break;
            default:
                failAt(token.column, std::string("unexpected \"") + c + "\"");
        }
        ++at_;
        return token;
    }

    std::string word() {
        const std::size_t start = at_;
        while (isNameStart(peek()) || isDigit(peek())) ++at_;
        return std::string(line_.substr(start, at_ - start));
    }

    Token name(Token token) {
        token.kind = TokenKind::kName;
        token.text = word();
        if (peek() == ':') {
            ++at_;
            token.kind = TokenKind::kKeyword;
        }
        return token;
    }

    Token node(Token token) {
        ++at_;
        if (peek() == '\'') return quoted(std::move(token), '\'', TokenKind::kNode, "node name");
        token.kind = TokenKind::kNode;
        token.text = word();
        return token;
    }

    Token quoted(Token token, char quote, TokenKind kind, const char* what) {
        token.kind = kind;
        for (++at_; peek() != quote; ++at_) {
            if (at_ >= line_.size())
                failAt(token.column, std::string("the ") + what + " is not closed");
            if (peek() == '\\' && at_ + 1 < line_.size()) {
                const char escaped = line_[++at_];
                token.text += escaped == 'n' ? '\n' : escaped == 't' ? '\t' : escaped;
            } else {
                token.text += peek();
            }
        }
        ++at_;
        return token;
    }

    Token number(Token token) {
        const char* first = line_.data() + at_;
        const char* last = line_.data() + line_.size();
        const auto [end, error] = std::from_chars(first, last, token.number);
        const std::string_view text(first, static_cast<std::size_t>(end - first));
        at_ += text.size();
        if (error != std::errc() || isNameStart(peek()))
            failAt(token.column, "this is not a number");
        token.kind =
            text.find_first_of(".eE") == text.npos ? TokenKind::kInteger : TokenKind::kFloat;
        return token;
    }

    std::string_view line_;
    std::size_t at_ = 0;
};

class Evaluator {
public:
    Evaluator(Interface& host, std::vector<Token> tokens)
        : host_(host), tokens_(std::move(tokens)) {}

    std::string run() {
        if (at().kind == TokenKind::kEnd) return {};
        if (at().kind == TokenKind::kName && ahead().kind == TokenKind::kEnd && !isWord(at().text))
            return listing(interfaceNamed(at()));
        const FPValue value = expression();
        if (at().kind != TokenKind::kEnd) failAt(at().column, "nothing more was expected here");
        return kiln::printed(value);
    }

private:
    static constexpr int kMaxDepth = 64;

    const Token& at() const { return tokens_[position_]; }
    const Token& ahead(std::size_t count = 1) const {
        return tokens_[std::min(position_ + count, tokens_.size() - 1)];
    }
    Token take() {
        Token token = at();
        if (token.kind != TokenKind::kEnd) ++position_;
        return token;
    }

    static bool isWord(const std::string& text) {
        return text == "true" || text == "false" || text == "on" || text == "off" ||
               text == "undefined";
    }

    FPInterfaceDesc& interfaceNamed(const Token& name) const {
        if (FPInterfaceDesc* found = kiln::findInterface(name.text)) return *found;
        std::string known;
        for (const FPInterfaceDesc* one : kiln::publishedInterfaces())
            known += (known.empty() ? " Published are: " : ", ") + std::string(one->Name());
        failAt(name.column, "no interface is named \"" + name.text + "\"." + known);
    }

    static std::string listing(const FPInterfaceDesc& target) {
        std::string text;
        for (const FPFunctionDesc& function : target.Functions())
            text += kiln::signatureOf(target, function) + "\r\n";
        for (const FPPropertyDesc& property : target.Properties())
            text += std::string(target.Name()) + "." + property.name + " : " +
                    ParamTypeName(property.type) + "\r\n";
        if (!text.empty()) text.erase(text.size() - 2);
        return text;
    }

    // A value, or a call with its arguments.
    FPValue expression() {
        if (at().kind != TokenKind::kName || isWord(at().text)) return operand();
        return member(true);
    }

    // What can stand as an argument: a call in it needs parentheses or has no arguments.
    FPValue operand() {
        const Token token = take();
        switch (token.kind) {
            case TokenKind::kInteger:
                return integer(token);
            case TokenKind::kFloat:
                return FPValue::Float(static_cast<float>(token.number));
            case TokenKind::kString:
                return FPValue::StringCopy(token.text.c_str());
            case TokenKind::kNode:
                return FPValue::Node(node(token));
            case TokenKind::kOpen:
                return parenthesised(token);
            case TokenKind::kName:
                if (isWord(token.text)) return wordValue(token.text);
                --position_;
                return member(false);
            case TokenKind::kEnd:
                failAt(token.column, "something is missing here");
            default:
                failAt(token.column, "a value was expected here");
        }
    }

    static FPValue wordValue(const std::string& word) {
        if (word == "undefined") return {};
        return FPValue::Bool(word == "true" || word == "on");
    }

    static FPValue integer(const Token& token) {
        if (std::abs(token.number) > std::numeric_limits<int>::max())
            failAt(token.column, "this integer is too large");
        return FPValue::Int(static_cast<int>(token.number));
    }

    FPValue parenthesised(const Token& open) {
        if (++depth_ > kMaxDepth) failAt(open.column, "too many parentheses");
        FPValue value = expression();
        if (take().kind != TokenKind::kClose) failAt(open.column, "\")\" is missing");
        --depth_;
        return value;
    }

    INode* node(const Token& token) const {
        if (token.text.empty()) {
            if (INode* selected = host_.GetSelNode(0)) return selected;
            failAt(token.column, "no node is selected");
        }
        if (INode* found = host_.GetINodeByName(token.text.c_str())) return found;
        failAt(token.column, "no node is named \"" + token.text + "\"");
    }

    FPValue member(bool withArguments) {
        FPInterfaceDesc& target = interfaceNamed(take());
        if (take().kind != TokenKind::kDot || at().kind != TokenKind::kName)
            failAt(at().column, std::string("\".\" and the name of a function or property of ") +
                                    target.Name() + " were expected here");
        const Token name = take();
        if (target.FindProperty(name.text.c_str())) return property(target, name, withArguments);
        if (!target.FindFunction(name.text.c_str()))
            failAt(name.column,
                   std::string(target.Name()) + " has nothing named \"" + name.text + "\"");
        std::vector<kiln::ScriptArgument> given;
        if (at().kind == TokenKind::kOpen && ahead().kind == TokenKind::kClose) {
            position_ += 2;
        } else if (withArguments) {
            given = arguments();
        }
        FPValue result;
        require(kiln::callFunction(target, name.text, given, result));
        return result;
    }

    FPValue property(FPInterfaceDesc& target, const Token& name, bool assignable) {
        FPValue value;
        if (assignable && at().kind == TokenKind::kEquals) {
            take();
            value = expression();
            require(kiln::setProperty(target, name.text, value));
        } else {
            require(kiln::getProperty(target, name.text, value));
        }
        return value;
    }

    std::vector<kiln::ScriptArgument> arguments() {
        std::vector<kiln::ScriptArgument> given;
        while (at().kind != TokenKind::kEnd && at().kind != TokenKind::kClose) {
            kiln::ScriptArgument argument;
            if (at().kind == TokenKind::kKeyword) argument.keyword = take().text;
            argument.value = operand();
            given.push_back(std::move(argument));
        }
        return given;
    }

    static void require(const kiln::Status& status) {
        if (!status.ok()) throw ScriptError(status.message());
    }

    Interface& host_;
    std::vector<Token> tokens_;
    std::size_t position_ = 0;
    int depth_ = 0;
};

}  // namespace

ScriptResult ScriptLine::evaluate(std::string_view line) {
    try {
        return {true, Evaluator(host_, Lexer(line).all()).run()};
    } catch (const ScriptError& error) {
        return {false, error.what()};
    }
}

}  // namespace workbench
