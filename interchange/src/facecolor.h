// The colour that a face shows.
#pragma once

#include <interchange/outline.h>

#include <kiln/platform.h>

#include <optional>

class FltFace;

namespace interchange {

/// The face's primary colour: its packed one, or the one that it names in the file's colour palette
/// by entry and intensity. Nothing when the face has no colour, or names one that is not there.
std::optional<COLORREF> colorOf(const FltFace& face, FileBytes bytes, const Outline& outline);

}  // namespace interchange
