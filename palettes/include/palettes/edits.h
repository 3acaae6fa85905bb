// Edits of a database's palettes and of what uses them.
//
// What all of them have in common: an edit is one step of the history, or part of that of the scope
// that is open; it throws `Refusal` where it is not made, and `std::bad_alloc`, and nothing is
// changed then. Records other than the one that is edited stay byte for byte as they are kept, and
// of that one what does not change. Nothing is renumbered but by `compact`.
#pragma once

#include <palettes/database.h>

#include <kiln/platform.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class INode;

namespace palettes {

/// Adds an entry with the defaults of its class and that name (UTF-8), behind the others of the
/// palette; returns its index, the smallest that no entry has.
std::int32_t addEntry(INode& database, Palette palette, std::string_view name);

/// Adds a copy of an entry, with an index of its own.
std::int32_t copyEntry(INode& database, Palette palette, const Entry& entry);

/// Sets a field of an entry, as `fltSetField` does; the index is not set so. What the scene holds
/// of the entry follows: the pictures of faces, and the lights that look like it.
void setField(INode& database, Palette palette, const Entry& entry, std::string_view field,
              std::string_view value);

/// Takes the entry away, with the extensions that belong to it. Its users keep its index, which
/// names nothing then; lights keep their look, with which export makes the entry anew.
void deleteEntry(INode& database, Palette palette, const Entry& entry);

/// Gives the entries indices without gaps, in the order of those that they have, and their users
/// the same; those with doubled indices, and with ones that no node can name, get the next ones.
/// An index that names no entry names none afterwards. Returns how many indices of entries have
/// changed. Refused while something may use the palette in ways that are not known.
std::size_t compact(INode& database, Palette palette);

/// A color from 0 to 255 each of red, green and blue.
struct Rgb {
    std::uint8_t red = 0;
    std::uint8_t green = 0;
    std::uint8_t blue = 0;

    bool operator==(const Rgb&) const = default;
};
Rgb colorAt(const Database& database, std::int32_t entry);

/// Sets an entry of the colors, which makes a palette of white ones where there is none. Faces and
/// vertices that show it follow.
void setColor(INode& database, std::int32_t entry, Rgb color);
/// Names it, or takes its name away.
void setColorName(INode& database, std::int32_t entry, std::string_view name);

/// The fields of a color, as scripts and the window name them: "color" is "red green blue".
inline constexpr char kColorField[] = "color", kNameField[] = "name";
std::string textOfColor(Rgb color);
/// The color that such a text says; none for any other text.
std::optional<Rgb> colorIn(std::string_view text) noexcept;
/// Sets one of them.
void setColorField(INode& database, std::int32_t entry, std::string_view field,
                   std::string_view value);

/// The index of that color at full intensity. Without one an entry becomes it that is not used and
/// has no name: one whose color another entry has too, or the last.
std::int32_t findOrAddColor(INode& database, Rgb color);

/// Has nodes of the database use an entry; of the colors one by its color index. A node that can
/// use none stands for all below it that can. Returns how many nodes there are.
std::size_t assign(INode& database, std::span<INode* const> nodes, Palette palette,
                   std::int32_t index);

/// Adds those entries of the palette in another file (UTF-8) that the database does not have with
/// another index; returns how many. A color takes the place that it has there, with its name, where
/// nobody uses or has named what is in it; otherwise that of another such entry, first of one whose
/// color another one has too. Throws `FltFileError` and `std::system_error` too.
std::size_t importEntries(INode& database, Palette palette, const std::string& file);

}  // namespace palettes
