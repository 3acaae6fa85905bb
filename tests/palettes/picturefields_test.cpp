// The attribute files beside pictures.
#include "../support/spokenlanguage.h"
#include "../support/temporaryfolder.h"

#include <base/file.h>
#include <base/paths.h>
#include <palettes/palette.h>
#include <palettes/picturefields.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

using palettes::setPictureField;

namespace {

class PictureFields : public testing::Test {
protected:
    void write(const std::string& bytes) {
        std::ofstream(base::pathFrom(picture + ".attr"), std::ios::binary) << bytes;
    }
    std::string written() {
        std::string bytes;
        EXPECT_FALSE(base::readFile(picture + ".attr", bytes));
        return bytes;
    }
    std::vector<std::string> values() {
        std::vector<std::string> all;
        for (const palettes::PictureField& field : palettes::pictureFields(picture))
            all.push_back(field.value);
        return all;
    }
    /// Why a field is not set; nothing is written then.
    std::string why(const char* name, const char* value) {
        const std::string before = written();
        std::string reason = "done";
        try {
            setPictureField(picture, {}, name, value);
        } catch (const palettes::Refusal& refusal) {
            reason = refusal.what();
        }
        EXPECT_EQ(written(), before);
        return reason;
    }

    const SpokenLanguage english{KILN_LANGUAGE_ENGLISH};
    const TemporaryFolder folder{u8"tessera-attr-"};
    const std::string picture = folder.file("bark.rgb");
};

}  // namespace

TEST_F(PictureFields, AreThoseOfTheFileAndChangeAlone) {
    std::string bytes;
    for (char word = 0; word < 20; ++word) bytes.append({'\0', '\0', '\0', word});
    bytes.append("end");
    write(bytes);
    EXPECT_THAT(values(), testing::ElementsAre("7: none", "8: bilinear, less or equal", "9", "10",
                                               "11", "15"));
    setPictureField(picture, {}, "wrapU", "3: as wrap says");
    setPictureField(picture, {}, "environment", "2");
    bytes[4 * 10 + 3] = 3;
    bytes[4 * 15 + 3] = 2;
    EXPECT_EQ(written(), bytes);
    EXPECT_EQ(why("wrapU", "2"), "the field wrapU cannot be 2");
    EXPECT_EQ(why("wrapU", "1x"), "the field wrapU cannot be 1x");
    EXPECT_EQ(why("wrapU", ""), "the field wrapU cannot be ");
    EXPECT_EQ(why("color", "1"), "there is no field color");
    write(bytes.substr(0, 4 * 9 + 2));
    EXPECT_THAT(values(),
                testing::ElementsAre("7: none", "8: bilinear, less or equal", "", "", "", ""));
    EXPECT_EQ(why("wrap", "1"), "the .attr file beside the picture ends before this field");
}

TEST_F(PictureFields, AreWrittenToANewFile) {
    EXPECT_THAT(values(), testing::ElementsAre("", "", "", "", "", ""));
    setPictureField(picture, {256, 2}, "wrapV", "1: clamp");
    const std::string bytes = written();
    EXPECT_EQ(bytes.size(), 64U);
    EXPECT_EQ(bytes.substr(0, 8), std::string("\0\0\1\0\0\0\0\2", 8));
    EXPECT_THAT(values(), testing::ElementsAre("6: mipmap trilinear", "1: bilinear", "0: repeat",
                                               "3: as wrap says", "1: clamp", "0: modulate"));
}
