#include <render/texture.h>

#include <gmock/gmock.h>

using namespace render;

namespace {

using Bytes = std::vector<std::uint8_t>;

/// A header, big-endian: encoded or not, bytes a channel, sides, channels.
Bytes header(bool encoded, unsigned size, unsigned width, unsigned height, unsigned channels) {
    Bytes bytes = {0x01, 0xDA, std::uint8_t(encoded), std::uint8_t(size), 0, 3};
    for (const unsigned value : {width, height, channels}) {
        bytes.push_back(static_cast<std::uint8_t>(value >> 8));
        bytes.push_back(static_cast<std::uint8_t>(value));
    }
    bytes.resize(512);
    return bytes;
}

Bytes joined(Bytes bytes, const Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
    return bytes;
}

// Two columns and two rows: the lower row red and green, the upper one blue and white.
const Bytes kChannels = {255, 0, 0, 255, 0, 255, 0, 255, 0, 0, 255, 255};

TEST(SgiPicture, ReadsEachNumberOfChannels) {
    const Picture color = readSgiPicture(joined(header(false, 1, 2, 2, 3), kChannels));
    EXPECT_EQ(color.width, 2);
    EXPECT_EQ(color.height, 2);
    EXPECT_THAT(color.texels, testing::ElementsAre(0xFFFF0000, 0xFF00FF00, 0xFF0000FF, 0xFFFFFFFF));
    EXPECT_FALSE(color.hasAlpha());
    const Picture alpha =
        readSgiPicture(joined(joined(header(false, 1, 2, 2, 4), kChannels), {1, 2, 3, 255}));
    EXPECT_THAT(alpha.texels, testing::ElementsAre(0x01FF0000, 0x0200FF00, 0x030000FF, 0xFFFFFFFF));
    EXPECT_TRUE(alpha.hasAlpha());
    EXPECT_THAT(readSgiPicture(joined(header(false, 1, 2, 1, 1), {0x12, 0x34})).texels,
                testing::ElementsAre(0xFF121212, 0xFF343434));
    EXPECT_THAT(readSgiPicture(joined(header(false, 1, 2, 1, 2), {0x12, 0x34, 0, 9})).texels,
                testing::ElementsAre(0x00121212, 0x09343434));
    EXPECT_THAT(readSgiPicture(joined(header(false, 2, 2, 1, 1), {0x12, 0x99, 0x34, 0})).texels,
                testing::ElementsAre(0xFF121212, 0xFF343434))
        << "the upper bytes of 16 bits";
}

TEST(SgiPicture, ReadsRunsInRowsThatMayBeShared) {
    // One channel, five columns, three rows: a run, then values; the third row is the first again.
    Bytes bytes = header(true, 1, 5, 3, 1);
    const auto word = [&](std::uint8_t value) { bytes.insert(bytes.end(), {0, 0, 2, value}); };
    word(24), word(30), word(24);  // places: 512 + 24 and so on
    for (const std::uint8_t length : Bytes{6, 3, 6}) bytes.insert(bytes.end(), {0, 0, 0, length});
    bytes.insert(bytes.end(), {0x03, 0x77, 0x82, 0x01, 0x02, 0x00});
    bytes.insert(bytes.end(), {0x7F, 0x55, 0x00});  // more than the row holds
    const std::vector<std::uint32_t> first = {0xFF777777, 0xFF777777, 0xFF777777, 0xFF010101,
                                              0xFF020202};
    std::vector<std::uint32_t> expected = first;
    expected.insert(expected.end(), 5, 0xFF555555);
    expected.insert(expected.end(), first.begin(), first.end());
    EXPECT_EQ(readSgiPicture(bytes).texels, expected);

    bytes[512 + 3] = 0xFF;  // a row far behind the end
    bytes.resize(512 + 24 + 7);
    expected[0] = expected[1] = expected[2] = expected[3] = expected[4] = 0xFF000000;
    for (std::size_t i = 5; i < 10; ++i) expected[i] = 0xFF000000;
    EXPECT_EQ(readSgiPicture(bytes).texels, expected) << "what is missing is black";
}

TEST(SgiPicture, RefusesWhatIsNone) {
    Bytes strange = header(false, 3, 2, 2, 3);
    const std::pair<Bytes, const char*> cases[] = {
        {{}, "no SGI picture"},
        {Bytes(600, 7), "no SGI picture"},
        {strange, "an unknown kind of SGI picture"},
        {header(false, 1, 0, 2, 3), "an empty picture"},
        {header(false, 1, 5000, 5000, 3), "too large a picture"},
        {header(true, 1, 4000, 4000, 3), "cut short"},
    };
    for (const auto& [bytes, reason] : cases) {
        try {
            readSgiPicture(bytes);
            FAIL() << reason;
        } catch (const PictureError& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
}

TEST(TextureTest, RepeatsAndIsSmoothFromNearAndFar) {
    const Texture texture({2, 2, {0xFF000000, 0xFFFFFFFF, 0xFFFFFFFF, 0xFF000000}});
    const Texture::Level close = texture.level(0);
    EXPECT_EQ(close.at(0, 0), 0xFF000000);
    EXPECT_EQ(close.at(256, 0), 0xFFFFFFFF);
    EXPECT_EQ(close.at(-512 + 256, 4 * 512), 0xFFFFFFFF) << "repetitions of the same";
    EXPECT_NEAR(close.at(128, 0) & 0xFF, 127, 1) << "between the two";
    EXPECT_EQ(texture.levels(), 2);
    EXPECT_NEAR(texture.level(1).at(0, 0) & 0xFF, 128, 1) << "both from afar";

    const Texture uneven({3, 1, {0xFF112233, 0x00FFFFFF, 0xFF112233}});
    EXPECT_EQ(uneven.level(0).widthBits, 2);
    EXPECT_EQ(uneven.level(0).heightBits, 0);
    EXPECT_EQ(uneven.levels(), 3);
    EXPECT_TRUE(uneven.hasAlpha());
    EXPECT_EQ(uneven.level(2).at(0, 0) & 0xFFFFFF, 0x112233u)
        << "what cannot be seen has no say in the color";
    Picture large{2000, 1, {}};
    large.texels.assign(2000, 0xFF808080);
    EXPECT_EQ(Texture(large).level(0).widthBits, Texture::kMostBits);
    EXPECT_EQ(Texture(large, 4).level(0).widthBits, 4);
}

}  // namespace
