// A scene to be written as a .flt file: a tree of records with their geometry.
#pragma once

#include <quillon/fltdof.h>
#include <quillon/fltface.h>
#include <quillon/fltgeometry.h>
#include <quillon/fltlightsourcepalette.h>
#include <quillon/fltrecord.h>
#include <quillon/fltstream.h>
#include <quillon/flttexture.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace samples {

using Point = FltPoint3d;
using Polygon = std::vector<Point>;

/// Rows of a transform for row vectors: three axes, then the translation.
using Matrix = std::array<std::array<float, 4>, 4>;

struct Rgb {
    std::uint8_t red;
    std::uint8_t green;
    std::uint8_t blue;
};

/// A record with everything that hangs on it.
class Node {
public:
    explicit Node(std::unique_ptr<FltRecord> record) : record_(std::move(record)) {}

    /// Adds a child that carries `record`, and returns it; valid as long as this node.
    template <typename Record>
    Node& add(Record record, const std::string& longId = {}) {
        return append(children_, std::make_unique<Record>(std::move(record)), longId);
    }

    /// Adds a face over `polygon`, colored by entry `color` of the color palette, with entry
    /// `texture` of the texture palette unless that is -1.
    Node& addFace(Polygon polygon, std::uint32_t color, std::int16_t texture = -1);

    /// The same, lying on this face: drawn after it, without regard to depth.
    Node& addSubface(Polygon polygon, std::uint32_t color);

    /// Gives a light point its points, colored by entry `color` of the color palette.
    void setPoints(Polygon points, std::uint32_t color);

    /// Has `change` change the record of a face.
    template <typename Change>
    Node& changeFace(Change&& change) {
        change(static_cast<FltFace&>(*record_));
        return *this;
    }
    /// Writes `record` behind the node's own.
    template <typename Record>
    Node& attach(Record record) {
        attached_.push_back(std::make_unique<Record>(std::move(record)));
        return *this;
    }
    /// The vertices of the polygon have none.
    Node& withoutNormals();
    /// Of light points: where they shine to.
    Node& directed(const Point& direction);
    /// The whole picture covers the polygon of four corners, from the first on.
    Node& stretched();
    /// Entry `texture` of the palette lies over the face's own, as often as that times `scale`.
    Node& layered(std::uint16_t texture, float scale);
    Node& comment(std::string text);
    Node& transform(const Matrix& matrix);

private:
    friend class FltSceneWriter;

    Node& append(std::vector<std::unique_ptr<Node>>& nodes, std::unique_ptr<FltRecord> record,
                 std::string longId);

    std::unique_ptr<FltRecord> record_;
    std::string longId_;
    std::vector<std::string> comments_;
    std::vector<Matrix> matrices_;  ///< none or one
    std::vector<std::unique_ptr<FltRecord>> attached_;
    bool hasNormals_ = true;
    std::vector<Point> directions_;  ///< none or one, for all points
    bool isStretched_ = false;
    float layerScale_ = 0;  ///< 0 without a layer
    Polygon points_;
    std::vector<std::uint32_t> pointColors_;  ///< none or one, for all points
    std::vector<std::unique_ptr<Node>> subfaces_;
    std::vector<std::unique_ptr<Node>> children_;
};

/// The database: its palettes, and the nodes below its header.
struct FltScene {
    FltHeader header;
    std::vector<Rgb> colors;  ///< entries of the color palette, from 0 on
    std::vector<FltLightSourcePalette> lights;
    std::vector<FltTexture> textures;  ///< with any, all vertices have texture coordinates
    std::vector<std::unique_ptr<FltRecord>> palettes;  ///< entries of others
    std::size_t unusedVertices = 0;                    ///< at the end of the vertex palette
    std::string comment;
    Node root{nullptr};  ///< stands for the header; only its children are written

    /// Adds a texture of that file name to the end of the palette.
    void addTexture(const std::string& fileName);

    template <typename Record>
    void addPalette(Record record) {
        palettes.push_back(std::make_unique<Record>(std::move(record)));
    }
};

/// A degree of freedom about `origin` whose axes are those of the database, at its full size.
FltDof dofAt(std::string_view id, const Point& origin);

/// Writes `scene` to `path` (UTF-8), replacing a file of that name. Returns false when the file
/// cannot be created or written whole.
[[nodiscard]] bool writeScene(const FltScene& scene, const std::string& path);
/// The same, with the folders that are missing; throws `std::runtime_error` when it cannot.
void writeSceneFile(const FltScene& scene, const std::filesystem::path& path);

}  // namespace samples
