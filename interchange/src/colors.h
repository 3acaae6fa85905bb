// The colours that faces and vertices show.
#pragma once

#include <interchange/outline.h>

#include <kiln/platform.h>

#include <optional>

class FltFace;

namespace interchange {

/// The face's primary colour: its packed one, or the one that it names in the file's colour palette
/// by entry and intensity. Nothing when the face has no colour, or names one that is not there.
std::optional<COLORREF> colorOf(const FltFace& face, FileBytes bytes, const Outline& outline);

/// The same for the vertex whose record stands at offset `vertex`.
std::optional<COLORREF> vertexColor(std::uint32_t vertex, FileBytes bytes, const Outline& outline);

}  // namespace interchange
