#include "support.h"

#include <cstring>

namespace {

// A number in the place of one of the other sort does not compile.
template <typename T>
concept WritesAsInteger = requires(FltToken& token, T value) {
    token.writeInt32(value);
}
|| requires(FltToken& token, T value) {
    token.writeInt64(value);
};
static_assert(WritesAsInteger<std::int32_t> && WritesAsInteger<std::uint64_t>);
static_assert(!WritesAsInteger<float> && !WritesAsInteger<double>);

TEST(TokenTest, WritesBigEndian) {
    FltToken token;
    EXPECT_TRUE(token.ownsBuffer());
    EXPECT_EQ(token.data(), nullptr);
    token.begin(0x1234);
    token.writeInt8<std::int8_t>(-2);
    token.writeInt16<std::uint16_t>(0xABCD);
    token.writeFloat(1.5F);
    token.writeInt32(-2);
    token.writeDouble(-2.0);
    token.writeBytes(3, "abc");
    EXPECT_EQ(token.skip(2), 2U);
    token.finish();
    EXPECT_EQ(toHex(bytesOf(token)),
              toHex(hex("1234 0020 FE ABCD 3FC00000 FFFFFFFE C000:8 'abc' 00:6")));
    EXPECT_EQ(token.position(), 4);

    std::int8_t i8 = 0;
    std::uint16_t u16 = 0;
    float f32 = 0;
    std::int32_t i32 = 0;
    double f64 = 0;
    char text[3];
    token.readInt8(i8);
    token.readInt16(u16);
    token.readInt32(f32);
    token.readInt32(i32);
    token.readInt64(f64);
    EXPECT_EQ(token.readBytes(3, text), 3U);
    EXPECT_EQ(i8, -2);
    EXPECT_EQ(u16, 0xABCD);
    EXPECT_EQ(f32, 1.5F);
    EXPECT_EQ(i32, -2);
    EXPECT_EQ(f64, -2.0);
    EXPECT_EQ(std::string(text, 3), "abc");
}

TEST(TokenTest, PadsToEightExceptVertexLists) {
    const std::tuple<int, unsigned, int> cases[] = {
        {2, 6, 16}, {2, 12, 16}, {2, 0, 8}, {10, 0, 8}, {72, 6, 10}};
    for (const auto& [opcode, body, length] : cases) {
        FltToken token;
        token.begin(static_cast<std::uint16_t>(opcode));
        token.writeBytes(body, "twelve bytes");
        token.finish();
        EXPECT_EQ(token.length(), length) << opcode << " with " << body;
        EXPECT_EQ(token.data()[2] << 8 | token.data()[3], length) << opcode << " with " << body;
    }
    FltToken fresh;
    expectAssertion("flttoken", 171, [&] { fresh.finish(); });
}

TEST(TokenTest, ReadsZerosPastTheEnd) {
    const Bytes bytes = hex("0002 0006 1234 FFFF");  // the last two are not the record's
    FltToken token;
    token.attach(bytes.data(), 8);
    token.rewind();
    std::uint32_t number = 1;
    token.readInt32(number);
    EXPECT_EQ(number, 0x12340000U);
    EXPECT_EQ(token.position(), 6);
    token.rewind();
    std::uint64_t wide = 1;
    token.readInt64(wide);
    EXPECT_EQ(wide, 0x1234000000000000U);
    std::uint8_t rest[4] = {9, 9, 9, 9};
    token.rewind();
    EXPECT_EQ(token.readBytes(4, rest), 2U);
    EXPECT_EQ(Bytes(rest, rest + 4), hex("12340000"));
}

TEST(TokenTest, SkippingPastTheEndAppendsZeros) {
    const Bytes bytes = hex("0002 0006 1234 FFFF");
    FltToken token;
    token.attach(bytes.data(), 8);
    token.rewind();
    EXPECT_EQ(token.skip(4), 4U);
    EXPECT_EQ(toHex(bytesOf(token)), toHex(hex("0002 0006 1234 0000")));
    EXPECT_TRUE(token.ownsBuffer());
    EXPECT_EQ(toHex(bytes), toHex(hex("0002 0006 1234 FFFF"))) << "the bytes are the caller's";
}

TEST(TokenTest, NeverWritesIntoAttachedBytes) {
    const Bytes bytes = hex("0002 0008 12345678");
    Bytes attached = bytes;
    FltToken token;
    token.attach(attached.data(), 8);
    EXPECT_EQ(token.data(), attached.data());
    token.rewind();
    token.writeInt16<std::uint16_t>(0xABCD);
    EXPECT_EQ(toHex(bytesOf(token)), toHex(hex("0002 0008 ABCD5678")));
    token.attach(attached.data(), 8);
    token.finish();
    token.attach(attached.data(), 8);
    token.begin(7);
    EXPECT_EQ(attached, bytes);

    FltToken other;  // patched at its start, where its own block must still hold the rest
    const Bytes longer = hex("0002 0048 00:60 12345678 'end!'");
    other.attach(longer.data(), 72);
    other.rewind();
    other.writeInt8<std::uint8_t>(0xFF);
    EXPECT_EQ(toHex(bytesOf(other)), toHex(hex("0002 0048 FF 00:59 12345678 'end!'")));
}

TEST(TokenTest, ReturnsFromAttachedBytesToItsOwnBlock) {
    // Whole, cut within the record, cut within its header: none is room for what is written next.
    const Bytes whole = hex("0002 0008 12345678");
    for (const std::int32_t size : {8, 6, 3}) {
        Bytes attached(whole.begin(), whole.begin() + size);
        const Bytes bytes = attached;
        FltToken token;
        token.begin(2, 60);
        token.attach(attached.data(), size);
        std::memcpy(token.begin(3, 4), "abcd", 4);
        token.finish();
        EXPECT_EQ(toHex(bytesOf(token)), toHex(hex("0003 0008 'abcd'"))) << size;
        token.attach(attached.data(), size);
        token.grow(8);
        token.rewind();
        token.writeBytes(4, "efgh");
        EXPECT_EQ(toHex({token.data() + 4, token.data() + 8}), toHex(hex("'efgh'"))) << size;
        EXPECT_EQ(attached, bytes) << size;
    }
}

TEST(TokenTest, BoundsTheLengthOfAttachedBytes) {
    const std::tuple<const char*, int, int> cases[] = {{"0002 FFFF 11", 2, 5},
                                                       {"0002 0002 11", 2, 2},
                                                       {"0002 00", 2, 0},
                                                       {"00", 0, 0},
                                                       {"", 0, 0}};
    for (const auto& [words, opcode, length] : cases) {
        const Bytes bytes = hex(words);
        FltToken token;
        token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
        EXPECT_EQ(token.opcode(), opcode) << words;
        EXPECT_EQ(token.length(), length) << words;
        token.rewind();
        std::uint32_t number = 1;
        token.readInt32(number);
        EXPECT_EQ(number, length == 5 ? 0x11000000U : 0U) << words;
    }
}

TEST(TokenTest, NeverWrapsALength) {
    const std::string block(0x8000, 'x');
    FltToken token;
    token.begin(72);
    token.writeBytes(0x8000, block.data());
    token.writeBytes(0x7FFB, block.data());
    EXPECT_EQ(token.length(), 0xFFFF);
    expectAssertion("flttoken", 133, [&] { token.writeInt8('x'); });
    expectAssertion("flttoken", 133, [&] { token.skip(0xFFFFFFFF); });
    token.finish();
    EXPECT_EQ(token.length(), 0xFFFF);

    token.begin(2);
    token.skip(0xFFF5);
    expectAssertion("flttoken", 133, [&] { token.finish(); });
    expectAssertion("flttoken", 133, [&] { token.grow(0x10000); });
}

TEST(TokenTest, GrowsFromThirtyTwoByDoubling) {
    FltToken token;
    const std::pair<unsigned, int> cases[] = {{1, 32}, {32, 32}, {33, 64}, {200, 256}, {10, 256}};
    for (const auto& [length, capacity] : cases) {
        token.grow(length);
        EXPECT_EQ(token.capacity(), capacity) << length;
        EXPECT_EQ(token.length(), length);
    }
    token.reset();
    EXPECT_EQ(token.capacity(), 0);
    EXPECT_EQ(token.data(), nullptr);
}

TEST(TokenTest, ShrinkingTakesTheCursorAlong) {
    const Bytes bytes = hex("0002 000C 1122334455667788");
    FltToken attached;
    attached.attach(bytes.data(), 12);
    attached.rewind(8);
    FltToken own;
    own.begin(2);
    own.writeBytes(8, bytes.data() + 4);
    for (FltToken* token : {&attached, &own}) {
        token->grow(6);
        EXPECT_EQ(token->position(), 6);
        std::uint32_t number = 1;
        token->readInt32(number);
        EXPECT_EQ(number, 0U);
        EXPECT_EQ(token->remaining(), 0U);
    }
}

TEST(TokenTest, BeginsWholeRecordsWithTheirPadding) {
    FltToken token;
    const Bytes noise(64, 0xFF);
    token.begin(2);
    token.writeBytes(64, noise.data());

    std::memcpy(token.begin(2, 6), "abcdef", 6);
    EXPECT_EQ(token.length(), 10);
    token.finish();
    const Bytes padded = hex("0002 0010 'abcdef' 00:6");
    EXPECT_EQ(toHex(bytesOf(token)), toHex(padded));
    EXPECT_EQ(token.position(), 4);
    token.finish();
    EXPECT_EQ(toHex(bytesOf(token)), toHex(padded));
    token.writeInt8('A');
    token.finish();
    EXPECT_EQ(toHex(bytesOf(token)), toHex(hex("0002 0010 'Abcdef' 00:6")));

    std::memcpy(token.begin(2, 6), "abcdef", 6);
    token.writeBytes(7, "ghijklm");
    token.finish();
    EXPECT_EQ(toHex(bytesOf(token)), toHex(hex("0002 0018 'abcdefghijklm' 00:7")));

    std::memcpy(token.begin(72, 6), "abcdef", 6);
    token.finish();
    EXPECT_EQ(toHex(bytesOf(token)), toHex(hex("0048 000A 'abcdef'")));

    token.begin(2, 0xFFFB);
    EXPECT_EQ(token.length(), 0xFFFF);
    expectAssertion("flttoken", 133, [&] { token.finish(); });
    expectAssertion("flttoken", 133, [&] { token.begin(2, 0xFFFC); });
}

TEST(TokenTest, ConvertsWholeWordsOnly) {
    std::uint64_t number = 0;
    const Bytes bytes = hex("0000000000000164");
    FltToken::convertOrder(&number, bytes.data(), 8);
    EXPECT_EQ(number, 0x164U);
    expectAssertion("flttoken", 87, [&] { FltToken::convertOrder(&number, bytes.data(), 3); });
}

}  // namespace
