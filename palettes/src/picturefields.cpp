#include <palettes/picturefields.h>

#include <base/file.h>
#include <base/paths.h>
#include <base/replacefile.h>
#include <palettes/palette.h>
#include <quillon/fltbyteorder.h>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <iterator>
#include <span>
#include <system_error>

namespace palettes {

namespace {

struct Choice {
    std::int32_t number;
    CoreText meaning;
};

using enum CoreText;
constexpr Choice kMinFilters[] = {{0, kPointFilter},     {1, kBilinear},      {2, kMipmapOld},
                                  {3, kMipmapPoint},     {4, kMipmapLinear},  {5, kMipmapBilinear},
                                  {6, kMipmapTrilinear}, {7, kNoFilter},      {8, kBicubic},
                                  {9, kBilinearGreater}, {10, kBilinearLess}, {11, kBicubicGreater},
                                  {12, kBicubicLess}};
constexpr Choice kMagFilters[] = {{0, kPointFilter},    {1, kBilinear},        {2, kNoFilter},
                                  {3, kBicubic},        {4, kSharpen},         {5, kAddDetail},
                                  {6, kModulateDetail}, {7, kBilinearGreater}, {8, kBilinearLess},
                                  {9, kBicubicGreater}, {10, kBicubicLess}};
constexpr Choice kWraps[] = {{0, kRepeat}, {1, kClamp}, {4, kMirror}};
constexpr Choice kOwnWraps[] = {{0, kRepeat}, {1, kClamp}, {3, kAsBoth}, {4, kMirror}};
constexpr Choice kEnvironments[] = {
    {0, kModulate}, {1, kBlend}, {2, kDecal}, {3, kReplace}, {4, kAdd}};

struct FieldOfFile {
    const char* name;
    std::size_t word;  ///< of 32 bits, the highest byte first
    std::span<const Choice> choices;
};
constexpr FieldOfFile kFields[] = {
    {"minFilter", 7, kMinFilters}, {"magFilter", 8, kMagFilters},
    {"wrap", 9, kWraps},           {"wrapU", 10, kOwnWraps},
    {"wrapV", 11, kOwnWraps},      {"environment", 15, kEnvironments}};
constexpr std::size_t kWord = 4;
constexpr std::uintmax_t kLargestFile = 1 << 20;

std::string fileBeside(const std::string& picture) {
    return picture + ".attr";
}

std::uint8_t* wordIn(std::string& bytes, std::size_t word) noexcept {
    return reinterpret_cast<std::uint8_t*>(bytes.data()) + kWord * word;
}

/// Empty without a file.
std::string bytesBeside(const std::string& picture) {
    const std::filesystem::path path = base::pathFrom(fileBeside(picture));
    if (!base::isFile(path)) return {};
    std::error_code failure;
    const std::uintmax_t size = std::filesystem::file_size(path, failure);
    if (!failure && size > kLargestFile) failure = std::make_error_code(std::errc::file_too_large);
    std::string bytes;
    if (!failure) failure = base::readFile(fileBeside(picture), bytes);
    if (failure) throw std::system_error(failure, fileBeside(picture));
    return bytes;
}

std::string textOf(const Choice& choice) {
    return std::to_string(choice.number) + ": " + coreText(choice.meaning);
}

/// A file as far as its last field here, with values that say nothing of their own.
std::string newFile(Sides sides) {
    constexpr std::size_t kWords = 16, kUpY = 5;
    std::string bytes(kWords * kWord, '\0');
    const auto put = [&](std::size_t word, std::int32_t value) {
        fltStoreBigEndian(wordIn(bytes, word), value);
    };
    put(0, sides.width);
    put(1, sides.height);
    put(kUpY, 1);
    for (const FieldOfFile& field : kFields) {
        if (field.choices.data() == kMinFilters) put(field.word, 6);
        if (field.choices.data() == kMagFilters) put(field.word, 1);
        if (field.choices.data() == kOwnWraps) put(field.word, 3);
    }
    return bytes;
}

}  // namespace

std::vector<PictureField> pictureFields(const std::string& picture) {
    std::string bytes;
    try {
        bytes = bytesBeside(picture);
    } catch (const std::system_error&) {
        // What cannot be read says nothing.
    }
    std::vector<PictureField> fields;
    for (const FieldOfFile& field : kFields) {
        PictureField& shown = fields.emplace_back();
        shown.name = field.name;
        std::int32_t number = 0;
        const bool isThere = bytes.size() >= kWord * (field.word + 1);
        if (isThere) {
            fltLoadBigEndian(wordIn(bytes, field.word), number);
            shown.value = std::to_string(number);
        }
        for (const Choice& choice : field.choices) {
            shown.choices.push_back(textOf(choice));
            if (isThere && choice.number == number) shown.value = shown.choices.back();
        }
    }
    return fields;
}

void setPictureField(const std::string& picture, Sides sides, std::string_view name,
                     std::string_view value) {
    const auto field = std::ranges::find(kFields, name, &FieldOfFile::name);
    if (field == std::end(kFields)) throw Refusal(CoreText::kNoField, {name});
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    const bool isNumber =
        error == std::errc() && (end == value.data() + value.size() || *end == ':');
    if (!isNumber ||
        std::ranges::find(field->choices, number, &Choice::number) == field->choices.end())
        throw Refusal(CoreText::kNoValue, {name, value});
    std::string bytes =
        base::isFile(base::pathFrom(fileBeside(picture))) ? bytesBeside(picture) : newFile(sides);
    if (bytes.size() < kWord * (field->word + 1)) throw Refusal(CoreText::kCutAttributes);
    fltStoreBigEndian(wordIn(bytes, field->word), number);
    base::replaceFile(fileBeside(picture), bytes);
}

}  // namespace palettes
