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

/// The scene as the text of a file.
std::string writtenScene(const Scene& scene);

/// Fills `scene`, a new one, from `text`. A failure names `path` and the place in the file; the
/// scene is then of no use.
Status readScene(const std::string& text, const std::string& path, Scene& scene);

}  // namespace kiln
