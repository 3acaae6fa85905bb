// How a picture is used, as the attribute file beside it says: the file of the picture's name with
// ".attr" behind it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace palettes {

struct PictureField {
    std::string name;
    std::string value;  ///< one of the choices, or a number; empty where the file ends before it
    std::vector<std::string> choices;  ///< numbers and, in the host's language, what they mean
};

/// What the file beside a picture (UTF-8) says, in its order: filters, wrapping and environment.
/// All values are empty without a file. Throws `std::bad_alloc`.
std::vector<PictureField> pictureFields(const std::string& picture);

/// A picture's sides in pixels.
struct Sides {
    int width = 0, height = 0;
};

/// Sets a field to the number that `value` begins with, one of its choices. The other bytes of the
/// file stay as they are; where there is none, one is made for a picture of that size. The file is
/// written at once, whole or not at all, and is no part of the scene's history. Throws `Refusal`,
/// `std::system_error` and `std::bad_alloc`, with nothing changed.
void setPictureField(const std::string& picture, Sides sides, std::string_view name,
                     std::string_view value);

}  // namespace palettes
