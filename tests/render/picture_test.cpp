#include <render/texture.h>

#include <gmock/gmock.h>

#include <cstdlib>
#include <memory>

#include <render/pngfile.h>
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>

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

/// Why a picture is refused; unreadable for one that is not.
PictureFault faultOf(const Bytes& bytes) {
    try {
        readPicture(bytes);
    } catch (const PictureError& error) {
        return error.fault();
    }
    return PictureFault::kUnreadable;
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

    Bytes behind = bytes;
    behind[512 + 3] = 0xFF;  // a row far behind the end
    EXPECT_EQ(faultOf(behind), PictureFault::kCutShort);
    bytes.pop_back();
    EXPECT_EQ(faultOf(bytes), PictureFault::kCutShort);
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
        {joined(header(false, 1, 2, 2, 3), Bytes(11)), "cut short"},
        {joined(header(false, 2, 2, 2, 3), Bytes(12)), "cut short"},
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
    EXPECT_EQ(texture.level(1).at(0, 0), 0xFF808080) << "both from afar, rounded";

    const Texture uneven({3, 1, {0xFF112233, 0x00FFFFFF, 0xFF112233}});
    EXPECT_EQ(uneven.level(0).widthBits, 2);
    EXPECT_EQ(uneven.level(0).heightBits, 0);
    EXPECT_EQ(uneven.levels(), 3);
    EXPECT_TRUE(uneven.hasAlpha());
    EXPECT_EQ(uneven.level(2).at(0, 0) & 0xFFFFFF, 0x112233u)
        << "what cannot be seen has no say in the color";
    EXPECT_EQ(Texture({2, 1, {0xFF000000, 0}}).level(1).at(0, 0), 0x80000000);
    Picture large{2000, 1, {}};
    large.texels.assign(2000, 0xFF808080);
    EXPECT_EQ(Texture(large).level(0).widthBits, Texture::kMostBits);
    EXPECT_EQ(Texture(large, 4).level(0).widthBits, 4);
}

using Writer = int (*)(stbi_write_func*, void*, int, int, int, const void*);

/// A file in which the upper left quarter is red, the upper right green, all below blue.
Bytes written(Writer write, int width = 16, int height = 8) {
    const int middle = width / 2, half = height / 2;
    Bytes channels;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (const bool on : {y < half && x < middle, y < half && x >= middle, y >= half})
                channels.push_back(on ? 255 : 0);
    Bytes file;
    const auto append = [](void* to, void* data, int size) {
        const auto* const from = static_cast<const std::uint8_t*>(data);
        static_cast<Bytes*>(to)->insert(static_cast<Bytes*>(to)->end(), from, from + size);
    };
    EXPECT_TRUE(write(append, &file, width, height, 3, channels.data()));
    return file;
}

Bytes png() {
    return written([](stbi_write_func* append, void* to, int width, int height, int channels,
                      const void* data) {
        return stbi_write_png_to_func(append, to, width, height, channels, data, width * channels);
    });
}

Bytes jpeg() {
    return written([](stbi_write_func* append, void* to, int width, int height, int channels,
                      const void* data) {
        return stbi_write_jpg_to_func(append, to, width, height, channels, data, 95);
    });
}

std::vector<std::pair<const char*, Bytes>> filesOfEachKind() {
    return {{"png", png()},
            {"jpeg", jpeg()},
            {"tga", written(stbi_write_tga_to_func)},
            {"bmp", written(stbi_write_bmp_to_func)}};
}

Bytes gif() {
    return {'G', 'I', 'F', '8', '9', 'a', 1, 0, 1, 0, 0x80, 0, 0, 255, 0, 0, 0,  0,
            0,   ',', 0,   0,   0,   0,   1, 0, 1, 0, 0,    2, 2, 'D', 1, 0, ';'};
}

constexpr std::uint8_t kHuffmanTables[] = {0xFF, 0xC4};

/// A table that nothing in a file names: so many codes of 15 bits, and of 16.
Bytes unusedTable(std::uint8_t shorter, std::uint8_t longer) {
    Bytes table = {0x13};
    table.resize(1 + 14);
    table.insert(table.end(), {shorter, longer});
    table.resize(table.size() + shorter + longer);
    return table;
}

// A table has room for 256 codes, one for each byte.
TEST(PackedPicture, RefusesATableThatIsOverfull) {
    const Bytes file = jpeg();
    const auto place =
        std::search(file.begin(), file.end(), std::begin(kHuffmanTables), std::end(kHuffmanTables));
    ASSERT_NE(place, file.end());
    const auto with = [&](const Bytes& tables) {
        const std::size_t size = tables.size() + 2;
        Bytes segment = {0xFF, 0xC4, static_cast<std::uint8_t>(size >> 8),
                         static_cast<std::uint8_t>(size)};
        segment = joined(joined(Bytes(file.begin(), place), segment), tables);
        return joined(segment, Bytes(place, file.end()));
    };
    EXPECT_NO_THROW(readPicture(with(unusedTable(255, 1))));
    EXPECT_EQ(faultOf(with(unusedTable(255, 2))), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(with(joined(unusedTable(3, 0), unusedTable(255, 2)))),
              PictureFault::kCutShort);
}

TEST(PackedPicture, ReadsEachFormatTheRightWayUp) {
    for (const auto& [name, file] : filesOfEachKind()) {
        const Picture picture = readPicture(file);
        ASSERT_EQ(picture.width, 16) << name;
        ASSERT_EQ(picture.height, 8) << name;
        const auto isAbout = [&](std::size_t x, std::size_t y, std::uint32_t color) {
            const std::uint32_t texel = picture.texels[y * 16 + x];
            for (const unsigned shift : {0u, 8u, 16u, 24u})
                if (std::abs(static_cast<int>(texel >> shift & 0xFF) -
                             static_cast<int>(color >> shift & 0xFF)) > 40)
                    return false;
            return true;
        };
        EXPECT_TRUE(isAbout(2, 6, 0xFFFF0000)) << name;
        EXPECT_TRUE(isAbout(13, 6, 0xFF00FF00)) << name;
        EXPECT_TRUE(isAbout(13, 1, 0xFF0000FF)) << name;
    }
    EXPECT_THAT(readPicture(gif()).texels, testing::ElementsAre(0xFFFF0000));
    EXPECT_EQ(readPicture(joined(header(false, 1, 2, 1, 1), {0x12, 0x34})).width, 2);
    // The last row may lack what fills it up to four bytes.
    Bytes narrow = written(stbi_write_bmp_to_func, 1, 1);
    narrow.pop_back();
    EXPECT_THAT(readPicture(narrow).texels, testing::ElementsAre(0xFF0000FF));
    narrow.resize(narrow.size() - 3);
    EXPECT_EQ(faultOf(narrow), PictureFault::kCutShort);
}

TEST(PackedPicture, PngFilesOfOursAreRead) {
    const Color pixels[] = {0x010203, 0xFF0000, 0x00FF00, 0x0000FF, 0xFFFFFF, 0};
    const std::string file = encodedPng(3, 2, pixels);
    EXPECT_THAT(
        readPicture({reinterpret_cast<const std::uint8_t*>(file.data()), file.size()}).texels,
        testing::ElementsAre(0xFF0000FF, 0xFFFFFFFF, 0xFF000000, 0xFF010203, 0xFFFF0000,
                             0xFF00FF00));
}

TEST(PackedPicture, RefusesWhatIsDamagedOrTooLarge) {
    EXPECT_EQ(faultOf({}), PictureFault::kOtherFormat);
    EXPECT_EQ(faultOf({'t', 'e', 'x', 't'}), PictureFault::kOtherFormat);
    for (const auto& [name, file] : filesOfEachKind())
        for (const std::size_t missing : {file.size() / 2, file.size() / 4, std::size_t{40}}) {
            Bytes cut = file;
            cut.resize(file.size() - missing);
            EXPECT_EQ(faultOf(cut), PictureFault::kCutShort) << name << " without " << missing;
        }
    Bytes wide = png();
    wide[18] = wide[22] = 0x20;  // 8208 by 8200
    EXPECT_EQ(faultOf(wide), PictureFault::kTooLarge);
    wide[18] = wide[22] = 0x10;
    wide[19] = wide[23] = 0;
    EXPECT_EQ(faultOf(wide), PictureFault::kCutShort) << "4096 by 4096 are not too many";
}

/// So many of them, packed.
Bytes packedZeros(int count) {
    constexpr int kRun = 258;
    Bytes packed = {0x78, 0x01};
    unsigned bits = 0, held = 0;
    const auto put = [&](unsigned value, unsigned width) {
        for (unsigned i = 0; i < width; ++i) {
            held |= (value >> i & 1) << bits;
            if (++bits < 8) continue;
            packed.push_back(static_cast<std::uint8_t>(held));
            bits = held = 0;
        }
    };
    put(0b011, 3);  // the last block, by the codes that are known
    // A zero, its first bit first; then the byte before in runs.
    for (; count % kRun != 0; --count) put(0b00001100, 8);
    for (; count > 0; count -= kRun) put(0b10100011, 8), put(0, 5);
    put(0, 7 + 7), put(0, 32);  // the end, and a sum that nobody checks
    return packed;
}

/// A PNG file. `kind` is 0 for grey, 6 for colors and alpha.
Bytes pngOf(std::uint16_t side, std::uint8_t bits, std::uint8_t kind, const Bytes& packed) {
    Bytes file = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
    const auto chunk = [&](const char* type, const Bytes& content) {
        for (const unsigned shift : {24U, 16U, 8U, 0U})
            file.push_back(static_cast<std::uint8_t>(content.size() >> shift));
        file.insert(file.end(), type, type + 4);
        file = joined(joined(std::move(file), content), Bytes(4));
    };
    const auto high = static_cast<std::uint8_t>(side >> 8), low = static_cast<std::uint8_t>(side);
    chunk("IHDR", {0, 0, high, low, 0, 0, high, low, bits, kind, 0, 0, 0});
    chunk("IDAT", packed);
    chunk("IEND", {});
    return file;
}

// What a picture of its size and a file of its size need is not too much: 16 bits a channel, and
// much that nobody asks for behind the texels. Fifteen million bytes for one texel are.
TEST(PackedPicture, RefusesWhatGrowsWhenItIsUnpacked) {
    constexpr std::uint16_t kSide = 800;
    const Picture wide = readPicture(pngOf(kSide, 16, 6, packedZeros(kSide * (8 * kSide + 1))));
    EXPECT_EQ(wide.width, kSide);
    EXPECT_EQ(wide.texels.back(), 0U);
    EXPECT_THAT(readPicture(pngOf(1, 8, 0, joined(packedZeros(2), Bytes(5 << 20)))).texels,
                testing::ElementsAre(0xFF000000));
    EXPECT_EQ(faultOf(pngOf(1, 8, 0, packedZeros(15'000'001))), PictureFault::kTooLarge);
}

/// A DDS header of a format, and its blocks.
Bytes dds(const char (&format)[5], unsigned width, unsigned height, const Bytes& blocks) {
    Bytes bytes = {'D', 'D', 'S', ' '};
    bytes.resize(128);
    bytes[12] = static_cast<std::uint8_t>(height);
    bytes[16] = static_cast<std::uint8_t>(width);
    std::copy_n(format, 4, bytes.begin() + 84);
    return joined(bytes, blocks);
}

// Red and blue in the first place, and the four choices in the first texels of the upper row.
const Bytes kBlock = {0x00, 0xF8, 0x1F, 0x00, 0b11100100, 0, 0, 0};
const Bytes kReversed = {0x1F, 0x00, 0x00, 0xF8, 0b11100100, 0, 0, 0};

TEST(DdsPicture, ReadsTheKindsOfBlocks) {
    const auto upperRow = [](const Bytes& file) {
        const Picture picture = readPicture(file);
        EXPECT_EQ(picture.width, 4);
        EXPECT_EQ(picture.height, 4);
        return std::vector(picture.texels.end() - 4, picture.texels.end());
    };
    EXPECT_THAT(upperRow(dds("DXT1", 4, 4, kBlock)),
                testing::ElementsAre(0xFFFF0000, 0xFF0000FF, 0xFFAA0055, 0xFF5500AA));
    EXPECT_THAT(upperRow(dds("DXT1", 4, 4, kReversed)),
                testing::ElementsAre(0xFF0000FF, 0xFFFF0000, 0xFF7F007F, 0));
    EXPECT_THAT(upperRow(dds("DXT3", 4, 4, joined({0x10, 0xF2, 0, 0, 0, 0, 0, 0}, kReversed))),
                testing::ElementsAre(0x000000FF, 0x11FF0000, 0x225500AA, 0xFFAA0055))
        << "only the first kind has what is clear";
    EXPECT_THAT(
        upperRow(dds("DXT5", 4, 4, joined({140, 0, 0b10001000, 0b0110, 0, 0, 0, 0}, kBlock))),
        testing::ElementsAre(0x8CFF0000, 0x000000FF, 0x78AA0055, 0x645500AA));
    EXPECT_THAT(upperRow(dds("DXT5", 4, 4, joined({0, 200, 0b10111110, 0, 0, 0, 0, 0}, kBlock))),
                testing::ElementsAre(0x00FF0000, 0xFF0000FF, 0x28AA0055, 0x005500AA));
    const Bytes equal = {0x00, 0xF8, 0x00, 0xF8, 0b11100100, 0, 0, 0};
    EXPECT_THAT(upperRow(dds("DXT1", 4, 4, equal)),
                testing::ElementsAre(0xFFFF0000, 0xFFFF0000, 0xFFFF0000, 0));
    EXPECT_THAT(upperRow(dds("DXT5", 4, 4, joined({9, 9, 0b00111110, 0, 0, 0, 0, 0}, equal))),
                testing::ElementsAre(0x00FF0000, 0xFFFF0000, 0x09FF0000, 0x09FF0000));
    const Picture last = readPicture(dds("DXT5", 4, 4, joined({7, 8, 0, 0, 0, 0, 0, 0x20}, equal)));
    EXPECT_EQ(last.texels[2] >> 24, 7U);
    EXPECT_EQ(last.texels[3] >> 24, 8U) << "the last texel of the lowest row";
    // The same kinds by their numbers.
    const Bytes blocks = joined({0x10, 0xF2, 0, 0, 0, 0, 0, 0}, kReversed);
    for (unsigned number = 70; number < 79; ++number) {
        const Bytes block = number < 73 ? kReversed : blocks;
        Bytes extension(20);
        extension[0] = static_cast<std::uint8_t>(number);
        const char(&name)[5] = number < 73 ? "DXT1" : number < 76 ? "DXT3" : "DXT5";
        EXPECT_EQ(upperRow(dds("DX10", 4, 4, joined(extension, block))),
                  upperRow(dds(name, 4, 4, block)))
            << number;
    }
    // A picture that ends within its blocks.
    const Picture small = readPicture(dds("DXT1", 2, 1, kBlock));
    EXPECT_THAT(small.texels, testing::ElementsAre(0xFFFF0000, 0xFF0000FF));
}

TEST(DdsPicture, RefusesWhatIsNone) {
    EXPECT_EQ(faultOf({'D', 'D', 'S', ' '}), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(dds("DXT1", 5, 4, kBlock)), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(dds("DXT5", 4, 4, kBlock)), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(dds("DXT1", 0, 4, kBlock)), PictureFault::kEmpty);
    EXPECT_EQ(faultOf(dds("ATI2", 4, 4, kBlock)), PictureFault::kUnknownKind);
    for (const std::uint8_t number : Bytes{69, 79})
        EXPECT_EQ(faultOf(dds("DX10", 4, 4, joined({number}, Bytes(40)))),
                  PictureFault::kUnknownKind);
    EXPECT_EQ(faultOf(dds("DX10", 4, 4, {})), PictureFault::kUnknownKind) << "without its number";
    EXPECT_EQ(faultOf(dds("DX10", 4, 4, joined({70}, Bytes(26)))), PictureFault::kCutShort);
    Bytes huge = dds("DXT1", 4, 4, kBlock);
    huge[15] = huge[19] = 0xFF;
    EXPECT_EQ(faultOf(huge), PictureFault::kTooLarge);
}

/// A field of a TIFF file. Of several values `value` is the place, or what stands there if they
/// fit into four bytes. Type 1 is a byte, 3 a word of 16 bits, 4 one of 32.
struct Field {
    unsigned tag, value, type = 3, count = 1;
};
using Fields = std::vector<Field>;

/// Where what follows so many fields begins.
constexpr unsigned behind(unsigned fields) {
    return 8 + 2 + 12 * fields + 4;
}

/// A TIFF file of one strip, unless the fields say otherwise, and what stands behind them.
Bytes tiff(bool isBig, Fields fields, const Bytes& strip) {
    Bytes bytes;
    const auto number = [&](unsigned value, unsigned size) {
        for (unsigned i = 0; i < size; ++i)
            bytes.push_back(static_cast<std::uint8_t>(value >> 8 * (isBig ? size - 1 - i : i)));
    };
    const auto isGiven = [&](unsigned tag) {
        return std::ranges::find(fields, tag, &Field::tag) != fields.end();
    };
    bytes = isBig ? Bytes{'M', 'M'} : Bytes{'I', 'I'};
    number(42, 2), number(8, 4);
    if (!isGiven(279)) fields.push_back({279, static_cast<unsigned>(strip.size())});
    if (!isGiven(273)) fields.push_back({273, behind(static_cast<unsigned>(fields.size()) + 1)});
    number(static_cast<unsigned>(fields.size()), 2);
    for (const auto& [tag, value, type, count] : fields) {
        const unsigned size = count != 1 || type == 4 ? 4 : type == 3 ? 2 : 1;
        number(tag, 2), number(type, 2), number(count, 4);
        number(value, size), number(0, 4 - size);
    }
    number(0, 4);
    return joined(bytes, strip);
}

TEST(TiffPicture, ReadsColorsAndGreyInEitherByteOrder) {
    const Fields color = {{256, 2}, {257, 2}, {258, 8}, {262, 2}, {277, 3}};
    for (const bool isBig : {false, true})
        EXPECT_THAT(
            readPicture(tiff(isBig, color, {255, 0, 0, 0, 255, 0, 0, 0, 255, 9, 8, 7})).texels,
            testing::ElementsAre(0xFF0000FF, 0xFF090807, 0xFFFF0000, 0xFF00FF00));
    EXPECT_THAT(
        readPicture(tiff(false, {{256, 1}, {257, 1}, {258, 8}, {262, 2}, {277, 4}}, {1, 2, 3, 4}))
            .texels,
        testing::ElementsAre(0x04010203));
    EXPECT_THAT(readPicture(tiff(false, {{256, 3}, {257, 1}, {262, 0}}, {0b10100000})).texels,
                testing::ElementsAre(0xFF000000, 0xFFFFFFFF, 0xFF000000));
    EXPECT_EQ(faultOf(tiff(true, color, {255, 0, 0, 0, 255, 0})), PictureFault::kCutShort);
    // Two values that fit into the field, and a kind that is a byte.
    EXPECT_THAT(
        readPicture(tiff(true, {{256, 1}, {257, 1}, {258, 0x80008, 3, 2}, {262, 1, 1}, {277, 2}},
                         {0x12, 0x34}))
            .texels,
        testing::ElementsAre(0x34121212));
    // Three strips, of which the last has one row, and of which nobody says how long they are.
    const Fields strips = {
        {256, 1}, {257, 5}, {258, 8}, {262, 1}, {278, 2}, {279, 0, 3, 0}, {273, behind(7), 3, 3}};
    const std::uint8_t first = behind(7) + 6;
    EXPECT_THAT(
        readPicture(tiff(false, strips, {first, 0, first + 3, 0, first + 5, 0, 1, 2, 9, 3, 4, 5}))
            .texels,
        testing::ElementsAre(0xFF050505, 0xFF040404, 0xFF030303, 0xFF020202, 0xFF010101));
}

// All red ones, all green ones, all blue ones; words of which the upper bytes are seen.
TEST(TiffPicture, ReadsPalettes) {
    const Fields fields = {{256, 3}, {257, 1}, {258, 8}, {262, 3}, {320, behind(7) + 3, 3, 768}};
    Bytes strip = {1, 255, 0};
    for (unsigned i = 0; i < 768; ++i)
        strip.insert(strip.end(), {0x77, static_cast<std::uint8_t>(i + i / 256 * 0x20)});
    EXPECT_THAT(readPicture(tiff(false, fields, strip)).texels,
                testing::ElementsAre(0xFF012141, 0xFFFF1F3F, 0xFF002040));
}

TEST(TiffPicture, ReadsWhatIsPacked) {
    const Fields grey = {{256, 9}, {257, 1}, {258, 8}, {262, 1}};
    const auto values = [](const Picture& picture) {
        std::vector<unsigned> all;
        for (const std::uint32_t texel : picture.texels) all.push_back(texel & 0xFF);
        return all;
    };
    const auto with = [](Fields fields, Field more) {
        fields.push_back(more);
        return fields;
    };
    EXPECT_THAT(values(readPicture(
                    tiff(false, with(grey, {259, 32773}), {0xFD, 5, 0x80, 1, 6, 7, 0xFE, 8}))),
                testing::ElementsAre(5, 5, 5, 5, 6, 7, 8, 8, 8));
    const Bytes codes = {0x80, 0x01, 0xE0, 0x40, 0x80, 0x44, 0x08, 0x0C, 0x06, 0x80, 0x80};
    EXPECT_THAT(values(readPicture(tiff(true, with(grey, {259, 5}), codes))),
                testing::ElementsAre(7, 7, 7, 8, 8, 7, 7, 6, 6));
    EXPECT_THAT(values(readPicture(tiff(true, with(with(grey, {259, 5}), {317, 2}), codes))),
                testing::ElementsAre(7, 14, 21, 29, 37, 44, 51, 57, 63))
        << "differences";
    EXPECT_THAT(
        readPicture(tiff(false, {{256, 2}, {257, 2}, {258, 8}, {262, 2}, {277, 3}, {317, 2}},
                         {1, 2, 3, 10, 20, 30, 4, 5, 6, 1, 1, 1}))
            .texels,
        testing::ElementsAre(0xFF040506, 0xFF050607, 0xFF010203, 0xFF0B1621))
        << "of each channel and row";
    EXPECT_THAT(
        values(readPicture(tiff(false, {{256, 9}, {257, 1}, {262, 1}, {317, 2}}, {0x80, 0}))),
        testing::ElementsAre(255, 0, 0, 0, 0, 0, 0, 0, 0))
        << "there are none of single bits";
    // Codes get longer as soon as the next text would need it: here behind 254 of them.
    Bytes longer;
    unsigned held = 0, bits = 0;
    const auto put = [&](unsigned code, unsigned width) {
        held = held << width | code;
        for (bits += width; bits >= 8; bits -= 8)
            longer.push_back(static_cast<std::uint8_t>(held >> (bits - 8)));
    };
    put(256, 9);
    std::vector<unsigned> expected;
    for (unsigned i = 0; i < 300; ++i) {
        expected.push_back(i * 7 % 256);
        put(expected.back(), i < 254 ? 9 : 10);
    }
    put(256, 10);
    for (const unsigned value : {1U, 2U, 3U}) put(value, 9), expected.push_back(value);
    put(257, 9), put(0, 8);
    EXPECT_EQ(values(readPicture(tiff(false, {{256, 303}, {257, 1}, {258, 8}, {259, 5}}, longer))),
              expected);
}

TEST(TiffPicture, RefusesWhatItCannotShow) {
    const Fields one = {{256, 1}, {257, 1}, {258, 8}};
    EXPECT_EQ(faultOf({'I', 'I', 42, 0, 8, 0, 0, 0}), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(tiff(false, {{257, 1}}, {})), PictureFault::kEmpty);
    EXPECT_EQ(faultOf(tiff(false, {{256, 65535}, {257, 65535}}, {})), PictureFault::kTooLarge);
    for (const Field& other :
         Fields{{259, 7}, {262, 5}, {284, 3}, {258, 32}, {277, 9}, {317, 3}, {339, 3}}) {
        Fields fields = one;
        std::erase_if(fields, [&](const Field& field) { return field.tag == other.tag; });
        fields.push_back(other);
        EXPECT_EQ(faultOf(tiff(true, fields, {1, 2, 3})), PictureFault::kUnknownKind) << other.tag;
    }
    EXPECT_EQ(faultOf(tiff(true, {{256, 1}, {257, 1}, {277, 2}}, {1, 2, 3})),
              PictureFault::kUnknownKind)
        << "with single bits";
    const auto tiles = [](unsigned width, unsigned height) {
        return faultOf(
            tiff(true, {{256, 1}, {257, 1}, {258, 8}, {322, width}, {323, height}}, {1, 2, 3}));
    };
    EXPECT_EQ(tiles(16, 0), PictureFault::kEmpty);
    EXPECT_EQ(tiles(0, 16), PictureFault::kEmpty);
    EXPECT_EQ(tiles(65535, 65535), PictureFault::kTooLarge);
    EXPECT_EQ(tiles(4096, 4112), PictureFault::kTooLarge) << "larger than the largest picture";
    EXPECT_EQ(tiles(16, 16), PictureFault::kCutShort) << "there are none";
    const Fields many = {{256, 4096}, {257, 4096}, {258, 8}, {322, 8}, {323, 8}};
    EXPECT_EQ(faultOf(tiff(true, many, {})), PictureFault::kTooLarge);
}

/// How a picture of three columns and five rows is stored.
struct TiffForm {
    bool isBig = false, isTiled = true;
    unsigned bits = 8, photometric = 2, samples = 3, planes = 1, compression = 1, predictor = 1;
    unsigned width = 2, height = 2;  ///< of its blocks
};

constexpr unsigned kColumns = 3, kRows = 5;

/// What a channel has, rows counted from above. Where tiles reach beyond the picture it goes on.
unsigned channelAt(unsigned x, unsigned y, unsigned channel, unsigned bits) {
    return (x * 53 + y * 31 + channel * 97 + 5) & ((1U << bits) - 1);
}

Bytes deflated(Bytes plain) {
    int size = 0;
    const std::unique_ptr<unsigned char, void (*)(void*)> packed(
        stbi_zlib_compress(plain.data(), static_cast<int>(plain.size()), &size, 8), std::free);
    return {packed.get(), packed.get() + size};
}

/// How many fields such a file has.
constexpr unsigned fieldsOf(const TiffForm& form) {
    return form.isTiled ? 15 : 12;
}

/// Behind its fields are the places of its blocks, their lengths, the palette and the blocks.
Bytes tiffOf(const TiffForm& form) {
    const auto put = [&](Bytes& to, unsigned value, unsigned size) {
        for (unsigned i = 0; i < size; ++i)
            to.push_back(std::uint8_t(value >> 8 * (form.isBig ? size - 1 - i : i)));
    };
    std::vector<Bytes> blocks;
    const unsigned together = form.planes == 1 ? form.samples : 1;
    const unsigned width = form.isTiled ? form.width : kColumns;
    for (unsigned plane = 0; plane < form.samples / together; ++plane)
        for (unsigned top = 0; top < kRows; top += form.height)
            for (unsigned left = 0; left < kColumns; left += width) {
                const unsigned rows =
                    form.isTiled ? form.height : std::min(form.height, kRows - top);
                Bytes plain;
                for (unsigned y = top; y < top + rows; ++y) {
                    unsigned held = 0, count = 0;
                    for (unsigned i = 0; i < width * together; ++i) {
                        const auto at = [&](unsigned x, unsigned channel) {
                            return channelAt(x, y, channel, form.bits);
                        };
                        const unsigned x = left + i / together, channel = plane + i % together;
                        unsigned value = at(x, channel);
                        if (form.predictor == 2 && x > left) value -= at(x - 1, channel);
                        if (form.bits >= 8) {
                            put(plain, value, form.bits / 8);
                            continue;
                        }
                        held |= value << (8 - form.bits - count);
                        count += form.bits;
                        if (count < 8 && i + 1 < width) continue;
                        plain.push_back(std::uint8_t(held));
                        held = count = 0;
                    }
                }
                blocks.push_back(form.compression == 1 ? plain : deflated(plain));
            }
    const unsigned count = static_cast<unsigned>(blocks.size());
    const unsigned colors = form.photometric == 3 ? 3U << form.bits : 0;
    const unsigned places = behind(fieldsOf(form)), lengths = places + 4 * count;
    const unsigned palette = lengths + 4 * count;
    Fields fields = {
        {256, kColumns},          {257, kRows},        {258, form.bits},   {259, form.compression},
        {262, form.photometric},  {277, form.samples}, {284, form.planes}, {317, form.predictor},
        {320, palette, 3, colors}};
    if (form.isTiled)
        fields.insert(
            fields.end(),
            {{322, width}, {323, form.height}, {324, places, 4, count}, {325, lengths, 4, count}});
    else
        fields.insert(fields.end(),
                      {{278, form.height}, {273, places, 4, count}, {279, lengths, 4, count}});
    Bytes body;
    unsigned place = palette + 2 * colors;
    for (const Bytes& block : blocks)
        put(body, place, 4), place += static_cast<unsigned>(block.size());
    for (const Bytes& block : blocks) put(body, static_cast<unsigned>(block.size()), 4);
    // A palette of inverted grey, a bit greener and bluer.
    for (unsigned i = 0; i < colors; ++i)
        put(body, (255 - i % (colors / 3)) << 8 ^ (i / (colors / 3) << 8), 2);
    for (const Bytes& block : blocks) body = joined(body, block);
    return tiff(form.isBig, fields, body);
}

std::vector<std::uint32_t> texelsOf(const TiffForm& form) {
    std::vector<std::uint32_t> texels;
    for (unsigned y = kRows; y-- > 0;)
        for (unsigned x = 0; x < kColumns; ++x) {
            const auto at = [&](unsigned channel) -> std::uint32_t {
                const unsigned value = channelAt(x, y, channel, form.bits);
                return form.bits == 16 ? value >> 8 : value;
            };
            const unsigned colors = form.photometric == 2 ? 3 : 1;
            const std::uint32_t alpha = form.samples > colors ? at(colors) : 255;
            std::uint32_t color = at(0) << 16 | at(1) << 8 | at(2);
            if (colors == 1)
                color = at(0) * (form.bits < 8 ? 255 / ((1U << form.bits) - 1) : 1) * 0x010101;
            if (form.photometric == 3)
                color = (255 - at(0)) << 16 | ((255 - at(0)) ^ 1) << 8 | ((255 - at(0)) ^ 2);
            texels.push_back(alpha << 24 | color);
        }
    return texels;
}

TEST(TiffPicture, ReadsTilesPlanesAndWhatIsDeflated) {
    std::vector<TiffForm> forms;
    for (const bool isBig : {false, true})
        for (const bool isTiled : {false, true})
            for (const unsigned planes : {1U, 2U})
                for (const unsigned bits : {8U, 16U})
                    for (const unsigned samples : {3U, 4U})
                        for (const unsigned predictor : {1U, 2U})
                            forms.push_back({.isBig = isBig,
                                             .isTiled = isTiled,
                                             .bits = bits,
                                             .samples = samples,
                                             .planes = planes,
                                             .compression = 8,
                                             .predictor = predictor});
    for (const unsigned bits : {1U, 2U, 4U, 8U})
        for (const unsigned photometric : {1U, 3U})
            forms.push_back(
                {.bits = bits, .photometric = photometric, .samples = 1, .compression = 32946});
    forms.push_back({.photometric = 1, .samples = 2});
    forms.push_back({.width = 16, .height = 4});
    for (const TiffForm& form : forms) {
        SCOPED_TRACE(testing::Message()
                     << form.isBig << form.isTiled << " bits " << form.bits << " photometric "
                     << form.photometric << " samples " << form.samples << " planes " << form.planes
                     << " compression " << form.compression << " predictor " << form.predictor);
        const Bytes bytes = tiffOf(form);
        EXPECT_EQ(readPicture(bytes).texels, texelsOf(form));
        // Of what is deflated the end mark and the sum may be missing.
        const std::size_t behind = form.compression == 1 ? 0 : 5;
        for (std::size_t length = 8; length + behind < bytes.size(); ++length)
            EXPECT_EQ(faultOf(Bytes(bytes.begin(), bytes.begin() + std::ptrdiff_t(length))),
                      PictureFault::kCutShort)
                << length;
    }
}

TEST(TiffPicture, RefusesBlocksThatShareTooMuch) {
    for (const unsigned planes : {1U, 2U}) {
        const TiffForm form{
            .isTiled = false, .samples = 4, .planes = planes, .compression = 32773, .height = 1};
        Bytes bytes = tiffOf(form);
        // Each of the five or twenty is all of the file, whose first byte begins many others.
        const auto places = bytes.begin() + behind(fieldsOf(form));
        const std::ptrdiff_t size = 4 * 5 * (planes == 1 ? 1 : 4);
        std::fill(places, places + size, std::uint8_t{0});
        std::fill(places + size, places + 2 * size, std::uint8_t{255});
        EXPECT_EQ(faultOf(bytes),
                  planes == 1 ? PictureFault::kUnreadable : PictureFault::kTooLarge);
    }
}

TEST(TiffPicture, RefusesDeflatedTilesOfAnotherSize) {
    const Fields one = {{256, 2}, {257, 2}, {258, 8}, {259, 8}};
    EXPECT_EQ(readPicture(tiff(false, one, deflated({1, 2, 3, 4}))).texels.size(), 4U);
    EXPECT_EQ(faultOf(tiff(false, one, deflated({1, 2, 3}))), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(tiff(false, one, deflated({1, 2, 3, 4, 5}))), PictureFault::kCutShort);
    EXPECT_EQ(faultOf(tiff(false, one, {9, 9, 9, 9, 9, 9, 9, 9})), PictureFault::kCutShort);
}

TEST(TextureUseTest, IsWhatTheFileBesideAPictureSays) {
    using Wrap = TextureUse::Wrap;
    using Sizes = TextureUse::Sizes;
    const auto file = [](std::initializer_list<std::pair<std::size_t, std::uint8_t>> words) {
        Bytes bytes(4 * 18);
        bytes[7 * 4 + 3] = 6;  // smooth from afar and from near
        bytes[8 * 4 + 3] = 1;
        for (const auto& [index, value] : words) bytes[index * 4 + 3] = value;
        return bytes;
    };
    EXPECT_TRUE(readTextureUse({}).isPlain());
    EXPECT_TRUE(readTextureUse(file({})).isPlain());
    EXPECT_TRUE(readTextureUse(file({{8, 0}})).isPointedNear);
    const TextureUse both = readTextureUse(file({{9, 4}, {10, 3}, {11, 1}}));
    EXPECT_EQ(both.wrapU, Wrap::kMirror) << "as both do";
    EXPECT_EQ(both.wrapV, Wrap::kClamp) << "as it says itself";
    EXPECT_EQ(readTextureUse(file({{9, 1}, {10, 4}})).wrapU, Wrap::kMirror);
    EXPECT_TRUE(readTextureUse(file({{16, 1}})).isStencil);
    const auto fromAfar = [&](std::uint8_t filter) {
        const TextureUse use = readTextureUse(file({{7, filter}}));
        return std::pair(use.sizes, use.isPointedFar);
    };
    EXPECT_EQ(fromAfar(0), std::pair(Sizes::kLargest, true));
    EXPECT_EQ(fromAfar(1), std::pair(Sizes::kLargest, false));
    EXPECT_EQ(fromAfar(3), std::pair(Sizes::kNearest, true));
    EXPECT_EQ(fromAfar(4), std::pair(Sizes::kMixed, true));
    EXPECT_EQ(fromAfar(5), std::pair(Sizes::kNearest, false));
    EXPECT_EQ(fromAfar(6), std::pair(Sizes::kMixed, false));
    EXPECT_EQ(fromAfar(7), std::pair(Sizes::kMixed, false));
    EXPECT_EQ(fromAfar(8), std::pair(Sizes::kLargest, false));
    EXPECT_EQ(fromAfar(12), std::pair(Sizes::kLargest, false));
    EXPECT_EQ(fromAfar(13), std::pair(Sizes::kMixed, false));
    EXPECT_EQ(readTextureUse(file({{15, 2}})).color, TextureUse::Color::kDecal);

    const Picture picture{4, 1, {0xFF000000, 0xFF404040, 0xFF808080, 0xFFC0C0C0}};
    TextureUse use;
    const Texture texture(picture);
    const Texture::Level level = texture.level(0);
    EXPECT_EQ(level.at(5 * 256, 0, use, false), 0xFF404040);
    const Texture uneven({2,
                          4,
                          {0xFF000001, 0xFF000032, 0xFF000064, 0xFF000096, 0xFF0000C8, 0xFF0000FA,
                           0xFF000046, 0xFF000014}});
    for (int v = -300; v < 1300; v += 70)
        for (int u = -300; u < 900; u += 70) {
            const std::uint32_t smooth = uneven.level(0).at(u, v);
            EXPECT_EQ(smooth, uneven.level(0).at(u, v, use, false)) << u << ' ' << v;
            EXPECT_EQ(smooth, uneven.level(0).at(u + 512, v - 1024)) << u << ' ' << v;
        }
    use.wrapU = Wrap::kClamp;
    EXPECT_EQ(level.at(-300, 0, use, false), 0xFF000000);
    EXPECT_EQ(level.at(9 * 256, 0, use, false), 0xFFC0C0C0);
    EXPECT_EQ(level.at(256 + 120, 0, use, true), 0xFF404040);
    EXPECT_EQ(level.at(256 + 130, 0, use, true), 0xFF808080);
    use.wrapU = Wrap::kMirror;
    for (const auto& [place, expected] : {std::pair{0, 0xFF000000U},
                                          {3, 0xFFC0C0C0},
                                          {4, 0xFFC0C0C0},
                                          {6, 0xFF404040},
                                          {7, 0xFF000000},
                                          {8, 0xFF000000},
                                          {-1, 0xFF000000},
                                          {-3, 0xFF808080}})
        EXPECT_EQ(level.at(place * 256, 0, use, true), expected) << place;
    use.isStencil = true;
    const Texture stencil(picture, Texture::kMostBits, use);
    EXPECT_TRUE(stencil.hasAlpha());
    EXPECT_EQ(stencil.level(0).at(2 * 256, 0), 0x80FFFFFF);
    const Picture colored{1, 1, {0xFF102030}};
    EXPECT_EQ(Texture(colored, Texture::kMostBits, use).level(0).at(0, 0), 0xFF102030)
        << "grey only";
}

// White leaves before what a painter left black there, or white before what is red.
TEST(TextureTest, WhatCannotBeSeenDoesNotColorTheRimOfWhatCan) {
    for (const std::uint32_t clear : {0x00000000U, 0x00FF0000U}) {
        Picture picture{8, 8, {}};
        for (int i = 0; i < 64; ++i)
            picture.texels.push_back(i % 8 < 3 && i / 8 < 5 ? 0xFFFFFFFF : clear);
        const Texture texture(picture);
        for (int level = 0; level < 3; ++level)
            for (int y = 0; y < 8 * 256; y += 96)
                for (int x = 0; x < 8 * 256; x += 96) {
                    const std::uint32_t seen = texture.level(level).at(x >> level, y >> level);
                    ASSERT_TRUE(seen >> 24 <= 4 || (seen & 0xFF) >= 0xFC)
                        << level << ": " << x << ", " << y;
                }
    }
}

}  // namespace
