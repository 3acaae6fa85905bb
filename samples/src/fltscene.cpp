#include "fltscene.h"

#include <base/paths.h>
#include <quillon/fltcolorpalette.h>
#include <quillon/fltcomment.h>
#include <quillon/fltlongid.h>
#include <quillon/fltmultitexture.h>
#include <quillon/flttext.h>
#include <quillon/flttransform.h>
#include <quillon/fltvertex.h>
#include <quillon/fltvertexlist.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace samples {

namespace {

Point normalOf(const Polygon& polygon) {
    Point sum;
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& a = polygon[i];
        const Point& b = polygon[(i + 1) % polygon.size()];
        sum.x += (a.y - b.y) * (a.z + b.z);
        sum.y += (a.z - b.z) * (a.x + b.x);
        sum.z += (a.x - b.x) * (a.y + b.y);
    }
    const double length = std::hypot(sum.x, sum.y, sum.z);
    return length > 0 ? Point{sum.x / length, sum.y / length, sum.z / length} : Point{0, 0, 1};
}

constexpr std::uint32_t kFirstLayer = 0x80000000;

std::uint32_t colorIndex(std::uint32_t color) {
    return color << FltColorPalette::kIntensityBits | FltColorPalette::kFullIntensity;
}

FltFace faceOfColor(std::uint32_t color) {
    FltFace face;
    face.flags = kFltSurfaceNoAlternateColor;
    face.primaryColorIndex = colorIndex(color);
    face.lightMode = kFltLitFaceColor;
    return face;
}

}  // namespace

Node& Node::append(std::vector<std::unique_ptr<Node>>& nodes, std::unique_ptr<FltRecord> record,
                   std::string longId) {
    nodes.push_back(std::make_unique<Node>(std::move(record)));
    nodes.back()->longId_ = std::move(longId);
    return *nodes.back();
}

Node& Node::addFace(Polygon polygon, std::uint32_t color, std::int16_t texture) {
    FltFace record = faceOfColor(color);
    record.textureIndex = texture;
    Node& face = add(std::move(record));
    face.points_ = std::move(polygon);
    return face;
}

Node& Node::addSubface(Polygon polygon, std::uint32_t color) {
    Node& face = append(subfaces_, std::make_unique<FltFace>(faceOfColor(color)), {});
    face.points_ = std::move(polygon);
    return face;
}

void Node::setPoints(Polygon points, std::uint32_t color) {
    points_ = std::move(points);
    pointColors_.assign(1, color);
}

Node& Node::withoutNormals() {
    hasNormals_ = false;
    return *this;
}

Node& Node::directed(const Point& direction) {
    directions_.assign(1, direction);
    return *this;
}

Node& Node::stretched() {
    isStretched_ = true;
    return *this;
}

Node& Node::layered(std::uint16_t texture, float scale) {
    FltMultiTexture layers;
    layers.mask = kFirstLayer;
    layers.layers.resize(1);
    layers.layers.front().textureIndex = texture;
    layerScale_ = scale;
    return attach(layers);
}

Node& Node::comment(std::string text) {
    comments_.push_back(std::move(text));
    return *this;
}

Node& Node::transform(const Matrix& matrix) {
    matrices_.assign(1, matrix);
    return *this;
}

/// Writes the records of a scene in the order that readers expect: palettes, all vertices, nodes.
class FltSceneWriter {
public:
    FltSceneWriter(const FltScene& scene, FltStream& stream)
        : stream_(stream),
          hasTexture_(!scene.textures.empty()),
          vertexLength_(fltWrittenLength(newVertex(), stream.revision())),
          plainLength_(fltWrittenLength(newVertex(false), stream.revision())) {}

    void write(const FltScene& scene) {
        writeColors(scene.colors);
        for (FltTexture texture : scene.textures) texture.write(stream_);
        for (const auto& entry : scene.palettes) entry->write(stream_);
        for (FltLightSourcePalette light : scene.lights) light.write(stream_);
        writeVertexPalette(scene);
        if (!scene.comment.empty()) writeComment(scene.comment);
        writeLevel(scene.root.children_, kFltPushLevel, kFltPopLevel);
    }

private:
    FltVertex newVertex(bool hasNormal = true) const { return FltVertex(hasNormal, hasTexture_); }

    void writeComment(const std::string& text) { FltComment(text.c_str()).write(stream_); }

    void writeColors(const std::vector<Rgb>& colors) {
        FltColorPalette palette;
        for (const Rgb& color : colors)
            palette.colors.push_back({0xFF, color.blue, color.green, color.red});
        palette.colors.resize(FltColorPalette::kEntries, {0xFF, 0xFF, 0xFF, 0xFF});
        palette.write(stream_);
    }

    /// Notes where the vertices will stand, from the start of the palette.
    void placePoints(const Node& node) {
        for (const auto& subface : node.subfaces_) placePoints(*subface);
        for (std::size_t n = node.points_.size(); n > 0; --n) {
            offsets_.push_back(length_);
            length_ += node.hasNormals_ ? vertexLength_ : plainLength_;
        }
        for (const auto& child : node.children_) placePoints(*child);
    }

    void writeVertexPalette(const FltScene& scene) {
        FltVertexPalette palette;
        length_ = palette.length;
        placePoints(scene.root);
        palette.length = length_ + static_cast<std::uint32_t>(scene.unusedVertices) * vertexLength_;
        palette.write(stream_);
        writeVertices(scene.root);
        for (std::size_t n = scene.unusedVertices; n > 0; --n) newVertex().write(stream_);
    }

    /// In the order in which `writeNode` meets the nodes, so that each polygon's vertices follow
    /// the last one's.
    void writeVertices(const Node& node) {
        for (const auto& subface : node.subfaces_) writeVertices(*subface);
        const Point normal =
            node.directions_.empty() ? normalOf(node.points_) : node.directions_.front();
        for (std::size_t i = 0; i < node.points_.size(); ++i) {
            FltVertex vertex =
                vertexAt(node.points_[i], node.hasNormals_ ? &normal : nullptr, node.pointColors_);
            vertex.texture = textureAt(node, i);
            vertex.write(stream_);
        }
        for (const auto& child : node.children_) writeVertices(*child);
    }

    static FltTextureCoordinates textureAt(const Node& node, std::size_t i) {
        // Around the picture.
        if (node.isStretched_) return {i == 1 || i == 2 ? 1.F : 0.F, i > 1 ? 1.F : 0.F};
        // Seen from above, or from the side that the face looks to.
        constexpr double kTextureSide = 8;  // metres
        const Point& point = node.points_[i];
        const Point normal = normalOf(node.points_);
        const double x = std::abs(normal.x), y = std::abs(normal.y), z = std::abs(normal.z);
        const bool isWall = z < std::max(x, y);
        return {static_cast<float>((isWall && x > y ? point.y : point.x) / kTextureSide),
                static_cast<float>((isWall ? point.z : point.y) / kTextureSide)};
    }

    /// Without a normal where that is null.
    FltVertex vertexAt(const Point& point, const Point* normal,
                       const std::vector<std::uint32_t>& colors) {
        FltVertex vertex = newVertex(normal != nullptr);
        vertex.position = point;
        if (normal != nullptr)
            vertex.normal = {static_cast<float>(normal->x), static_cast<float>(normal->y),
                             static_cast<float>(normal->z)};
        if (!colors.empty()) {
            vertex.flags = 0;
            vertex.colorIndex = colorIndex(colors.front());
        }
        return vertex;
    }

    void writeLevel(const std::vector<std::unique_ptr<Node>>& nodes, std::uint16_t push,
                    std::uint16_t pop) {
        if (nodes.empty()) return;
        stream_.writeControl(push);
        for (const auto& node : nodes) writeNode(*node);
        stream_.writeControl(pop);
    }

    void writeNode(const Node& node) {
        node.record_->write(stream_);
        writeAncillaries(node);
        writeLevel(node.subfaces_, kFltPushSubface, kFltPopSubface);
        if (!node.points_.empty()) {
            stream_.writeControl(kFltPushLevel);
            writeVertexList(node.points_.size());
            if (node.layerScale_ > 0) writeLayer(node);
            stream_.writeControl(kFltPopLevel);
        }
        writeLevel(node.children_, kFltPushLevel, kFltPopLevel);
    }

    void writeAncillaries(const Node& node) {
        if (!node.longId_.empty()) {
            FltLongId record;
            record.name = node.longId_;
            record.write(stream_);
        }
        for (const auto& record : node.attached_) record->write(stream_);
        for (const std::string& text : node.comments_) writeComment(text);
        for (const Matrix& matrix : node.matrices_) {
            FltMatrix record;
            for (std::size_t row = 0; row < matrix.size(); ++row)
                std::ranges::copy(matrix[row], record.rows[row]);
            record.write(stream_);
        }
    }

    void writeLayer(const Node& node) {
        FltUvList list;
        list.mask = kFirstLayer;
        for (std::size_t i = 0; i < node.points_.size(); ++i) {
            const FltTextureCoordinates own = textureAt(node, i);
            list.coordinates.push_back({own.u * node.layerScale_, own.v * node.layerScale_});
        }
        list.write(stream_);
    }

    void writeVertexList(std::size_t count) {
        FltVertexList list;
        for (; count > 0; --count) list.offsets.push_back(offsets_[nextVertex_++]);
        list.write(stream_);
    }

    FltStream& stream_;
    bool hasTexture_;
    std::uint32_t vertexLength_;
    std::uint32_t plainLength_;  ///< of one without a normal
    std::uint32_t length_ = 0;   ///< of the palette so far
    std::vector<std::uint32_t> offsets_;
    std::size_t nextVertex_ = 0;
};

void FltScene::addTexture(const std::string& fileName) {
    FltTexture texture;
    fltSetText(texture.fileName, fileName);
    texture.index = static_cast<std::int32_t>(textures.size());
    textures.push_back(texture);
}

void writeSceneFile(const FltScene& scene, const std::filesystem::path& path) {
    std::filesystem::create_directories(path.parent_path());
    if (!writeScene(scene, base::textOf(path)))
        throw std::runtime_error("cannot write " + base::textOf(path));
}

FltDof dofAt(std::string_view id, const Point& origin) {
    FltDof dof;
    fltSetText(dof.asciiId, id);
    dof.origin = origin;
    dof.pointOnXAxis = {origin.x + 1, origin.y, origin.z};
    dof.pointInXyPlane = {origin.x, origin.y + 1, origin.z};
    dof.xScaleCurrent = dof.yScaleCurrent = dof.zScaleCurrent = 1;
    return dof;
}

bool writeScene(const FltScene& scene, const std::string& path) {
    FltStream stream;
    if (!stream.open(path, scene.header)) return false;
    FltSceneWriter(scene, stream).write(scene);
    return stream.close();
}

}  // namespace samples
