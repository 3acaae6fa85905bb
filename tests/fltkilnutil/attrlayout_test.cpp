// Where each row finds its field in the chunk's bytes: one field is set in bytes of zeros, and its
// row alone must show it.
#include "attrscene.h"

#include <fltkilnutil/captions.h>

#include <gtest/gtest.h>

using namespace testing_chunks;

namespace {

enum class Form { int8, int16, int32, float32, float64, text };
enum class In { record, options };

constexpr int kYes = 114;

/// A row in the order of its group. Its field is set to `value`, which shows as the caption
/// `choice` if there is one; without a value to a number that fills the field.
struct Row {
    int caption;
    std::string key;
    Form form;
    std::size_t offset;
    std::uint32_t mask = 0;
    std::uint32_t value = 0;
    int choice = 0;
    In in = In::record;
};

Row inOptions(Row row) {
    row.in = In::options;
    return row;
}

Row number(int caption, const char* key, Form form, std::size_t offset) {
    return {caption, key, form, offset};
}

Row choice(int caption, const char* key, Form form, std::size_t offset, std::uint32_t value,
           int shown, std::uint32_t mask = 0) {
    return {caption, key, form, offset, mask, value, shown};
}

Row bit(int caption, const char* key, std::size_t offset, std::uint32_t mask) {
    return {caption, key, Form::int32, offset, mask, mask, kYes};
}

using Rows = std::vector<Row>;
using enum Form;

Rows headerRows() {
    return {choice(133, "FltVersion", int32, 12, 1570, 112),
            choice(134, "FltUnits", int8, 62, 8, 120),
            choice(135, "FltProjection", int32, 92, 6, 126),
            choice(136, "FltEllipsoid", int32, 270, 4, 132),
            number(137, "FltOriginLat", float64, 220),
            number(138, "FltOriginLon", float64, 228),
            number(139, "FltUpperLam", float64, 236),
            number(140, "FltLowerLam", float64, 244),
            choice(141, "FltTexWhite", int8, 63, 2, kYes)};
}

Rows faceRows() {
    return {number(159, "FltIRColor", int32, 12),
            number(160, "FltIRMaterial", int32, 36),
            number(161, "FltSmc", int16, 32),
            number(162, "FltFid", int16, 34),
            choice(163, "FltLightMode", int8, 48, 3, 150),
            choice(164, "FltDrawType", int8, 18, 10, 158),
            bit(165, "FltTerrain", 44, 0x80000000),
            bit(166, "FltHidden", 44, 0x4000000),
            bit(167, "FltFootprint", 44, 0x8000000),
            choice(168, "FltBillboard", int8, 25, 4, 146),
            inOptions(choice(169, "FltSuperFace", int32, 16, 1, kYes)),
            inOptions(choice(170, "FltUseKilnNormals", int32, 8, 1, kYes)),
            inOptions(choice(171, "FltUseMaterial", int32, 12, 1, kYes)),
            inOptions(choice(172, "FltKeepTris", int32, 28, 1, kYes))};
}

Rows lodRows() {
    return {number(174, "FltLodMin", float64, 16),    number(175, "FltLodMax", float64, 24),
            number(176, "FltLodTrans", float64, 64),  number(177, "FltLodCx", float64, 40),
            number(178, "FltLodCy", float64, 48),     number(179, "FltLodCz", float64, 56),
            bit(180, "FltLodFrozen", 36, 0x20000000), bit(181, "FltUsePrevious", 36, 0x80000000),
            number(182, "FltLodSpecial1", int16, 32), number(183, "FltLodSpecial2", int16, 34)};
}

Rows lightPointRows() {
    return {inOptions(choice(200, "", int32, 8, 1, 199)),
            inOptions(number(201, "", int16, 14)),
            number(161, "FltSmc", int16, 12),
            number(162, "FltFid", int16, 14),
            number(202, "FltLtPtBackColor", int32, 16),
            choice(203, "FltLtPtDisplayMode", int32, 20, 2, 190),
            number(204, "FltLtPtIntensity", float32, 24),
            number(205, "FltLtPtBackIntensity", float32, 28),
            number(206, "FltLtPtMinDefocus", float32, 32),
            number(207, "FltLtPtMaxDefocus", float32, 36),
            choice(208, "FltLtPtDisableFade", int32, 40, 1, kYes),
            choice(209, "FltLtPtDisableFog", int32, 44, 1, kYes),
            choice(210, "FltLtPtDisableDir", int32, 48, 1, kYes),
            choice(211, "FltLtPtDisableRange", int32, 52, 1, kYes),
            number(212, "FltLtPtMinPixelSize", float32, 56),
            number(213, "FltLtPtMaxPixelSize", float32, 60),
            number(214, "FltLtPtActualPixelSize", float32, 64),
            number(215, "FltLtPtXprPixelSize", float32, 68),
            number(216, "FltLtPtXprOffExpnt", float32, 72),
            number(217, "FltLtPtXprScalar", float32, 76),
            number(218, "FltLtPtXprClamp", float32, 80),
            number(219, "FltLtPtFogScalar", float32, 84),
            number(220, "", float32, 88),
            number(221, "FltLtPtSizeThreshold", float32, 92),
            choice(222, "FltLtPtDirectonType", int32, 96, 2, 186),
            number(223, "FltLtPtHorizLobe", float32, 100),
            number(224, "FltLtPtVertLobe", float32, 104),
            number(225, "FltLtPtLobeRoll", float32, 108),
            number(226, "FltLtPtDirFalloff", float32, 112),
            number(227, "FltLtPtDirAmbient", float32, 116),
            number(228, "FltLtPtAnimPeriod", float32, 120),
            number(229, "FltLtPtAnimPhase", float32, 124),
            number(230, "FltLtPtAnimEnabled", float32, 128),
            number(231, "FltLtPtSignificance", float32, 132),
            number(232, "FltLtPtDrawOrder", int32, 136),
            bit(233, "FltLtPtNoBackColor", 140, 0x40000000),
            bit(234, "FltLtPtProxOccult", 140, 0x10000000),
            bit(235, "FltLtPtReflective", 140, 0x8000000),
            choice(236, "FltLtPtRandomize", int32, 140, 0x3000000, 194, 0x7000000),
            bit(237, "FltLtPtPerspective", 140, 0x800000),
            bit(238, "FltLtPtFlashing", 140, 0x400000),
            bit(239, "FltLtPtRotating", 140, 0x200000),
            bit(240, "FltLtPtRotateCCW", 140, 0x100000),
            choice(241, "FltLtPtQuality", int32, 140, 0x40000, 197, 0x60000),
            bit(242, "FltLtPtVisDay", 140, 0x10000),
            bit(243, "FltLtPtVisDusk", 140, 0x8000),
            bit(244, "FltLtPtVisNight", 140, 0x4000),
            number(245, "FltLtPtRotationX", float32, 144),
            number(246, "FltLtPtRotationY", float32, 148),
            number(247, "FltLtPtRotationZ", float32, 152)};
}

/// No key, so that scripts reach none of them. The palette entry is the options block.
Rows lightSourceRows() {
    Rows rows = {bit(252, "", 24, 0x80000000), bit(253, "", 24, 0x40000000),
                 bit(254, "", 24, 0x10000000)};
    // Cutoff, dropoff, attenuations; then diffuse, ambient and specular red, green, blue.
    int caption = 255;
    for (const std::size_t offset :
         {136U, 132U, 148U, 152U, 156U, 56U, 60U, 64U, 40U, 44U, 48U, 72U, 76U, 80U}) {
        rows.push_back(inOptions(number(caption++, "", float32, offset)));
    }
    return rows;
}

Rows externalRows() {
    return {number(272, "FltXRefFilename", text, 4),
            bit(273, "FltXRefOverrideColors", 208, 0x80000000),
            bit(274, "FltXRefOverrideLtSrcs", 208, 0x4000000),
            bit(275, "FltXRefOverrideLnStyle", 208, 0x10000000),
            bit(276, "FltXRefOverrideMaterials", 208, 0x40000000),
            bit(277, "FltXRefOverrideSounds", 208, 0x8000000),
            bit(278, "FltXRefOverrideTextures", 208, 0x20000000)};
}

Rows groupRows() {
    return {
        number(280, "FltGrpRelPriority", int16, 12), number(281, "FltGrpSpecial1", int16, 20),
        number(282, "FltGrpSpecial2", int16, 22),    number(283, "FltGrpSignificance", int16, 24),
        number(284, "FltGrpLayer", int8, 26),        bit(285, "FltGrpFwdAnim", 16, 0x40000000),
        bit(286, "FltGrpCycleAnim", 16, 0x20000000), bit(287, "FltGrpBBox", 16, 0x10000000),
        bit(288, "FltGrpFrzBBox", 16, 0x8000000),    bit(289, "FltGrpDfltParent", 16, 0x4000000)};
}

Rows objectRows() {
    return {
        number(297, "FltObjRelPriority", int16, 16),  number(298, "FltObjTransparency", int16, 18),
        number(299, "FltObjSignificance", int16, 24), bit(300, "FltObjNoDay", 12, 0x80000000),
        bit(301, "FltObjNoDusk", 12, 0x40000000),     bit(302, "FltObjNoNight", 12, 0x20000000),
        bit(303, "FltObjIlluminate", 12, 0x10000000), bit(304, "FltObjFlatShaded", 12, 0x8000000),
        bit(305, "FltObjGroupShadow", 12, 0x4000000), number(306, "FltObjSpecial1", int16, 20),
        number(307, "FltObjSpecial2", int16, 22)};
}

Rows dofRows() {
    const struct {
        const char* axis;
        std::size_t limits;  // lower, upper, current, increment
        std::uint32_t limited;
    } axes[] = {{"Tx", 152, 0x80000000},  {"Ty", 120, 0x40000000},    {"Tz", 88, 0x20000000},
                {"Sx", 344, 0x2000000},   {"Sy", 312, 0x1000000},     {"Sz", 280, 0x800000},
                {"Roll", 216, 0x8000000}, {"Pitch", 184, 0x10000000}, {"Yaw", 248, 0x4000000}};
    Rows rows;
    int caption = 318;
    for (const auto& [axis, limits, limited] : axes) {
        const auto key = [name = std::string("FltDof").append(axis)](const char* what) {
            return std::string(name).append(what);
        };
        rows.push_back(number(caption++, key("Min").c_str(), float64, limits));
        rows.push_back(number(caption++, key("Curr").c_str(), float64, limits + 16));
        rows.push_back(number(caption++, key("Max").c_str(), float64, limits + 8));
        rows.push_back(number(caption++, key("Incr").c_str(), float64, limits + 24));
        rows.push_back(bit(caption++, key("Limited").c_str(), 376, limited));
    }
    return rows;
}

Rows clipRows() {
    Rows rows;
    int caption = 372;
    for (std::size_t i = 0; i < 12; ++i) {
        const char key[] = {
            'F', 'l', 't', 'C', 'l', 'i', 'p', "XYZ"[i % 3], static_cast<char>('0' + i / 3), '\0'};
        rows.push_back(number(caption++, key, float64, 24 + 8 * i));
    }
    std::size_t flag = 18;
    for (const char* const key :
         {"FltClipBottom", "FltClipRight", "FltClipTop", "FltClipLeft", "FltClipBack"}) {
        rows.push_back(choice(caption++, key, int8, flag++, 2, kYes));
    }
    // Plane by plane in the list, coefficient by coefficient in the bytes.
    for (std::size_t i = 0; i < 20; ++i) {
        rows.push_back(number(caption++, "", float64, 120 + 40 * (i % 4) + 8 * (i / 4)));
    }
    return rows;
}

class AttrLayout : public AttrScene {
protected:
    std::string captionOf(int id) const {
        std::string text;
        EXPECT_TRUE(captions(base::Language::kChinese, static_cast<std::uint32_t>(id), text)) << id;
        return text;
    }

    /// What the rows of a node with these chunks show.
    std::vector<std::string> shown(FltNodeKind kind, const Bytes& record, const Bytes& options) {
        INode* const made = recordNode(kind, record);
        if (!options.empty()) setChunk(made, kOptionsChunk, options);
        const FltAttrGroup* const group = fltAttrLoad(made, 1580);
        std::vector<std::string> texts;
        if (group == nullptr) return texts;
        EXPECT_EQ(chunkBytes(made, kRecordChunk), record) << "loading changes nothing";
        for (const FltAttrDesc* row = group->descriptors; !row->isTerminator(); ++row)
            texts.emplace_back(row->value.text());
        return texts;
    }

    /// Puts what the row is to show into the bytes, and returns its text.
    std::string put(const Row& row, RecordBytes& bytes) const {
        switch (row.form) {
            case int8:
                bytes.int8(row.offset,
                           row.choice != 0 ? static_cast<std::uint8_t>(row.value) : 0x81);
                return row.choice != 0 ? captionOf(row.choice) : "-127";
            case int16:
                bytes.int16(row.offset, 0x8001);
                return "-32767";
            case int32:
                bytes.int32(row.offset, row.value != 0 ? row.value : 0x80000001);
                if (row.choice != 0) return captionOf(row.choice);
                return row.value != 0 ? std::to_string(row.value) : "-2147483647";
            case float32:
                bytes.float32(row.offset, -1.5F);
                return "-1.5";
            case float64:
                bytes.float64(row.offset, -1.5);
                return "-1.5";
            default:
                bytes.text(row.offset, "a.flt");
                return "a.flt";
        }
    }

    const fltkilnutil::CaptionReader captions = fltkilnutil::openCaptionLibrary();
};

TEST_F(AttrLayout, EveryRowShowsItsOwnBytesAndNoOthers) {
    using enum FltNodeKind;
    const struct {
        FltNodeKind kind;
        Rows rows;
        RecordBytes record;
        RecordBytes options = {0, 4};  // of kinds that have some
    } groups[] = {
        {Header, headerRows(), RecordBytes(1, 328).int32(12, 1580)},
        {Face, faceRows(), {5, 80}, RecordBytes(5, 32).int32(4, 1)},
        {Lod, lodRows(), {73, 72}},
        {LightPoint, lightPointRows(), {111, 160}, {111, 16}},
        {LightSource, lightSourceRows(), {101, 64}, {102, 240}},
        {XRef, externalRows(), {63, 216}},
        {Group, groupRows(), {2, 32}},
        {Object, objectRows(), {4, 32}},
        {Dof, dofRows(), {14, 384}},
        {Bsp,
         {number(364, "FltBspA", float64, 16), number(365, "FltBspB", float64, 24),
          number(366, "FltBspC", float64, 32), number(367, "FltBspD", float64, 40)},
         {55, 48}},
        {Switch,
         {number(369, "FltSwitchCurr", int32, 16), Row{370, "FltSwitchMaskWidth", int32, 24, 0, 3}},
         {96, 32}},
        {ClipRegion, clipRows(), {98, 280}}};
    std::size_t rows = 0;
    for (const auto& group : groups) {
        const FltAttrGroup* const found = fltAttrGroupFind(group.kind);
        ASSERT_EQ(fltAttrCount(*found), group.rows.size()) << static_cast<int>(group.kind);
        const Bytes noOptions;
        const bool hasOptions = found->options != nullptr;
        const std::vector<std::string> base =
            shown(group.kind, group.record, hasOptions ? group.options : noOptions);
        for (std::size_t i = 0; i < group.rows.size(); ++i, ++rows) {
            const Row& row = group.rows[i];
            SCOPED_TRACE(testing::Message() << static_cast<int>(group.kind) << " " << row.caption);
            EXPECT_EQ(found->descriptors[i].caption, captionOf(row.caption));
            EXPECT_EQ(found->descriptors[i].key, row.key);
            RecordBytes record = group.record, options = group.options;
            RecordBytes& changed = row.in == In::record ? record : options;
            std::vector<std::string> expected = base;
            expected[i] = put(row, changed);
            ASSERT_NE(expected[i], base[i]);
            EXPECT_EQ(shown(group.kind, record, hasOptions ? options : noOptions), expected);
            if (row.mask == 0) continue;
            changed.int32(row.offset, ~row.mask);
            EXPECT_EQ(shown(group.kind, record, hasOptions ? options : noOptions)[i], base[i])
                << "its own bits alone count";
        }
    }
    EXPECT_EQ(rows, 216U);
}

TEST_F(AttrLayout, AWholeNumberIsYesOrNoOnlyWhereItSaysSo) {
    const std::vector<std::string> texts =
        shown(FltNodeKind::LightPoint, RecordBytes(111, 160).int32(40, 2), RecordBytes(111, 16));
    EXPECT_EQ(texts[10], "");
    EXPECT_EQ(texts[11], captionOf(115));
}

}  // namespace
