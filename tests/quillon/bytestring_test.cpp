#include "support.h"

#include <quillon/fltcomment.h>
#include <quillon/fltlistof.h>
#include <quillon/fltstring.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <tuple>

namespace {

FltBytestring filled(std::string_view text) {
    FltBytestring bytes;
    bytes.insert(0, static_cast<std::int32_t>(text.size()), text.data());
    return bytes;
}

/// What the string holds, without moving its gap.
std::string contents(const FltBytestring& bytes) {
    std::string text;
    for (std::int32_t i = 0; i < bytes.size(); ++i) text += static_cast<char>(*bytes.address(i, 1));
    return text;
}

TEST(BytestringTest, BehavesLikeAStringUnderRandomEdits) {
    std::mt19937 random(4711);
    const auto below = [&](std::int32_t n) {
        return static_cast<std::int32_t>(random() % static_cast<unsigned>(n));
    };
    FltBytestring bytes;
    std::string model;
    for (int step = 0; step < 4000; ++step) {
        const auto size = static_cast<std::int32_t>(model.size());
        const std::int32_t p = below(size + 1);
        const std::int32_t n = below(std::min(size - p, 12) + 1);
        const std::string text(static_cast<std::size_t>(below(20)),
                               static_cast<char>('a' + step % 26));
        switch (below(6)) {
            case 0:
            case 1:
                bytes.insert(p, static_cast<std::int32_t>(text.size()), text.data());
                model.insert(static_cast<std::size_t>(p), text);
                break;
            case 2:
                bytes.erase(p, n);
                model.erase(static_cast<std::size_t>(p), static_cast<std::size_t>(n));
                break;
            case 3: {
                const std::string other(static_cast<std::size_t>(n), '#');
                bytes.overwrite(p, n, other.data());
                model.replace(static_cast<std::size_t>(p), other.size(), other);
                break;
            }
            case 4:
                if (size > 60) {
                    bytes.resize(size / 2);
                    model.resize(static_cast<std::size_t>(size / 2));
                }
                break;
            default:
                if (p < size) {
                    ASSERT_EQ(std::memcmp(bytes.address(p, size - p), model.data() + p,
                                          static_cast<std::size_t>(size - p)),
                              0);
                }
        }
        ASSERT_EQ(bytes.gapSize(), bytes.capacity() - bytes.size());
        ASSERT_EQ(contents(bytes), model) << "after step " << step;
    }
    FltBytestring copy(bytes);
    EXPECT_EQ(copy.capacity(), bytes.capacity());
    EXPECT_EQ(copy.gapStart(), bytes.gapStart());
    copy.insert(0, 1, "!");
    EXPECT_EQ(contents(copy), "!" + model);
    EXPECT_EQ(contents(bytes), model) << "copies share nothing";
}

TEST(BytestringTest, GrowsFromSixteenByDoubling) {
    FltBytestring bytes;
    const std::pair<std::int32_t, std::int32_t> cases[] = {{1, 16}, {16, 16}, {17, 32}, {100, 128}};
    for (const auto& [n, capacity] : cases) {
        bytes.reserve(n);
        EXPECT_EQ(bytes.capacity(), capacity) << n;
    }
}

TEST(BytestringTest, LeavesTheGapWhereTheNextEditIsLikely) {
    FltBytestring bytes = filled("abcdef");
    bytes.insert(3, 2, "XY");
    EXPECT_EQ(bytes.gapStart(), 5);
    bytes.erase(3, 2);  // right before the gap: nothing moves
    EXPECT_EQ(bytes.gapStart(), 3);
    bytes.address(1, 2);  // ends where the gap starts
    EXPECT_EQ(bytes.gapStart(), 3);
    bytes.address(1, 4);
    EXPECT_EQ(bytes.gapStart(), 1);
    bytes.overwrite(0, 3, "QRS");  // across the gap
    EXPECT_EQ(bytes.gapStart(), 1);
    EXPECT_EQ(contents(bytes), "QRSdef");
    bytes.resize(0);
    EXPECT_EQ(bytes.size(), 0);
    EXPECT_EQ(bytes.gapStart(), 0);
}

TEST(BytestringTest, RefusesWhatLiesOutside) {
    constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
    FltBytestring bytes = filled("abc");
    const std::tuple<int, std::function<void()>> cases[] = {
        {90, [&] { bytes.reserve(kMax); }},
        {90, [&] { bytes.insert(0, kMax, nullptr); }},
        {149, [&] { bytes.moveGap(4); }},
        {149, [&] { bytes.moveGap(-1); }},
        {156, [&] { bytes.address(3, 1); }},
        {156, [&] { bytes.address(-1, 1); }},
        {185, [&] { bytes.checkedAddress(3, 0); }},
        {199, [&] { bytes.overwrite(1, 3, "xyz"); }},
        {199, [&] { bytes.overwrite(2, kMax, "xyz"); }},
        {229, [&] { bytes.insert(4, 1, "x"); }},
        {254, [&] { bytes.resize(-1); }},
        {281, [&] { bytes.erase(2, 2); }},
        {281, [&] { bytes.erase(2, kMax); }},
        {281, [&] { bytes.erase(1, -1); }},
        {156, [] { FltBytestring().contiguous(); }},
    };
    for (const auto& [line, action] : cases) expectAssertion("fltbytestring", line, action);
    EXPECT_EQ(contents(bytes), "abc");
    bytes.insert(9, 0, "nothing is nowhere");
    bytes.insert(1, -5, "nothing");
    EXPECT_EQ(contents(bytes), "abc");
}

TEST(StringTest, AlwaysEndsWithATerminator) {
    EXPECT_EQ(FltString().size(), 1);
    EXPECT_STREQ(FltString(nullptr).text(), "");
    FltString text("campo");
    EXPECT_EQ(text.size(), 6);
    text.setSize(4);
    EXPECT_STREQ(text.text(), "cam");
    text.setSize(0);
    EXPECT_EQ(text.size(), 1);
    EXPECT_STREQ(text.text(), "");
}

TEST(ListTest, KeepsElementsInOrderAndAligned) {
    FltListOf<std::uint32_t> list;
    for (std::uint32_t i = 0; i < 9; ++i) list.append(i);
    list.insertAt(4, *list.at(8));  // an element of the list itself
    list.eraseAt(0);
    EXPECT_EQ(list.count(), 9);
    const std::uint32_t expected[] = {1, 2, 3, 8, 4, 5, 6, 7, 8};
    for (std::int32_t i = 0; i < 9; ++i) EXPECT_EQ(*list.at(i), expected[i]);
    EXPECT_EQ(std::memcmp(list.data(), expected, sizeof expected), 0);
    expectAssertion("fltlistof", 314, [&] { list.at(-1); });
    expectAssertion("fltlistof", 315, [&] { list.at(9); });
    expectAssertion("fltlistof", 326, [&] { list.insertAt(-1, 0); });
    expectAssertion("fltlistof", 327, [&] { list.insertAt(10, 0); });
    expectAssertion("fltlistof", 338, [&] { list.resize(0x40000000); });
    expectAssertion("fltlistof", 338, [&] { list.resize(INT32_MIN); });
}

TEST(CommentTest, IsAllTextBehindTheRecordHeader) {
    expectLayout(FltComment("runway"), "001F 0010 'runway' 00:6");
    expectLayout(FltComment(), "001F 0008 00:4");

    FltComment comment;
    decode(comment, hex("001F 000A 'runway'"));
    EXPECT_STREQ(comment.text(), "runway") << "no terminator in the file";
    EXPECT_EQ(comment.size(), 7);
    decode(comment, hex("001F 0004"));
    EXPECT_STREQ(comment.text(), "");
    expectAssertion("fltcomment", 66, [&] { decode(comment, hex("0021 0008 00:4")); });
    expectAssertion("flttoken", 133, [&] { encode(FltComment(std::string(70000, 'x').c_str())); });
}

TEST(CommentTest, DoesNotGrowWithEveryTrip) {
    FltComment comment("ten bytes.");
    const Bytes first = encode(comment);
    decode(comment, first);
    EXPECT_EQ(encode(comment), first);
}

}  // namespace
