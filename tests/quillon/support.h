// Literal record bytes and what tests do with them.
#pragma once

#include <diagnostics/assertion.h>
#include <gtest/gtest.h>
#include <quillon/fltfactory.h>
#include <quillon/fltfield.h>
#include <quillon/fltrecord.h>
#include <quillon/flttoken.h>

#include <cstdint>
#include <cstdio>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

/// Bytes written as words of hexadecimal digits or 'text'; a word may end in ":n", which fills it
/// up with zeros to n bytes: `"0002 0020 'g7':8 3FF0:8"`.
inline Bytes hex(std::string_view words) {
    Bytes bytes;
    std::istringstream stream{std::string(words)};
    for (std::string word; stream >> word;) {
        const std::size_t start = bytes.size();
        std::size_t i = 0;
        if (word[0] == '\'') {
            for (i = 1; word[i] != '\''; ++i) bytes.push_back(static_cast<std::uint8_t>(word[i]));
            ++i;
        } else {
            for (; i + 1 < word.size() && word[i] != ':'; i += 2)
                bytes.push_back(
                    static_cast<std::uint8_t>(std::stoi(word.substr(i, 2), nullptr, 16)));
        }
        if (i < word.size()) bytes.resize(start + std::stoul(word.substr(i + 1)));
    }
    return bytes;
}

inline std::string toHex(const Bytes& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        char digits[16];
        std::snprintf(digits, sizeof digits, "%s%02X",
                      i == 0        ? ""
                      : i % 16 == 0 ? "\n"
                                    : " ",
                      bytes[i]);
        text += digits;
    }
    return text;
}

inline Bytes bytesOf(const FltToken& token) {
    return {token.data(), token.data() + token.length()};
}

/// The record's bytes, padded as they go to a file.
inline Bytes encode(const FltRecord& record, std::uint32_t revision = 1580) {
    FltToken token;
    record.writeToken(token, revision);
    token.finish();
    return bytesOf(token);
}

inline void decode(FltRecord& record, const Bytes& bytes, std::uint32_t revision = 1580) {
    FltToken token;
    token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    record.readToken(token, revision);
}

/// Every field as text, one a line.
inline std::string fieldsOf(const FltRecord& record) {
    struct Printer final : FltFieldVisitor {
        std::ostringstream out;
        void integer(const char* name, int index, std::int64_t value) override {
            out << name << ' ' << index << ' ' << value << '\n';
        }
        void real(const char* name, int index, double value) override {
            out << name << ' ' << index << ' ' << value << '\n';
        }
        void text(const char* name, std::string_view value) override {
            out << name << ' ' << value << '\n';
        }
    };
    Printer printer;
    printer.out.precision(17);
    record.visitFields(printer);
    return printer.out.str();
}

/// The record is written as `literal`, and `literal` read into a fresh one gives the same fields.
inline void expectLayout(const FltRecord& record, std::string_view literal,
                         std::uint32_t revision = 1580,
                         decltype(fltCreateRecord)& create = fltCreateRecord) {
    SCOPED_TRACE("opcode " + std::to_string(record.opcode()) + " at " + std::to_string(revision));
    const Bytes bytes = hex(literal);
    EXPECT_EQ(toHex(encode(record, revision)), toHex(bytes));
    const std::unique_ptr<FltRecord> fresh = create(record.opcode());
    ASSERT_TRUE(fresh);
    decode(*fresh, bytes, revision);
    EXPECT_EQ(fieldsOf(*fresh), fieldsOf(record));
}

/// `action` breaks an invariant that `file` finds at `line`.
template <typename Action>
void expectAssertion(const char* file, int line, Action&& action) {
    try {
        action();
        ADD_FAILURE() << "no assertion " << file << " " << line;
    } catch (const diagnostics::AviaryAssertion& assertion) {
        EXPECT_STREQ(assertion.file, file);
        EXPECT_EQ(assertion.line, line);
    }
}
