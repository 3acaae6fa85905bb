// The scene file format.
//
// A .kiln file is JSON in UTF-8: "format", "version", then the texture maps, the objects and the
// nodes, each of which refers to earlier ones by index, so that a scene of any depth is a flat
// list. Every node is one line. Numbers are written as short as they read back exactly, in single
// precision what is kept so; a chunk's bytes are base64.
#pragma once

#include <kiln/host/core.h>

#include <memory>
#include <string>

#include "json.h"
#include "scene.h"

namespace kiln {

inline constexpr const char* kSceneFormat = "kiln scene";
inline constexpr int kSceneVersion = 1;

/// Custom attributes have attributes of their own, and those again; so many may be within one
/// another in a file.
inline constexpr int kDeepestAttribute = 64;
inline constexpr const char* kTooDeep = "attributes are more than 64 deep within one another";

/// What a scene is read from.
struct SceneSource {
    JsonReader::Source read;
    double size = 1;                 ///< bytes, as far as is known
    ProgressFunction progress = {};  ///< may be empty
};

/// Fills `scene`, a new one. A failure names `path` and the place in the file; after that, or when
/// it was cancelled, the scene is of no use.
ImportResult readScene(const SceneSource& source, const std::string& path, Scene& scene);

/// Writes a scene as the text of a file, piece by piece. The scene must not change before the last
/// of them; the selection may, which is that of the beginning.
class SceneWriter {
public:
    explicit SceneWriter(const Scene& scene);
    ~SceneWriter();
    SceneWriter(const SceneWriter&) = delete;
    SceneWriter& operator=(const SceneWriter&) = delete;

    /// Appends the next piece, at most a line of the file, to `text`; false once it was the last.
    /// Throws `std::length_error` for attributes that are too deep.
    bool next(std::string& text);
    /// How much of it is written, 0 to 1.
    double fraction() const noexcept;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace kiln
