#include "chunkbytes.h"
#include "testscene.h"

#include <diagnostics/assertion.h>
#include <fltkilnutil/kilnface.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/kilnlight.h>
#include <fltkilnutil/kilnlightpoint.h>
#include <quillon/flttoken.h>

#include <gtest/gtest.h>

#include <string>

using namespace testing_chunks;

namespace {

using NodeOptions = TestScene;

/// Where `options` refuses `bytes`: "source:line", or "accepted".
std::string refusal(FltNodeOptions& options, const Bytes& bytes) {
    FltToken token;
    token.attach(bytes.data(), static_cast<std::int32_t>(bytes.size()));
    try {
        options.read(token);
        return "accepted";
    } catch (const diagnostics::AviaryAssertion& assertion) {
        return std::string(assertion.file) + ":" + std::to_string(assertion.line);
    }
}

TEST_F(NodeOptions, FaceOptionsHaveTheirStoredForm) {
    INode* const node = dummy();
    ASSERT_TRUE(fltPutOptions(node, KilnFace()));
    // Version, host normals, material, super face, two colors, and last keep triangles.
    EXPECT_EQ(
        chunkBytes(node, kOptionsChunk),
        RecordBytes(5, 32).int32(4, 1).int32(8, 1).int32(20, 0xFFFFFFFF).int32(24, 0xFFFFFFFF));

    const Bytes stored = RecordBytes(5, 32)
                             .int32(4, 1)
                             .int32(12, 1)
                             .int32(16, 1)
                             .int32(20, 0x11223344)
                             .int32(24, 0x55667788)
                             .int32(28, 1);
    setChunk(node, kOptionsChunk, stored);
    KilnFace face;
    ASSERT_TRUE(fltGetOptions(node, face));
    EXPECT_EQ(face.useHostNormals, 0U);
    EXPECT_EQ(face.useMaterial, 1U);
    EXPECT_EQ(face.superFace, 1U);
    EXPECT_EQ(face.keepTriangles, 1U);
    EXPECT_EQ(face.firstColor.alpha, 0x11);
    EXPECT_EQ(face.firstColor.red, 0x44);
    ASSERT_TRUE(fltPutOptions(node, face));
    EXPECT_EQ(chunkBytes(node, kOptionsChunk), stored);
}

TEST_F(NodeOptions, AFaceBlockOfVersionZeroSaysNothingAboutTriangles) {
    const Bytes old = RecordBytes(5, 32).int32(8, 1).int32(28, 1);
    KilnFace face;
    EXPECT_EQ(refusal(face, old), "accepted");
    EXPECT_EQ(face.version, 0U);
    EXPECT_EQ(face.keepTriangles, 0U);
    INode* const node = dummy();
    ASSERT_TRUE(fltPutOptions(node, face));
    EXPECT_EQ(chunkBytes(node, kOptionsChunk)[7], 1) << "written as the present version";
}

TEST_F(NodeOptions, LightPointOptionsAreThreeWords) {
    INode* const node = dummy();
    const Bytes stored = RecordBytes(111, 16).int32(4, 9).int32(8, 1).int32(12, 0x00018005);
    setChunk(node, kOptionsChunk, stored);
    KilnLightPoint options;
    EXPECT_EQ(options.reserved + options.mode + options.modeParameter, 0U);
    ASSERT_TRUE(fltGetOptions(node, options));
    EXPECT_EQ(options.reserved, 9U);
    EXPECT_EQ(options.mode, 1U);
    EXPECT_EQ(options.modeParameter, 0x00018005U);
    ASSERT_TRUE(fltPutOptions(node, options));
    EXPECT_EQ(chunkBytes(node, kOptionsChunk), stored);
}

TEST_F(NodeOptions, LightOptionsAreAPaletteEntry) {
    INode* const node = dummy();
    ASSERT_TRUE(fltPutOptions(node, KilnLight()));
    RecordBytes expected(102, 240);
    expected.int32(4, 0xFFFFFFFF);
    for (const std::size_t offset : {56U, 60U, 64U, 72U, 76U, 80U, 148U})
        expected.float32(offset, 1);
    expected.float32(136, 90).float32(140, 135).float32(144, 45).int32(160, 1);
    EXPECT_EQ(chunkBytes(node, kOptionsChunk), expected);
    setChunk(node, kOptionsChunk, RecordBytes(102, 240).float32(152, 0.25F));
    KilnLight light;
    ASSERT_TRUE(fltGetOptions(node, light));
    EXPECT_EQ(light.palette.linearAttenuation, 0.25F);
}

TEST_F(NodeOptions, ABlockOfAnotherKindIsRefusedByNameAndLine) {
    KilnFace face;
    KilnLight light;
    KilnLightPoint point;
    EXPECT_EQ(refusal(face, RecordBytes(111, 16)), "kilnflt:41");
    EXPECT_EQ(refusal(point, RecordBytes(5, 32)), "kilnflt:121");
    EXPECT_EQ(refusal(light, RecordBytes(5, 32)), "fltlightsourcepalette:60");

    INode* const node = dummy();
    setChunk(node, kOptionsChunk, RecordBytes(111, 16));
    EXPECT_FALSE(fltGetOptions(node, face));
    EXPECT_TRUE(fltHasOptions(node));
}

}  // namespace
