#include "parser.h"

#include "lexer.h"

#include <algorithm>
#include <array>
#include <optional>

namespace script {

namespace {

// Of the tree, so that walking and freeing it stay within any stack.
constexpr std::size_t kMaxDepth = 1000;

constexpr std::array<std::string_view, 25> kReserved = {
    "if",  "then",  "else",    "while",    "do",    "for",    "in",       "to",   "by",
    "fn",  "where", "collect", "function", "local", "global", "return",   "exit", "continue",
    "and", "or",    "not",     "as",       "true",  "false",  "undefined"};

bool isReserved(const std::string& word) {
    return std::ranges::find(kReserved, word) != kReserved.end();
}

std::string quoted(std::string_view text) {
    std::string result = "\"";
    result += text;
    return result += '"';
}

class Parser {
public:
    Parser(std::string_view text, const std::string& file)
        : file_(file), tokens_(tokensOf(text, file)) {}

    NodePointer script() {
        Node block = made(NodeKind::kBlock);
        statements(block);
        if (at().kind != TokenKind::kEnd) fail("nothing more was expected here");
        return finished(std::move(block));
    }

private:
    /// Counts how deep the parser is in its own recursion.
    class Nested {
    public:
        explicit Nested(Parser& parser) : parser_(parser) {
            if (++parser.nesting_ > kMaxNesting)
                parser.fail("too many parentheses or expressions within each other");
        }
        ~Nested() { --parser_.nesting_; }
        Nested(const Nested&) = delete;
        Nested& operator=(const Nested&) = delete;

    private:
        Parser& parser_;
    };

    const Token& at() const { return tokens_[position_]; }
    const Token& take() {
        const Token& token = at();
        if (token.kind != TokenKind::kEnd) ++position_;
        return token;
    }
    bool isSign(std::string_view sign) const {
        return at().kind == TokenKind::kSign && at().text == sign;
    }
    bool isWord(std::string_view word) const {
        return at().kind == TokenKind::kName && at().text == word;
    }
    bool takeSign(std::string_view sign) {
        if (!isSign(sign)) return false;
        take();
        return true;
    }
    bool takeWord(std::string_view word) {
        if (!isWord(word)) return false;
        take();
        return true;
    }
    void skipLines() {
        while (at().kind == TokenKind::kNewline) take();
    }
    [[noreturn]] void fail(const std::string& what) const { failAt(at().position, what); }
    [[noreturn]] void failAt(Position where, const std::string& what) const {
        throw Error(file_, where, what);
    }
    void requireWord(std::string_view word) {
        if (!takeWord(word)) fail(quoted(word) + " was expected here");
    }

    Node made(NodeKind kind) const {
        Node node;
        node.kind = kind;
        node.position = at().position;
        return node;
    }
    NodePointer finished(Node node) const {
        for (const NodePointer& child : node.children)
            if (child) node.depth = std::max(node.depth, child->depth + 1);
        if (node.depth > kMaxDepth) failAt(node.position, "this expression is too long");
        return std::make_shared<const Node>(std::move(node));
    }

    void statements(Node& block) {
        for (skipLines(); at().kind != TokenKind::kEnd && !isSign(")"); skipLines()) {
            block.children.push_back(expression());
            if (at().kind != TokenKind::kNewline && at().kind != TokenKind::kEnd && !isSign(")"))
                fail("nothing more was expected here");
        }
    }

    NodePointer expression() {
        const Nested nested(*this);
        if (at().kind == TokenKind::kName) {
            const std::string& word = at().text;
            if (word == "if") return ifThen();
            if (word == "while") return whileDo();
            if (word == "for") return forLoop();
            if (word == "fn" || word == "function") return function();
            if (word == "local" || word == "global") return declaration();
            if (word == "return") return returnStatement();
            if (word == "exit") return single(NodeKind::kExit);
            if (word == "continue") return single(NodeKind::kContinue);
            if (word == "undo" && tokens_[position_ + 1].kind == TokenKind::kString)
                return undoable();
        }
        return assignment();
    }

    // What follows "then", "do" and the like may stand on the next line.
    NodePointer body() {
        skipLines();
        return expression();
    }

    NodePointer undoable() {
        Node node = made(NodeKind::kUndo);
        take();
        node.text = take().text;
        node.children.push_back(body());
        return finished(std::move(node));
    }

    NodePointer single(NodeKind kind) {
        Node node = made(kind);
        take();
        return finished(std::move(node));
    }

    NodePointer ifThen() {
        Node node = made(NodeKind::kIfThen);
        take();
        node.children.push_back(expression());
        skipLines();
        requireWord("then");
        node.children.push_back(body());
        const std::size_t before = position_;
        skipLines();
        if (takeWord("else"))
            node.children.push_back(body());
        else
            position_ = before;
        return finished(std::move(node));
    }

    NodePointer whileDo() {
        Node node = made(NodeKind::kWhileDo);
        take();
        node.children.push_back(expression());
        requireWord("do");
        node.children.push_back(body());
        return finished(std::move(node));
    }

    std::string newName(const char* what) {
        if (at().kind != TokenKind::kName || isReserved(at().text))
            fail(std::string("the name of ") + what + " was expected here");
        return take().text;
    }

    NodePointer forLoop() {
        Node node = made(NodeKind::kForEach);
        take();
        node.text = newName("a variable");
        if (takeSign("=")) {
            node.kind = NodeKind::kForCount;
            node.children.push_back(expression());
            requireWord("to");
            node.children.push_back(expression());
            node.children.push_back(takeWord("by") ? expression() : nullptr);
        } else if (takeWord("in")) {
            node.children.push_back(expression());
        } else {
            fail("\"in\" or \"=\" was expected here");
        }
        const NodePointer where = takeWord("where") ? expression() : nullptr;
        node.flag = takeWord("collect");
        if (!node.flag) requireWord("do");
        node.children.push_back(body());
        node.children.push_back(where);
        return finished(std::move(node));
    }

    NodePointer function() {
        Node node = made(NodeKind::kFunction);
        take();
        node.spelling = at().spelling;
        node.text = newName("a function");
        node.children.emplace_back();  // the body, which comes last
        while (at().kind == TokenKind::kName || at().kind == TokenKind::kKeyword) parameter(node);
        if (!takeSign("=")) fail("\"=\" and what the function does were expected here");
        node.children.front() = body();
        return finished(std::move(node));
    }

    void parameter(Node& function) {
        const bool hasDefault = at().kind == TokenKind::kKeyword;
        if (isReserved(at().text)) fail("the name of a parameter was expected here");
        if (!hasDefault && function.children.size() > 1)
            fail("a parameter without a default follows one that has a default");
        if (std::ranges::find(function.keywords, at().text) != function.keywords.end())
            fail("there are two parameters named \"" + at().text + "\"");
        function.keywords.push_back(take().text);
        if (hasDefault) function.children.push_back(operand());
    }

    NodePointer declaration() {
        Node node = made(NodeKind::kDeclare);
        node.flag = take().text == "global";
        node.text = newName("a variable");
        if (takeSign("=")) node.children.push_back(body());
        return finished(std::move(node));
    }

    NodePointer returnStatement() {
        Node node = made(NodeKind::kReturn);
        take();
        if (at().kind != TokenKind::kNewline && at().kind != TokenKind::kEnd && !isSign(")") &&
            !isWord("else"))
            node.children.push_back(expression());
        return finished(std::move(node));
    }

    NodePointer assignment() {
        NodePointer left = logicalOr();
        const bool known = at().kind == TokenKind::kSign &&
                           (at().text == "=" || (at().text.size() == 2 && at().text[1] == '=' &&
                                                 std::string_view("+-*/").find(at().text[0]) !=
                                                     std::string_view::npos));
        if (!known) return left;
        if (left->kind != NodeKind::kName && left->kind != NodeKind::kMember &&
            left->kind != NodeKind::kElement)
            fail("what stands before \"" + at().text + "\" cannot be assigned to");
        Node node = made(NodeKind::kAssign);
        node.text = take().text;
        node.text.pop_back();
        node.children = {std::move(left), body()};
        return finished(std::move(node));
    }

    NodePointer joined(NodeKind kind, const Token& sign, NodePointer left, NodePointer right) {
        Node node;
        node.kind = kind;
        node.position = sign.position;
        node.text = sign.text;
        node.children = {std::move(left), std::move(right)};
        return finished(std::move(node));
    }

    NodePointer logicalOr() {
        NodePointer left = logicalAnd();
        while (isWord("or")) {
            const Token sign = take();
            skipLines();
            left = joined(NodeKind::kLogicalOr, sign, std::move(left), logicalAnd());
        }
        return left;
    }

    NodePointer logicalAnd() {
        NodePointer left = logicalNot();
        while (isWord("and")) {
            const Token sign = take();
            skipLines();
            left = joined(NodeKind::kLogicalAnd, sign, std::move(left), logicalNot());
        }
        return left;
    }

    NodePointer logicalNot() {
        if (!isWord("not")) return comparison();
        const Nested nested(*this);
        Node node = made(NodeKind::kLogicalNot);
        take();
        node.children.push_back(logicalNot());
        return finished(std::move(node));
    }

    static constexpr std::array<std::string_view, 6> kComparisons = {"==", "!=", "<",
                                                                     "<=", ">",  ">="};
    static constexpr std::array<std::string_view, 2> kSums = {"+", "-"};
    static constexpr std::array<std::string_view, 2> kProducts = {"*", "/"};

    template <std::size_t N>
    bool isOneOf(const std::array<std::string_view, N>& signs) const {
        return at().kind == TokenKind::kSign && std::ranges::find(signs, at().text) != signs.end();
    }

    NodePointer comparison() {
        NodePointer left = sum();
        while (isOneOf(kComparisons)) {
            const Token sign = take();
            skipLines();
            left = joined(NodeKind::kBinary, sign, std::move(left), sum());
        }
        return left;
    }

    NodePointer sum() {
        NodePointer left = product();
        while (isOneOf(kSums)) {
            const Token sign = take();
            skipLines();
            left = joined(NodeKind::kBinary, sign, std::move(left), product());
        }
        return left;
    }

    NodePointer product() {
        NodePointer left = negated();
        while (isOneOf(kProducts)) {
            const Token sign = take();
            skipLines();
            left = joined(NodeKind::kBinary, sign, std::move(left), negated());
        }
        return left;
    }

    NodePointer negated() {
        if (!isSign("-")) return power();
        const Nested nested(*this);
        Node node = made(NodeKind::kNegate);
        take();
        node.children.push_back(negated());
        return finished(std::move(node));
    }

    NodePointer power() {
        NodePointer left = converted();
        while (isSign("^")) {
            const Token sign = take();
            left = joined(NodeKind::kBinary, sign, std::move(left),
                          isSign("-") ? negated() : converted());
        }
        return left;
    }

    NodePointer converted() {
        NodePointer left = call();
        while (isWord("as")) {
            Node node = made(NodeKind::kConvert);
            take();
            node.text = newName("a type");
            node.children.push_back(std::move(left));
            left = finished(std::move(node));
        }
        return left;
    }

    static bool isCallable(const Node& node) {
        return node.kind == NodeKind::kName || node.kind == NodeKind::kMember ||
               node.kind == NodeKind::kElement;
    }

    bool startsArgument() const {
        switch (at().kind) {
            case TokenKind::kNumber:
            case TokenKind::kString:
            case TokenKind::kNode:
            case TokenKind::kKeyword:
                return true;
            case TokenKind::kName:
                return !isReserved(at().text) || at().text == "true" || at().text == "false" ||
                       at().text == "undefined";
            case TokenKind::kSign:
                return at().text == "(" || at().text == "#(" || at().text == "[" ||
                       (at().text == "-" && at().spaceBefore && !at().spaceAfter);
            default:
                return false;
        }
    }

    NodePointer call() {
        NodePointer callee = operand();
        if (!isCallable(*callee) || !startsArgument()) return callee;
        Node node;
        node.kind = NodeKind::kCall;
        node.position = callee->position;
        node.children.push_back(std::move(callee));
        if (isSign("(") && tokens_[position_ + 1].kind == TokenKind::kSign &&
            tokens_[position_ + 1].text == ")") {
            position_ += 2;
            return finished(std::move(node));
        }
        while (startsArgument()) {
            const bool keyword = at().kind == TokenKind::kKeyword;
            node.keywords.push_back(keyword ? take().spelling : "");
            node.children.push_back(operand());
        }
        return finished(std::move(node));
    }

    // A value with what is attached to it without a space.
    NodePointer operand() {
        const Nested nested(*this);
        if (isSign("-")) {
            Node node = made(NodeKind::kNegate);
            take();
            node.children.push_back(operand());
            return finished(std::move(node));
        }
        NodePointer left = primary();
        for (;;) {
            if (isSign("."))
                left = member(std::move(left));
            else if (isSign("[") && !at().spaceBefore)
                left = element(std::move(left));
            else if (isSign("(") && !at().spaceBefore && isCallable(*left))
                left = callInBrackets(std::move(left));
            else
                return left;
        }
    }

    NodePointer member(NodePointer of) {
        take();
        Node node = made(NodeKind::kMember);
        if (at().kind != TokenKind::kName)
            fail("the name of a function or property was expected after \".\"");
        node.text = at().text;
        node.spelling = take().spelling;
        node.children.push_back(std::move(of));
        return finished(std::move(node));
    }

    NodePointer element(NodePointer of) {
        Node node = made(NodeKind::kElement);
        const Position open = take().position;
        skipLines();
        node.children = {std::move(of), expression()};
        skipLines();
        if (!takeSign("]")) failAt(open, "\"]\" is missing");
        return finished(std::move(node));
    }

    NodePointer callInBrackets(NodePointer callee) {
        Node node;
        node.kind = NodeKind::kCall;
        node.position = callee->position;
        node.children.push_back(std::move(callee));
        list(node, ")", true);
        return finished(std::move(node));
    }

    // What stands between the bracket here and `close`, separated by commas.
    void list(Node& node, std::string_view close, bool keywords) {
        const Position open = take().position;
        skipLines();
        while (!takeSign(close)) {
            if (at().kind == TokenKind::kEnd) failAt(open, quoted(close) + " is missing");
            if (keywords)
                node.keywords.push_back(at().kind == TokenKind::kKeyword ? take().spelling : "");
            node.children.push_back(expression());
            skipLines();
            if (!isSign(close) && at().kind != TokenKind::kEnd && !takeSign(","))
                fail("\",\" or " + quoted(close) + " was expected here");
            skipLines();
        }
    }

    NodePointer primary() {
        Node node = made(NodeKind::kLiteral);
        switch (at().kind) {
            case TokenKind::kNumber:
                node.literal = take().literal;
                return finished(std::move(node));
            case TokenKind::kString:
                node.literal = Value(take().text);
                return finished(std::move(node));
            case TokenKind::kNode:
                node.kind = NodeKind::kNodeName;
                node.text = take().text;
                return finished(std::move(node));
            case TokenKind::kName:
                return word(std::move(node));
            case TokenKind::kSign:
                return bracket(std::move(node));
            case TokenKind::kKeyword:
                fail("\"" + at().spelling + ":\" stands only among the arguments of a call");
            default:
                fail("something is missing here");
        }
    }

    NodePointer word(Node node) {
        const std::string& text = at().text;
        if (text == "true" || text == "false") {
            node.literal = Value(text == "true");
        } else if (text != "undefined") {
            if (isReserved(text)) fail("a value was expected here, not \"" + text + "\"");
            node.kind = NodeKind::kName;
            node.text = text;
            node.spelling = at().spelling;
        }
        take();
        return finished(std::move(node));
    }

    NodePointer bracket(Node node) {
        if (isSign("#(")) {
            node.kind = NodeKind::kArray;
            list(node, ")", false);
        } else if (isSign("[")) {
            node.kind = NodeKind::kPoint;
            list(node, "]", false);
            if (node.children.size() != 3)
                failAt(node.position, "a point has three coordinates: [x, y, z]");
        } else if (isSign("(")) {
            node.kind = NodeKind::kBlock;
            const Position open = take().position;
            statements(node);
            if (!takeSign(")")) failAt(open, "\")\" is missing");
            // Alone in its parentheses, an expression is itself.
            if (node.children.size() == 1 && !isCallable(*node.children.front()) &&
                node.children.front()->kind != NodeKind::kLiteral)
                return node.children.front();
        } else {
            fail("a value was expected here, not \"" + at().text + "\"");
        }
        return finished(std::move(node));
    }

    const std::string& file_;
    std::vector<Token> tokens_;
    std::size_t position_ = 0;
    std::size_t nesting_ = 0;
};

}  // namespace

NodePointer parsed(std::string_view text, const std::string& file) {
    return Parser(text, file).script();
}

}  // namespace script
