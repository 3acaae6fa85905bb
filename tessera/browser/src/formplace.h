// What is remembered of the form's place from one session to the next.
#pragma once

#include <fltkilnutil/nodekind.h>
#include <framework/win32.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessera {

/// Where the form is and how it is divided, in pixels of one display scaling.
struct FormPlace {
    RECT window{};         ///< when neither minimised nor maximised, as the platform's placement
    int splitter = 0;      ///< how much wider the tree is than the template says
    int captionShare = 0;  ///< the grid's first column, in thousandths of its width

    friend bool operator==(const FormPlace& a, const FormPlace& b) noexcept {
        return ::EqualRect(&a.window, &b.window) && a.splitter == b.splitter &&
               a.captionShare == b.captionShare;
    }
};

/// As it is kept: the six numbers with a blank between them.
std::string formPlaceText(const FormPlace& place);
/// Nothing for a text that `formPlaceText` does not write, or one with numbers that no place has.
std::optional<FormPlace> parseFormPlace(std::string_view text);

/// Reads and keeps the place for a display scaling (in dots per inch) in the user's registry.
std::optional<FormPlace> loadFormPlace(int dpi);
void saveFormPlace(int dpi, const FormPlace& place);

/// Whether the selection follows the host's, kept in the same place.
bool loadFollowsSelection();
void saveFollowsSelection(bool follows);

/// Which sections of a kind's attributes are folded, a bit for each from the lowest on; kept there
/// too.
std::uint32_t loadFoldedSections(FltNodeKind kind);
void saveFoldedSections(FltNodeKind kind, std::uint32_t folded);

}  // namespace tessera
