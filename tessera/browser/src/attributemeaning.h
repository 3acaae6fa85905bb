// What the attributes of a node mean to a user, beside their captions.
#pragma once

#include <fltkilnutil/fltattr.h>
#include <framework/win32.h>
#include <grid/rowlines.h>

#include <functional>

#include <optional>
#include <string>
#include <string_view>

namespace tessera {

/// The sections into which the rows of a kind's attributes are divided in the grid, all open, in
/// the language of now; none for kinds with few. Their rows are those of the grid, whose first one
/// is the heading.
std::vector<grid::Section> sectionsOf(FltNodeKind kind);

/// What may be entered for an attribute, as in "Number, in Meters". `lengthUnit` is the unit of the
/// node's database.
std::string valueMeaning(const FltAttrGroup& set, int attribute, std::string_view lengthUnit);

/// Whether the attribute is a length, so that its meaning has the database's unit.
bool isLength(FltNodeKind kind, int attribute) noexcept;

/// The color that an attribute stands for, alone or with those next to it that have the same
/// color's other parts. `valueOf` returns the text of an attribute of the set.
std::optional<COLORREF> colorOf(FltNodeKind kind, int attribute,
                                const std::function<std::string(int)>& valueOf);

}  // namespace tessera
