#include "fltscene.h"

#include <quillon/fltcomment.h>
#include <quillon/fltopcode.h>

#include <cmath>

namespace samples {

namespace {

constexpr std::uint32_t kFullIntensity = 127;
constexpr std::uint32_t kIntensities = 128;
constexpr std::uint32_t kPaletteColors = 1024;
constexpr std::uint32_t kVertexLength = 56;
constexpr std::uint32_t kPaletteHeader = 8;

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

std::uint32_t colorIndex(std::uint32_t color) {
    return color * kIntensities + kFullIntensity;
}

FltFace faceOfColor(std::uint32_t color) {
    constexpr std::uint32_t kNoAlternateColor = 0x20000000;
    constexpr std::uint8_t kLit = 2;  // the face's colour under the lights
    FltFace face;
    face.flags = kNoAlternateColor;
    face.primaryColorIndex = colorIndex(color);
    face.lightMode = kLit;
    return face;
}

}  // namespace

Node& Node::append(std::vector<std::unique_ptr<Node>>& nodes, std::unique_ptr<FltRecord> record,
                   std::string longId) {
    nodes.push_back(std::make_unique<Node>(std::move(record)));
    nodes.back()->longId_ = std::move(longId);
    return *nodes.back();
}

Node& Node::addFace(Polygon polygon, std::uint32_t color) {
    Node& face = add(faceOfColor(color));
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
    explicit FltSceneWriter(FltStream& stream) : stream_(stream) {}

    void write(const FltScene& scene) {
        writeColors(scene.colors);
        for (FltLightSourcePalette light : scene.lights) light.write(stream_);
        writeVertexPalette(scene.root);
        if (!scene.comment.empty()) writeComment(scene.comment);
        writeLevel(scene.root.children_, kFltPushLevel, kFltPopLevel);
    }

private:
    FltToken& begin(std::uint16_t opcode) {
        FltToken& token = stream_.token();
        token.begin(opcode);
        return token;
    }

    void end() { stream_.writeToken(stream_.token()); }

    void writeControl(std::uint16_t opcode) {
        begin(opcode);
        end();
    }

    void writeComment(const std::string& text) { FltComment(text.c_str()).write(stream_); }

    void writeColors(const std::vector<Rgb>& colors) {
        FltToken& token = begin(kFltColorPalette);
        token.skip(128);
        for (std::size_t i = 0; i < kPaletteColors; ++i) {
            const Rgb color = i < colors.size() ? colors[i] : Rgb{255, 255, 255};
            const std::uint8_t packed[] = {255, color.blue, color.green, color.red};
            token.writeBytes(sizeof packed, packed);
        }
        end();
    }

    static std::uint32_t countPoints(const Node& node) {
        auto count = static_cast<std::uint32_t>(node.points_.size());
        for (const auto& subface : node.subfaces_) count += countPoints(*subface);
        for (const auto& child : node.children_) count += countPoints(*child);
        return count;
    }

    void writeVertexPalette(const Node& root) {
        FltToken& token = begin(kFltVertexPalette);
        token.writeInt32<std::uint32_t>(kPaletteHeader + countPoints(root) * kVertexLength);
        end();
        writeVertices(root);
    }

    /// In the order in which `writeNode` meets the nodes, so that each polygon's vertices follow
    /// the last one's.
    void writeVertices(const Node& node) {
        for (const auto& subface : node.subfaces_) writeVertices(*subface);
        const Point normal = normalOf(node.points_);
        for (const Point& point : node.points_) writeVertex(point, normal, node.pointColors_);
        for (const auto& child : node.children_) writeVertices(*child);
    }

    void writeVertex(const Point& point, const Point& normal,
                     const std::vector<std::uint32_t>& colors) {
        constexpr std::uint16_t kNoColor = 0x2000;
        FltToken& token = begin(kFltVertexWithNormal);
        token.writeInt16<std::int16_t>(-1);
        token.writeInt16<std::uint16_t>(colors.empty() ? kNoColor : 0);
        for (const double value : {point.x, point.y, point.z}) token.writeDouble(value);
        for (const double value : {normal.x, normal.y, normal.z}) {
            token.writeFloat(static_cast<float>(value));
        }
        token.writeInt32<std::uint32_t>(0xFFFFFFFF);
        token.writeInt32<std::uint32_t>(colors.empty() ? 0xFFFFFFFF : colorIndex(colors.front()));
        token.skip(4);
        end();
    }

    void writeLevel(const std::vector<std::unique_ptr<Node>>& nodes, std::uint16_t push,
                    std::uint16_t pop) {
        if (nodes.empty()) return;
        writeControl(push);
        for (const auto& node : nodes) writeNode(*node);
        writeControl(pop);
    }

    void writeNode(const Node& node) {
        node.record_->write(stream_);
        writeAncillaries(node);
        writeLevel(node.subfaces_, kFltPushSubface, kFltPopSubface);
        if (!node.points_.empty()) {
            writeControl(kFltPushLevel);
            writeVertexList(node.points_.size());
            writeControl(kFltPopLevel);
        }
        writeLevel(node.children_, kFltPushLevel, kFltPopLevel);
    }

    void writeAncillaries(const Node& node) {
        if (!node.longId_.empty()) {
            FltToken& token = begin(kFltLongId);
            token.writeBytes(static_cast<std::uint32_t>(node.longId_.size() + 1),
                             node.longId_.c_str());
            end();
        }
        for (const std::string& text : node.comments_) writeComment(text);
        for (const Matrix& matrix : node.matrices_) {
            FltToken& token = begin(kFltMatrix);
            for (const auto& row : matrix) {
                for (const float value : row) token.writeFloat(value);
            }
            end();
        }
    }

    void writeVertexList(std::size_t count) {
        FltToken& token = begin(kFltVertexList);
        for (std::size_t i = 0; i < count; ++i) {
            token.writeInt32<std::uint32_t>(kPaletteHeader + nextVertex_++ * kVertexLength);
        }
        end();
    }

    FltStream& stream_;
    std::uint32_t nextVertex_ = 0;
};

bool writeScene(const FltScene& scene, const std::string& path) {
    FltStream stream;
    if (!stream.open(path, scene.header)) return false;
    FltSceneWriter(stream).write(scene);
    return stream.close();
}

}  // namespace samples
