#include "../support/spokenlanguage.h"
#include "fltbytes.h"

#include <gtest/gtest.h>
#include <interchange/fileindex.h>
#include <interchange/import.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>

#include <string>
#include <vector>

using interchange::FileIndex;
using interchange::readFileIndex;

namespace {

/// The tree as "1(2,2(5,5))", by kind.
std::string treeOf(const FileIndex& index, std::uint32_t node = 0) {
    std::string children;
    for (std::uint32_t i = 0; i < index.nodes.size(); ++i) {
        if (index.nodes[i].parent != node) continue;
        if (!children.empty()) children += ',';
        children += treeOf(index, i);
    }
    const std::string kind = std::to_string(index.nodes[node].kind);
    return children.empty() ? kind : kind + "(" + children + ")";
}

FltFileError refusalOf(std::span<const std::uint8_t> bytes) {
    try {
        readFileIndex(bytes);
    } catch (const FltFileError& error) {
        return error;
    }
    ADD_FAILURE() << "the file was accepted";
    return {"", 0};
}

const std::initializer_list<std::array<double, 3>> kSquare = {
    {0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}};

FltBytes fileWithSubfaces() {
    FltBytes file;
    file.palette(kSquare)
        .push()
        .face("f")
        .record(kFltPushSubface)
        .polygon("s", {0, 1, 2})
        .record(kFltPopSubface);
    file.push().list({0, 1, 2, 3}).pop().face("g").pop();
    return file;
}

FltBytes fileWithExtension() {
    FltBytes file;
    file.push()
        .group("a")
        .record(kFltPushExtension)
        .record(kFltExtensionAttr)
        .group("x")
        .push()
        .object("y")
        .pop()
        .record(kFltPopExtension);
    file.record(kFltPushAttribute)
        .record(kFltAdaptiveAttribute)
        .record(kFltPopAttribute)
        .push()
        .object("b")
        .pop()
        .pop();
    return file;
}

FltBytes fileWithSound() {
    FltBytes file;
    file.push().group("a").push().record(kFltSound, Bytes().zeros(60)).push().object("b").pop();
    file.object("c").pop().pop();
    return file;
}

}  // namespace

TEST(FileIndex, FollowsEverySortOfLevel) {
    const struct {
        const char* name;
        FltBytes file;
        std::string tree;
    } cases[] = {
        {"header alone", FltBytes(), "1"},
        {"without levels", FltBytes().group("a").group("b"), "1(2,2)"},
        {"levels",
         FltBytes().push().group("a").push().object("b").object("c").pop().group("d").pop(),
         "1(2(4,4),2)"},
        {"level without a node before it", FltBytes().push().push().group("a").pop().pop(), "1(2)"},
        {"two levels below one node",
         FltBytes().push().group("a").push().object("b").pop().push().object("c").pop().pop(),
         "1(2(4,4))"},
        {"subfaces", fileWithSubfaces(), "1(5(5),5)"},
        {"extension and attribute levels hold no nodes", fileWithExtension(), "1(2(4))"},
        {"nodes of kinds without a class", fileWithSound(), "1(2(91(4),4))"},
    };
    for (const auto& test : cases)
        EXPECT_EQ(treeOf(readFileIndex(test.file)), test.tree) << test.name;
}

TEST(FileIndex, CountsWhatNobodyKnows) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    FltBytes file;
    file.push()
        .group("a")
        .record(300)
        .record(3, Bytes().zeros(8))
        .record(0xFFFF)
        .record(kFltSound)
        .pop();
    const FileIndex index = readFileIndex(file);
    EXPECT_EQ(index.unknownRecords, 3U);
    EXPECT_EQ(interchange::summaryOf(index),
              "imported 3 nodes (1 group, 1 header, 1 node of another kind), "
              "kept 3 unknown records");
}

TEST(FileIndex, TellsWhichNodeARecordIsAbout) {
    FltBytes file;
    file.comment("about the file").push().group("a").record(300).comment("first").longId("long");
    file.record(kFltPushExtension)
        .comment("about the extension")
        .group("x")
        .record(kFltPopExtension);
    file.push().group("b").comment("other").pop().comment("second").pop();
    const FileIndex index = readFileIndex(file);
    std::vector<std::vector<int>> opcodes;
    for (const auto& node : index.nodes) {
        opcodes.emplace_back();
        for (const auto& entry : index.attachedTo(node)) {
            opcodes.back().push_back(index.recordAt(entry.record).opcode());
        }
    }
    EXPECT_EQ(opcodes, (std::vector<std::vector<int>>{
                           {kFltComment, kFltPushLevel, kFltPopLevel},
                           {300, kFltComment, kFltLongId, kFltPushExtension, kFltComment, kFltGroup,
                            kFltPopExtension, kFltPushLevel, kFltPopLevel, kFltComment},
                           {kFltComment}}));
    EXPECT_NE(index.nodes[1].longId, 0U);
    EXPECT_EQ(index.nodes[2].longId, 0U);
}

TEST(FileIndex, FindsVerticesOfEveryKindAndLength) {
    FltBytes file;
    const auto palette = static_cast<std::uint32_t>(file.size());
    file.record(kFltVertexPalette, Bytes().u32(0));
    std::vector<std::uint32_t> offsets;
    // Each kind at the lengths that different revisions write.
    const std::pair<unsigned, std::size_t> vertices[] = {{68, 36}, {68, 40}, {69, 52}, {69, 56},
                                                         {70, 60}, {70, 64}, {71, 44}, {71, 48}};
    for (const auto& [opcode, length] : vertices) {
        offsets.push_back(static_cast<std::uint32_t>(file.size()));
        file.record(opcode, Bytes().zeros(length - 4));
    }
    Bytes list, more, morph;
    for (std::size_t i = 0; i < 6; ++i) list.u32(offsets[i] - palette);
    for (std::size_t i = 6; i < 8; ++i) more.u32(offsets[i] - palette);
    for (const std::uint32_t offset : {offsets[2], offsets[0]}) {
        morph.u32(offset - palette).u32(offsets[7] - palette);
    }
    file.push()
        .face("f")
        .push()
        .record(kFltVertexList, list)
        .record(kFltContinuation, more)
        .record(kFltVertexList, list)
        .pop();
    file.face("m").push().record(kFltMorphVertexList, morph).pop().pop();

    const FileIndex index = readFileIndex(file);
    const auto cornersOf = [&](std::size_t node) {
        const auto first = index.corners.begin() + index.nodes[node].firstCorner;
        return std::vector<std::uint32_t>(first, first + index.nodes[node].cornerCount);
    };
    EXPECT_EQ(cornersOf(1), offsets) << "the list, its continuation, and not a second list";
    EXPECT_EQ(cornersOf(2), (std::vector<std::uint32_t>{offsets[2], offsets[0]}));
}

TEST(FileIndex, RefusesWhatMakesNoSense) {
    const SpokenLanguage english(KILN_LANGUAGE_ENGLISH);
    constexpr std::size_t kEnd = FltBytes::kHeaderLength;
    constexpr std::size_t kList = kEnd + 8 + 4 * FltBytes::kVertexLength + 84;
    const auto cut = [](FltBytes file, std::size_t left) {
        file.vector().resize(left);
        return file;
    };
    FltBytes shortLength = FltBytes().group("a");
    shortLength.vector()[kEnd + 3] = 3;
    FltBytes notFlt;
    notFlt.vector()[1] = 7;
    const auto switchOf = [](std::uint32_t masks, std::uint32_t words) {
        return FltBytes().record(kFltSwitch,
                                 Bytes().field("s", 8).zeros(8).u32(masks).u32(words).u32(1));
    };
    const struct {
        const char* name;
        FltBytes file;
        std::size_t offset;
        std::string text;
    } cases[] = {
        {"empty", cut(FltBytes(), 0), 0, "empty"},
        {"another sort of file", notFlt, 0, "not an OpenFlight file"},
        {"header cut short", cut(FltBytes(), 12), 0, "0"},
        {"revision before the format", FltBytes("db", 1300), 12,
         "offset 12: a format revision of 1300"},
        {"revision that is no revision", FltBytes("db", 0x80000000), 12, "-2147483648"},
        {"cut in a record", cut(FltBytes().group("a"), kEnd + 20), kEnd, "328"},
        {"cut in a record's first bytes", cut(FltBytes().push().group("a"), kEnd + 7), kEnd + 4,
         "332"},
        {"cut between two records", cut(FltBytes().push().group("a").pop(), kEnd + 36), kEnd + 36,
         "one level still open, the innermost since 328"},
        {"record shorter than its own head", shortLength, kEnd, "328"},
        {"pop without push", FltBytes().group("a").pop(), kEnd + 32,
         "FLT_POP_LEVEL without a level"},
        {"pop of another sort", FltBytes().push().record(kFltPopSubface), kEnd + 4,
         "opened at 328"},
        {"vertex list without a palette", FltBytes().polygon("f", {0}), kEnd + 84,
         "palette offset 8,"},
        {"vertex beyond the palette", FltBytes().palette(kSquare).polygon("f", {0, 4}), kList,
         "palette offset 168,"},
        {"vertex list into a record's middle",
         FltBytes().palette(kSquare).face("f").push().record(kFltVertexList, Bytes().u32(12)),
         kList, "palette offset 12,"},
        {"switch with more masks than words", switchOf(2, 1), kEnd, "2 masks"},
        {"switch with masks beyond counting", switchOf(0x7FFFFFFF, 0x7FFFFFFF), kEnd, "2147483647"},
        {"switch with masks below nothing", switchOf(0xFFFFFFFF, 0xFFFFFFFF), kEnd, "-1"},
    };
    for (const auto& test : cases) {
        const FltFileError error = refusalOf(test.file);
        EXPECT_EQ(error.offset(), test.offset) << test.name << ": " << error.what();
        EXPECT_NE(std::string(error.what()).find(test.text), std::string::npos)
            << test.name << ": " << error.what();
    }
}

TEST(FileIndex, TellsCutFilesFromDamagedOnes) {
    using Cause = FltFileError::Cause;
    const auto cut = [](FltBytes file, std::size_t bytes) {
        file.vector().resize(file.size() - bytes);
        return file;
    };
    FltBytes shortLength = FltBytes().group("a");
    shortLength.vector()[FltBytes::kHeaderLength + 3] = 3;
    const struct {
        const char* name;
        FltBytes file;
        Cause cause;
    } cases[] = {
        {"in a record", cut(FltBytes().group("a"), 1), Cause::kTruncated},
        {"in a record's first bytes", cut(FltBytes().push().group("a"), 30), Cause::kTruncated},
        {"between two records", FltBytes().push().group("a"), Cause::kTruncated},
        {"record shorter than its own head", shortLength, Cause::kDamaged},
        {"pop without push", FltBytes().pop(), Cause::kDamaged},
        {"revision before the format", FltBytes("db", 1300), Cause::kUnsupportedRevision},
    };
    for (const auto& test : cases) EXPECT_EQ(refusalOf(test.file).cause(), test.cause) << test.name;
}

/// How many nodes come is guessed from those behind the vertex palette, whatever stood before it.
TEST(FileIndex, TakesALateVertexPalette) {
    FltBytes file;
    // A name that is known while compiling makes the cross compiler warn of what is not so.
    const std::vector<std::string> names(2000, "g");
    for (int i = 0; i < 20; ++i) file.group(names[0]).comment(std::string(30'000, 'c'));
    file.palette(kSquare);
    for (const std::string& name : names) file.group(name);
    const FileIndex index = readFileIndex(file);
    EXPECT_EQ(index.nodes.size(), 2021U);
    EXPECT_LE(index.nodes.capacity(), 2 * index.nodes.size());
}

TEST(FileIndex, AcceptsTheZerosBehindTheLastRecord) {
    for (const std::size_t zeros : {1U, 3U, 4U, 500U}) {
        FltBytes file = FltBytes().group("a");
        file.zeros(zeros);
        EXPECT_EQ(treeOf(readFileIndex(file)), "1(2)") << zeros;
    }
}

TEST(FileIndex, RefusesNestingThatWouldOverflowOthers) {
    FltBytes pushes;
    for (int i = 0; i < 1'000'000; ++i) pushes.push();
    EXPECT_EQ(refusalOf(pushes).offset(), FltBytes::kHeaderLength + 4 * interchange::kDeepestLevel);

    FltBytes deepest;
    for (std::size_t i = 0; i < interchange::kDeepestLevel; ++i) deepest.push().group("g");
    for (std::size_t i = 0; i < interchange::kDeepestLevel; ++i) deepest.pop();
    EXPECT_EQ(readFileIndex(deepest).nodes.size(), interchange::kDeepestLevel + 1);
}
