// Fields of palette entries set by their names.
#pragma once

#include <quillon/fltrecord.h>

#include <string_view>

/// What became of setting a field.
enum class FltFieldSet {
    kDone,
    kNoField,  ///< the record has none of that name, or is of a kind that is not edited so
    kRefused,  ///< the field cannot hold that
};

/// Sets the field that `visitFields` shows as `field`. The records are those of materials,
/// textures, texture mappings, light sources, and light point appearances and animations.
///
/// A field with several values takes them all, separated by blanks. Numbers are decimal and must
/// fit their field; reals must be finite. A text must leave room for its terminator. The record is
/// as it was unless the result is `kDone`.
FltFieldSet fltSetField(FltRecord& record, std::string_view field, std::string_view text);
