// The scene file format.
//
// A .kiln file is JSON in UTF-8: "format", "version", then the texture maps, the objects and the
// nodes, each of which refers to earlier ones by index, so that a scene of any depth is a flat
// list. Every node is one line. Numbers are written so that they read back exactly; a chunk's bytes
// are base64.
#pragma once

#include <kiln/host/status.h>

#include <string>

#include "scene.h"

namespace kiln {

inline constexpr const char* kSceneFormat = "kiln scene";
inline constexpr int kSceneVersion = 1;

/// Custom attributes have attributes of their own, and those again; so many may be within one
/// another in a file.
inline constexpr int kDeepestAttribute = 64;
inline constexpr const char* kTooDeep = "attributes are more than 64 deep within one another";

/// The scene as the text of a file. Throws `std::length_error` for attributes that are too deep.
std::string writtenScene(const Scene& scene);

/// Fills `scene`, a new one, from `text`. A failure names `path` and the place in the file; the
/// scene is then of no use.
Status readScene(const std::string& text, const std::string& path, Scene& scene);

}  // namespace kiln
