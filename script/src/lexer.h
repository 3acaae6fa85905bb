// Cuts a script into tokens.
#pragma once

#include <script/error.h>
#include <script/value.h>

#include <string>
#include <string_view>
#include <vector>

namespace script {

enum class TokenKind {
    kEnd,
    kNewline,  // also ";"
    kName,
    kKeyword,  // "name:" before an argument
    kNode,     // "$name"; an empty text is the selection
    kNumber,
    kString,
    kSign,  // an operator or a bracket
};

struct Token {
    TokenKind kind = TokenKind::kEnd;
    std::string text;  // names in small letters
    std::string spelling;
    Value literal;  // of a number
    Position position;
    bool spaceBefore = false;
    bool spaceAfter = false;
};

/// The tokens of a script, the last one being `kEnd`. Throws `Error`.
std::vector<Token> tokensOf(std::string_view text, const std::string& file);

}  // namespace script
