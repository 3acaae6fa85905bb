#include "attributemeaning.h"

#include <base/texts.h>
#include <framework/strings.h>
#include <resources/resource.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>

using base::fillText, framework::loadString;

namespace tessera {
namespace {

/// Attributes of a kind that follow one another, counted from 0.
struct Rows {
    FltNodeKind kind;
    int first;
    int count;

    bool contain(FltNodeKind of, int attribute) const noexcept {
        return of == kind && attribute >= first && attribute < first + count;
    }
};

// ---------------------------------------------------------------- sections

struct SectionRow {
    Rows rows;
    UINT title;
    const char* part = "";  ///< where the title has a place for it
};

constexpr auto kDof = FltNodeKind::Dof;
constexpr auto kPoint = FltNodeKind::LightPoint;
constexpr auto kClip = FltNodeKind::ClipRegion;

constexpr SectionRow kSections[] = {
    {{kDof, 0, 5}, IDS_SECTION_TRANSLATION, "X"},
    {{kDof, 5, 5}, IDS_SECTION_TRANSLATION, "Y"},
    {{kDof, 10, 5}, IDS_SECTION_TRANSLATION, "Z"},
    {{kDof, 15, 5}, IDS_SECTION_SCALE, "X"},
    {{kDof, 20, 5}, IDS_SECTION_SCALE, "Y"},
    {{kDof, 25, 5}, IDS_SECTION_SCALE, "Z"},
    {{kDof, 30, 5}, IDS_SECTION_ROLL},
    {{kDof, 35, 5}, IDS_SECTION_PITCH},
    {{kDof, 40, 5}, IDS_SECTION_YAW},
    {{kPoint, 0, 6}, IDS_SECTION_GENERAL},
    {{kPoint, 6, 4}, IDS_SECTION_INTENSITY},
    {{kPoint, 10, 4}, IDS_SECTION_DISABLED},
    {{kPoint, 14, 10}, IDS_SECTION_SIZE},
    {{kPoint, 24, 6}, IDS_SECTION_DIRECTION},
    {{kPoint, 30, 3}, IDS_SECTION_ANIMATION},
    {{kPoint, 33, 11}, IDS_SECTION_DRAWING},
    {{kPoint, 44, 3}, IDS_SECTION_VISIBILITY},
    {{kPoint, 47, 3}, IDS_SECTION_AXIS},
    {{kClip, 0, 3}, IDS_SECTION_CORNER, "0"},
    {{kClip, 3, 3}, IDS_SECTION_CORNER, "1"},
    {{kClip, 6, 3}, IDS_SECTION_CORNER, "2"},
    {{kClip, 9, 3}, IDS_SECTION_CORNER, "3"},
    {{kClip, 12, 5}, IDS_SECTION_PLANES},
    {{kClip, 17, 4}, IDS_SECTION_PLANE, "0"},
    {{kClip, 21, 4}, IDS_SECTION_PLANE, "1"},
    {{kClip, 25, 4}, IDS_SECTION_PLANE, "2"},
    {{kClip, 29, 4}, IDS_SECTION_PLANE, "3"},
    {{kClip, 33, 4}, IDS_SECTION_PLANE, "4"},
};

// ---------------------------------------------------------------- units and ranges

constexpr UINT kLength = 1;  // a unit that differs from one database to another

struct MeaningRow {
    Rows rows;
    UINT unit = 0;  ///< a text, `kLength` or 0 for none
    double least = 0;
    double most = 0;  ///< with `least` 0 and this: any number
};

// Real numbers only: what a whole number may be is known from its field.
constexpr MeaningRow kMeanings[] = {
    {{FltNodeKind::Header, 4, 1}, IDS_UNIT_DEGREES, -90, 90},
    {{FltNodeKind::Header, 5, 1}, IDS_UNIT_DEGREES, -180, 180},
    {{FltNodeKind::Header, 6, 2}, IDS_UNIT_DEGREES, -90, 90},
    {{FltNodeKind::Lod, 0, 6}, kLength},
    {{kDof, 0, 15}, kLength},
    {{kDof, 30, 15}, IDS_UNIT_DEGREES},
    {{kPoint, 8, 2}, 0, 0, 1},
    {{kPoint, 14, 2}, IDS_UNIT_PIXELS},
    {{kPoint, 16, 1}, kLength},
    {{kPoint, 17, 1}, IDS_UNIT_PIXELS},
    {{kPoint, 25, 3}, IDS_UNIT_DEGREES},
    {{kPoint, 29, 1}, 0, 0, 1},
    {{kPoint, 30, 3}, IDS_UNIT_SECONDS},
    {{kClip, 0, 12}, kLength},
    {{FltNodeKind::LightSource, 3, 1}, IDS_UNIT_DEGREES},
    {{FltNodeKind::LightSource, 8, 9}, 0, 0, 1},
};

// The colors of a light source: three times red, green and blue, from 0 to 1.
constexpr Rows kLightColors{FltNodeKind::LightSource, 8, 9};
// The back color of a light point: four bytes, of which the lowest is red and the highest alpha.
constexpr Rows kPackedColor{kPoint, 4, 1};

const MeaningRow* meaningOf(FltNodeKind kind, int attribute) noexcept {
    for (const MeaningRow& row : kMeanings)
        if (row.rows.contain(kind, attribute)) return &row;
    return nullptr;
}

template <typename Integer>
std::string rangeOf() {
    using Limits = std::numeric_limits<Integer>;
    const std::string least = std::to_string(Limits::min());
    return fillText(loadString(IDS_MEANING_WHOLE), {least, std::to_string(Limits::max())});
}

std::string wholeNumber(FltAttrWidth width) {
    switch (width) {
        case FltAttrWidth::Int8:
            return rangeOf<std::int8_t>();
        case FltAttrWidth::Uint8:
            return rangeOf<std::uint8_t>();
        case FltAttrWidth::Int16:
            return rangeOf<std::int16_t>();
        case FltAttrWidth::Uint16:
            return rangeOf<std::uint16_t>();
        default:
            return rangeOf<std::int32_t>();
    }
}

std::string realNumber(const MeaningRow* row, std::string_view lengthUnit) {
    const bool limited = row && (row->least != 0 || row->most != 0);
    std::string text = limited ? fillText(loadString(IDS_MEANING_RANGE),
                                          {std::to_string(static_cast<int>(row->least)),
                                           std::to_string(static_cast<int>(row->most))})
                               : std::string(loadString(IDS_MEANING_NUMBER));
    if (!row || row->unit == 0) return text;
    const std::string unit = row->unit == kLength ? std::string(lengthUnit) : loadString(row->unit);
    return fillText(loadString(IDS_MEANING_UNIT), {text, unit});
}

std::optional<double> numberIn(const std::string& text) {
    double number = 0;
    const auto parsed = std::from_chars(text.data(), text.data() + text.size(), number);
    if (parsed.ec != std::errc() || !std::isfinite(number)) return std::nullopt;
    return number;
}

}  // namespace

std::vector<grid::Section> sectionsOf(FltNodeKind kind) {
    std::vector<grid::Section> sections;
    for (const SectionRow& row : kSections)
        if (row.rows.kind == kind)
            sections.push_back(
                {row.rows.first + 1, row.rows.count, fillText(loadString(row.title), {row.part})});
    return sections;
}

bool isLength(FltNodeKind kind, int attribute) noexcept {
    const MeaningRow* const row = meaningOf(kind, attribute);
    return row && row->unit == kLength;
}

std::string valueMeaning(const FltAttrGroup& set, int attribute, std::string_view lengthUnit) {
    const FltAttrDesc& row = set.descriptors[attribute];
    switch (row.type) {
        case FltAttrType::Integer:
            return wholeNumber(row.width);
        case FltAttrType::Float:
        case FltAttrType::Double:
            return realNumber(meaningOf(set.kind, attribute), lengthUnit);
        case FltAttrType::Text:
            return fillText(loadString(IDS_MEANING_TEXT), {std::to_string(row.field.size)});
        default:
            return row.isYesNo() ? std::string(loadString(IDS_MEANING_YES_NO))
                                 : fillText(loadString(IDS_MEANING_CHOICE),
                                            {std::to_string(row.choices.size())});
    }
}

std::optional<COLORREF> colorOf(FltNodeKind kind, int attribute,
                                const std::function<std::string(int)>& valueOf) {
    if (kPackedColor.contain(kind, attribute)) {
        const auto packed = numberIn(valueOf(attribute));
        if (!packed) return std::nullopt;
        return static_cast<COLORREF>(static_cast<std::int64_t>(*packed) & 0xFFFFFF);
    }
    if (!kLightColors.contain(kind, attribute)) return std::nullopt;
    const int red = attribute - (attribute - kLightColors.first) % 3;
    BYTE parts[3];
    for (int i = 0; i < 3; ++i) {
        const auto part = numberIn(valueOf(red + i));
        if (!part) return std::nullopt;
        parts[i] = static_cast<BYTE>(std::lround(255 * std::clamp(*part, 0.0, 1.0)));
    }
    return RGB(parts[0], parts[1], parts[2]);
}

}  // namespace tessera
