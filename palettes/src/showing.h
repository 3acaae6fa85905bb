// What faces show in the scene.
#pragma once

#include <palettes/database.h>

#include <quillon/fltface.h>

#include <cstdint>
#include <map>

class INode;
class Texmap;

namespace palettes {

/// Has faces show what their records say. One object serves many faces; `database` outlives it.
class Showing {
public:
    explicit Showing(const Database& database) noexcept : database_(database) {}

    /// The face's color, without one the host's own.
    void showColor(INode& node, const FltFace& face);
    /// The picture of its texture; none for an index that names none.
    void showTexture(INode& node, const FltFace& face);

private:
    Texmap* mapOf(std::int32_t index);

    const Database& database_;
    std::map<std::int32_t, Texmap*> maps_;
};

}  // namespace palettes
