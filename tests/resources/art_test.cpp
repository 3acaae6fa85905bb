#include <gtest/gtest.h>

#include <draw/art.h>
#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <vector>

namespace {

struct Pixel {
    int red, green, blue;
    bool operator==(const Pixel&) const = default;
    int lightness() const { return (30 * red + 59 * green + 11 * blue) / 100; }
};

constexpr Pixel kWhite{255, 255, 255};
constexpr Pixel kMagenta{255, 0, 255};

// A picture read back from the bytes of its file, rows from the top.
struct Bitmap {
    int width = 0;
    int height = 0;
    std::vector<Pixel> pixels;

    const Pixel& at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
    bool contains(int x, int y) const { return x >= 0 && y >= 0 && x < width && y < height; }
};

Bitmap readBitmap(const std::vector<std::uint8_t>& file) {
    const auto word = [&](std::size_t at) { return file[at] | file[at + 1] << 8; };
    Bitmap result{word(18), word(22), {}};
    EXPECT_EQ(word(28), 24);
    const int stride = (result.width * 3 + 3) / 4 * 4;
    EXPECT_EQ(file.size(), static_cast<std::size_t>(54 + stride * result.height));
    for (int y = result.height - 1; y >= 0; --y) {
        for (int x = 0; x < result.width; ++x) {
            const auto at = static_cast<std::size_t>(54 + y * stride + x * 3);
            result.pixels.push_back({file[at + 2], file[at + 1], file[at]});
        }
    }
    return result;
}

const std::vector<draw::ArtFile>& drawn() {
    static const auto files = draw::drawAll();
    return files;
}

std::map<std::string, Bitmap> bitmapsOfHeight(int height) {
    std::map<std::string, Bitmap> found;
    for (const draw::ArtFile& file : drawn()) {
        if (!file.name.ends_with(".bmp")) continue;
        const Bitmap bitmap = readBitmap(file.bytes);
        if (bitmap.height == height) found.emplace(file.name, bitmap);
    }
    return found;
}

const std::map<std::string, Bitmap>& treeIcons() {
    static const auto icons = bitmapsOfHeight(15);
    return icons;
}

// How many pixels differ clearly in lightness.
int difference(const Bitmap& first, const Bitmap& second) {
    int count = 0;
    for (std::size_t i = 0; i < first.pixels.size(); ++i) {
        count += std::abs(first.pixels[i].lightness() - second.pixels[i].lightness()) > 64;
    }
    return count;
}

TEST(Art, CommittedFilesAreWhatTheProgramDraws) {
    for (const draw::ArtFile& file : drawn()) {
        std::ifstream in(std::string(BITMAP_FOLDER "/") + file.name, std::ios::binary);
        ASSERT_TRUE(in) << file.name;
        const std::vector<std::uint8_t> committed{std::istreambuf_iterator<char>(in), {}};
        EXPECT_TRUE(committed == file.bytes) << file.name << " is stale: build the target redraw";
    }
}

// White is cut out of an icon, so a nearly white pixel at the cut shows as a bright fringe on the
// tree's grey.
TEST(Art, TreeIconsHaveClearSurroundingsWithoutAFringe) {
    EXPECT_EQ(treeIcons().size(), 19U);
    for (const auto& [name, icon] : treeIcons()) {
        SCOPED_TRACE(name);
        const auto& drawn = icon;  // clang captures no structured binding
        EXPECT_GT(std::count(icon.pixels.begin(), icon.pixels.end(), kWhite), 20);
        for (int y = 0; y < icon.height; ++y) {
            for (int x = 0; x < icon.width; ++x) {
                if (icon.at(x, y) == kWhite) continue;
                constexpr int kBesides[][2] = {{1, 0}, {-1, 0}, {0, 1}, {0, -1}};
                const bool atTheCut =
                    std::any_of(std::begin(kBesides), std::end(kBesides), [&](const auto& step) {
                        const int nearX = x + step[0];
                        const int nearY = y + step[1];
                        return drawn.contains(nearX, nearY) && drawn.at(nearX, nearY) == kWhite;
                    });
                if (!atTheCut) continue;
                EXPECT_LT(icon.at(x, y).lightness(), 0xE1) << x << ", " << y;
            }
        }
    }
}

// Seen in greys, any two icons differ clearly over 15 % of their area or more.
TEST(Art, TreeIconsDifferByShape) {
    for (auto first = treeIcons().begin(); first != treeIcons().end(); ++first) {
        for (auto second = std::next(first); second != treeIcons().end(); ++second) {
            EXPECT_GE(difference(first->second, second->second), 16 * 15 * 15 / 100)
                << first->first << " and " << second->first;
        }
    }
}

// The larger icons are the same ones in the same order: brought down to the small size each is more
// like its own than like any other.
TEST(Art, LargerTreeIconsAreTheSame) {
    constexpr const char* kOrder[] = {"group",
                                      "object",
                                      "lod",
                                      "switch",
                                      "dof",
                                      "xref",
                                      "bsp",
                                      "clip",
                                      "light_point",
                                      "light_source",
                                      "header",
                                      "scene_root",
                                      "omni_light",
                                      "spot_light",
                                      "face",
                                      "instance_definition",
                                      "instance_reference",
                                      "plain",
                                      "overlay"};
    for (const auto& [height, width] : {std::pair{19, 20}, {23, 24}, {30, 32}}) {
        const auto strips = bitmapsOfHeight(height);
        ASSERT_EQ(strips.size(), 1U);
        const Bitmap& strip = strips.begin()->second;
        ASSERT_EQ(strip.width, 19 * width);
        for (int i = 0; i < 19; ++i) {
            Bitmap small{16, 15, {}};
            for (int y = 0; y < 15; ++y)
                for (int x = 0; x < 16; ++x)
                    small.pixels.push_back(
                        strip.at(i * width + (2 * x + 1) * width / 32, (2 * y + 1) * width / 32));
            const auto nearest =
                std::min_element(treeIcons().begin(), treeIcons().end(), [&](auto& a, auto& b) {
                    return difference(small, a.second) < difference(small, b.second);
                });
            EXPECT_EQ(nearest->first, std::string(kOrder[i]) + ".bmp") << width;
        }
    }
}

// The user must see at a glance whether a button can be pressed, is pressed or has the keyboard.
TEST(Art, ButtonStatesDifferAndLeaveTheFaceClear) {
    const auto symbols = bitmapsOfHeight(16);
    EXPECT_EQ(symbols.size(), 8U * 4U);
    for (const auto& [name, up] : symbols) {
        if (!name.ends_with("_u.bmp")) continue;
        SCOPED_TRACE(name);
        const std::string stem = name.substr(0, name.size() - 5);
        const Bitmap& down = symbols.at(stem + "d.bmp");
        const Bitmap& focused = symbols.at(stem + "f.bmp");
        const Bitmap& disabled = symbols.at(stem + "x.bmp");
        EXPECT_EQ(up.at(15, 0), kMagenta);
        EXPECT_GT(std::count(up.pixels.begin(), up.pixels.end(), kMagenta), 60);
        for (const Bitmap* other : {&down, &focused, &disabled}) {
            EXPECT_GE(difference(up, *other), 30);
        }
        EXPECT_TRUE(
            std::all_of(disabled.pixels.begin(), disabled.pixels.end(), [](const Pixel& pixel) {
                return pixel == kMagenta || (pixel.red == pixel.green && pixel.green == pixel.blue);
            }));
    }
}

}  // namespace
