#include <render/texturestore.h>

#include "../support/temporaryfolder.h"

#include <base/paths.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <filesystem>

using namespace render;

namespace {

/// A picture of one grey texel.
std::vector<std::uint8_t> grey(std::uint8_t value) {
    std::vector<std::uint8_t> bytes(512);
    const std::uint8_t head[] = {0x01, 0xDA, 0, 1, 0, 1, 0, 1};
    std::copy(std::begin(head), std::end(head), bytes.begin());
    bytes.push_back(value);
    return bytes;
}

std::uint32_t shade(const Texture* texture) {
    return texture ? texture->level(0).at(0, 0) & 0xFF : 0;
}

TEST(TextureStoreTest, FindsPicturesWhereTheirNamesSay) {
    const TemporaryFolder folder;
    const std::string whole = folder.write(u8"草地 grass.rgb", grey(1));
    std::filesystem::create_directory(folder.path() / "below");
    folder.write(u8"below/wall.rgb", grey(2));
    folder.write(u8"roof.rgb", grey(3));
    TextureStore store;
    EXPECT_EQ(shade(store.find(whole)), 1u) << "by its path";
    EXPECT_EQ(store.find("roof.rgb"), nullptr);
    EXPECT_THAT(store.takeFailures(), testing::ElementsAre("roof.rgb：没有这个图片文件"));
    store.files().addFolder("");
    store.files().addFolder(folder.file(""));
    EXPECT_EQ(shade(store.find("roof.rgb")), 3u) << "a folder that became known";
    EXPECT_EQ(shade(store.find("below\\wall.rgb")), 2u);
    EXPECT_EQ(shade(store.find("C:/of/another/computer/roof.rgb")), 3u);
    EXPECT_EQ(store.find("below"), nullptr) << "a folder is no picture";
    EXPECT_EQ(store.find(""), nullptr);
    EXPECT_THAT(store.takeFailures(), testing::ElementsAre("below：没有这个图片文件"));
}

TEST(TextureStoreTest, FindsPicturesWithoutRegardToCase) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "Textures");
    folder.write(u8"Textures/GRASS.Rgb", grey(1));
    folder.write(u8"Roof.rgb", grey(2));
    folder.write(u8"roof.RGB", grey(3));
    TextureStore store;
    store.files().addFolder(folder.file(""));
    EXPECT_EQ(shade(store.find("textures\\grass.rgb")), 1u);
    EXPECT_EQ(shade(store.find("D:/maps/ROOF.rgb")) & 2u, 2u) << "one of the two";
    EXPECT_EQ(store.find("textures/../none.rgb"), nullptr);
}

#ifndef _WIN32
// On this system //a/b is /a/b, so the first folder of the path stands for another computer.
TEST(TextureStoreTest, FollowsNamesOnlyToComputersOfTheUsersOwnFolders) {
    const TemporaryFolder folder;
    const std::string wall = "/" + folder.write(u8"wall.rgb", grey(1));
    const std::string host = wall.substr(2, wall.find('/', 2) - 2);
    const std::string rest = wall.substr(2 + host.size());
    std::string backslashes = wall;
    std::ranges::replace(backslashes, '/', '\\');
    for (const char* const known : {"", "//other/share", "//./", "\\\\?\\UNC\\elsewhere"}) {
        TextureStore store;
        store.files().addFolder(known);
        EXPECT_EQ(store.find(wall), nullptr) << known;
        EXPECT_EQ(store.find(backslashes), nullptr) << known;
        EXPECT_EQ(store.find("//./" + wall.substr(2)), nullptr) << known;
        EXPECT_EQ(store.find("/" + wall), nullptr) << known;
    }
    TextureStore store;
    store.files().addFolder("\\\\" + host + "\\share");
    EXPECT_EQ(shade(store.find(backslashes)), 1u);
    EXPECT_EQ(shade(store.find(wall)), 1u);
    EXPECT_EQ(store.find("//./" + wall.substr(2)), nullptr);
    EXPECT_EQ(store.find("//" + host + "@80" + rest), nullptr);
    TextureStore beside;
    beside.files().addFolder(folder.file(""));
    EXPECT_EQ(shade(beside.find("\\\\elsewhere\\share\\wall.rgb")), 1u) << "beside the file";
}
#endif

// Two files next to pictures of the same name, imported in turn.
TEST(TextureStoreTest, LooksFirstInTheFolderThatWasNamedLast) {
    const TemporaryFolder folder;
    std::filesystem::create_directory(folder.path() / "1");
    std::filesystem::create_directory(folder.path() / "2");
    folder.write(u8"1/roof.rgb", grey(1));
    folder.write(u8"2/roof.rgb", grey(2));
    TextureStore store;
    for (const std::uint32_t import : {1u, 2u, 1u, 1u, 2u}) {
        store.clear();
        store.files().addFolder(folder.file(std::to_string(import).c_str()));
        EXPECT_EQ(shade(store.find("roof.rgb")), import);
    }
}

TEST(TextureStoreTest, SaysOnceWhatCannotBeShown) {
    const TemporaryFolder folder;
    const std::string path = folder.write(u8"text.rgb", std::vector<std::uint8_t>(600, 'x'));
    TextureStore store;
    for (int i = 0; i < 3; ++i) EXPECT_EQ(store.find(path), nullptr);
    EXPECT_THAT(store.takeFailures(), testing::ElementsAre(path + "：不是已知格式的图片"));
    EXPECT_THAT(store.takeFailures(), testing::IsEmpty());
    // From files in several folders.
    for (const char* const from : {"", "a", "b"})
        for (int i = 0; i < 30; ++i) store.find("missing" + std::to_string(i), from);
    const std::vector<std::string> many = store.takeFailures();
    EXPECT_EQ(many.size(), 10u);
    EXPECT_EQ(many[8], "missing8：没有这个图片文件");
    EXPECT_EQ(many[9], "另有 21 个图片无法显示");
    store.clear();
    folder.write(u8"text.rgb", grey(9));
    EXPECT_EQ(shade(store.find(path)), 9u) << "a new scene looks again";
}

TEST(TextureStoreTest, NoticesWhatHasChangedOnDisk) {
    const TemporaryFolder folder;
    TextureStore store;
    store.files().addFolder(folder.file(""));
    const std::string wall = folder.write(u8"wall.rgb", grey(1));
    folder.write(u8"roof.rgb", grey(2));
    EXPECT_EQ(shade(store.find("wall.rgb")), 1u);
    const Texture* const roof = store.find("roof.rgb");
    EXPECT_EQ(store.find("door.rgb"), nullptr);
    EXPECT_EQ(store.takeFailures().size(), 1u);
    EXPECT_FALSE(store.noticeChanges());
    const auto later = [&](const char8_t* name, int hours) {
        const auto path = folder.path() / name;
        std::filesystem::last_write_time(
            path, std::filesystem::last_write_time(path) + std::chrono::hours(hours));
    };
    folder.write(u8"wall.rgb", grey(3));
    later(u8"wall.rgb", 1);
    EXPECT_TRUE(store.noticeChanges());
    EXPECT_EQ(shade(store.find("wall.rgb")), 3u);
    EXPECT_EQ(store.find("roof.rgb"), roof) << "what has not changed stays";
    folder.write(u8"door.rgb", grey(4));
    EXPECT_TRUE(store.noticeChanges()) << "one that was missing";
    EXPECT_EQ(shade(store.find("door.rgb")), 4u);
    folder.write(u8"roof.rgb.attr", std::vector<std::uint8_t>(64));
    EXPECT_TRUE(store.noticeChanges()) << "how it is used";
    EXPECT_TRUE(store.find("roof.rgb")->use().isPointedNear);
    std::filesystem::remove(base::pathFrom(wall));
    EXPECT_TRUE(store.noticeChanges());
    EXPECT_EQ(store.find("wall.rgb"), nullptr);
    EXPECT_EQ(store.takeFailures().size(), 1u);
    EXPECT_FALSE(store.noticeChanges());
}

}  // namespace
