#include "formplace.h"

#include <base/utf16.h>

#include <array>
#include <charconv>

namespace tessera {
namespace {

constexpr wchar_t kKey[] = L"Software\\Tessera\\Browser";
constexpr wchar_t kFollowsSelection[] = L"FollowsSelection";
constexpr DWORD kLongestText = 128;  // characters
constexpr int kFarthest = 100'000;   // pixels
constexpr int kWhole = 1000;

std::wstring valueName(int dpi) {
    std::wstring name = L"Place";
    name += std::to_wstring(dpi);
    return name;
}

std::wstring foldedName(FltNodeKind kind) {
    std::wstring name = L"Folded";
    name += std::to_wstring(static_cast<int>(kind));
    return name;
}

/// 0 when there is none.
DWORD loadNumber(const std::wstring& name) {
    DWORD value = 0;
    DWORD bytes = sizeof value;
    const LSTATUS read = ::RegGetValueW(HKEY_CURRENT_USER, kKey, name.c_str(), RRF_RT_REG_DWORD,
                                        nullptr, &value, &bytes);
    return read == ERROR_SUCCESS ? value : 0;
}

void saveNumber(const std::wstring& name, DWORD value) {
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kKey, name.c_str(), REG_DWORD, &value, sizeof value);
}

}  // namespace

std::string formPlaceText(const FormPlace& place) {
    std::string text;
    for (const long number :
         {place.window.left, place.window.top, place.window.right, place.window.bottom,
          long{place.splitter}, long{place.captionShare}}) {
        if (!text.empty()) text += ' ';
        text += std::to_string(number);
    }
    return text;
}

std::optional<FormPlace> parseFormPlace(std::string_view text) {
    std::array<int, 6> numbers{};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        if (i > 0 && (at == end || *at++ != ' ')) return std::nullopt;
        const auto [next, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc() || std::abs(static_cast<long long>(numbers[i])) > kFarthest)
            return std::nullopt;
        at = next;
    }
    const auto [left, top, right, bottom, splitter, share] = numbers;
    if (at != end || left >= right || top >= bottom || share <= 0 || share >= kWhole)
        return std::nullopt;
    return FormPlace{{left, top, right, bottom}, splitter, share};
}

std::optional<FormPlace> loadFormPlace(int dpi) {
    std::array<wchar_t, kLongestText> text{};
    DWORD bytes = sizeof text;
    if (::RegGetValueW(HKEY_CURRENT_USER, kKey, valueName(dpi).c_str(), RRF_RT_REG_SZ, nullptr,
                       text.data(), &bytes) != ERROR_SUCCESS)
        return std::nullopt;
    return parseFormPlace(base::toUtf8(text.data()));
}

void saveFormPlace(int dpi, const FormPlace& place) {
    const std::wstring text = base::toWide(formPlaceText(place));
    ::RegSetKeyValueW(HKEY_CURRENT_USER, kKey, valueName(dpi).c_str(), REG_SZ, text.c_str(),
                      static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

bool loadFollowsSelection() {
    return loadNumber(kFollowsSelection) != 0;
}

void saveFollowsSelection(bool follows) {
    saveNumber(kFollowsSelection, follows ? 1 : 0);
}

std::uint32_t loadFoldedSections(FltNodeKind kind) {
    return loadNumber(foldedName(kind));
}

void saveFoldedSections(FltNodeKind kind, std::uint32_t folded) {
    saveNumber(foldedName(kind), folded);
}

}  // namespace tessera
