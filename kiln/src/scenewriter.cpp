#include <array>
#include <bit>
#include <cmath>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <unordered_map>

#include "base64.h"
#include "chunks.h"
#include "classes.h"
#include "scenefile.h"

namespace kiln {

namespace {

using Json = nlohmann::ordered_json;

// JSON has no infinities and no NaN: those are written as their bits.
Json numberJson(double value) {
    if (std::isfinite(value)) return value;
    char text[24];
    std::snprintf(text, sizeof text, "0x%016llx",
                  static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
    return text;
}

void appendPoint(Json& list, const Point3& point) {
    for (const double value : {point.x, point.y, point.z}) list.push_back(numberJson(value));
}

template <typename Point>
Json pointsJson(const Tab<Point>& points) {
    Json list = Json::array();
    for (const Point& point : points) appendPoint(list, point);
    return list;
}

// Bit for bit: a minus zero is written too.
bool isPlainIdentity(const Matrix3& matrix) {
    using Bits = std::array<std::uint64_t, 12>;
    return std::bit_cast<Bits>(matrix) == std::bit_cast<Bits>(Matrix3());
}

Json matrixJson(const Matrix3& matrix) {
    Json list = Json::array();
    for (int row = 0; row < 4; ++row) appendPoint(list, matrix.GetRow(row));
    return list;
}

Json classJson(const Class_ID& id) {
    return Json::array({id.PartA(), id.PartB()});
}

Json meshJson(const Mesh& mesh) {
    Json json = {{"vertices", pointsJson(mesh.verts)}};
    Json faces = Json::array();
    for (const Face& face : mesh.faces)
        for (const DWORD value : {face.v[0], face.v[1], face.v[2], face.flags, face.smGroup})
            faces.push_back(value);
    json["faces"] = std::move(faces);
    if (!mesh.tVerts.IsEmpty()) json["textureVertices"] = pointsJson(mesh.tVerts);
    if (!mesh.tvFaces.IsEmpty()) {
        Json list = Json::array();
        for (const TVFace& face : mesh.tvFaces)
            for (const DWORD value : face.t) list.push_back(value);
        json["textureFaces"] = std::move(list);
    }
    if (!mesh.normals.IsEmpty()) json["normals"] = pointsJson(mesh.normals);
    if (!mesh.colors.IsEmpty()) {
        Json list = Json::array();
        for (const COLORREF color : mesh.colors) list.push_back(color);
        json["colors"] = std::move(list);
    }
    return json;
}

void putState(Json& json, const ReferenceTarget& thing) {
    const std::vector<BYTE> state = thing.SaveState();
    if (!state.empty()) json["state"] = toBase64(state.data(), state.size());
}

// Chunks and custom attributes.
void putExtras(Json& json, const Animatable& thing, int depth = 0) {
    Json chunks = Json::array();
    forEachChunk(thing, [&](const AppDataChunk& chunk) {
        chunks.push_back({{"class", classJson(chunk.clID)},
                          {"super", chunk.sclID},
                          {"sub", chunk.subID},
                          {"length", chunk.length},
                          {"data", toBase64(static_cast<const BYTE*>(chunk.data), chunk.length)}});
    });
    if (!chunks.empty()) json["chunks"] = std::move(chunks);

    const ICustAttribContainer* const container = thing.GetCustAttribContainer();
    if (!container) return;
    if (depth == kDeepestAttribute) throw std::length_error(kTooDeep);
    Json attributes = Json::array();
    for (int i = 0; i < container->GetNumCustAttribs(); ++i) {
        const CustAttrib& attribute = *container->GetCustAttrib(i);
        Json one = {{"class", classJson(attribute.ClassID())}};
        putState(one, attribute);
        putExtras(one, attribute, depth + 1);
        attributes.push_back(std::move(one));
    }
    json["attributes"] = std::move(attributes);
}

// What an object of a class of the host's own keeps.
void putOwnState(Json& json, const Object& object) {
    const Class_ID id = object.ClassID();
    if (object.SuperClassID() == LIGHT_CLASS_ID) {
        const auto& light = static_cast<const GenLight&>(object);
        json["color"] = light.GetColor();
        json["intensity"] = numberJson(light.GetIntensity());
        json["on"] = light.GetUseLight();
    } else if (id == TRIOBJ_CLASS_ID) {
        json["mesh"] = meshJson(static_cast<const TriObject&>(object).GetMesh());
    } else if (id == BOXOBJ_CLASS_ID) {
        const auto& box = static_cast<const BoxObject&>(object);
        json["size"] = Json::array(
            {numberJson(box.GetLength()), numberJson(box.GetWidth()), numberJson(box.GetHeight())});
    } else if (id == DUMMY_CLASS_ID) {
        json["size"] = numberJson(static_cast<const DummyObject&>(object).GetSize());
    } else if (id == SPLINESHAPE_CLASS_ID) {
        const auto& spline = static_cast<const SplineShape&>(object);
        json["points"] = pointsJson(spline.GetPoints());
        json["closed"] = spline.IsClosed();
        json["renderable"] = spline.IsRenderable();
    }
}

Json objectJson(const Object& object) {
    Json json = {{"super", object.SuperClassID()}, {"class", classJson(object.ClassID())}};
    if (isBuiltIn(object.SuperClassID(), object.ClassID()))
        putOwnState(json, object);
    else
        putState(json, object);
    putExtras(json, object);
    return json;
}

Json texmapJson(const Texmap& map, bool listed) {
    Json json = {{"class", classJson(map.ClassID())}, {"name", map.GetName()}};
    if (map.ClassID() == BMTEX_CLASS_ID)
        json["file"] = static_cast<const BitmapTex&>(map).GetMapName();
    else
        putState(json, map);
    if (!listed) json["listed"] = false;
    putExtras(json, map);
    return json;
}

/// Things that several nodes may share, in the order they were met.
template <typename T>
class Shared {
public:
    void add(T* thing) {
        if (thing && indices_.emplace(thing, things_.size()).second) things_.push_back(thing);
    }
    std::size_t indexOf(T* thing) const { return indices_.at(thing); }
    const std::vector<T*>& things() const { return things_; }

private:
    std::vector<T*> things_;
    std::unordered_map<const T*, std::size_t> indices_;
};

class Writer {
public:
    explicit Writer(const Scene& scene) : scene_(scene), nodes_(subtreeOf(scene.root())) {
        nodes_.erase(nodes_.begin());
        for (std::size_t i = 0; i < nodes_.size(); ++i) indices_.emplace(nodes_[i], i);
        for (Texmap* const map : scene.texmaps()) maps_.add(map);
        for (const Node* const node : nodes_) {
            objects_.add(node->GetObjectRef());
            maps_.add(node->GetTexmap());
        }
    }

    std::string text() {
        text_ = "{\n\"format\": \"" + std::string(kSceneFormat) +
                "\",\n\"version\": " + std::to_string(kSceneVersion) + ",\n\"root\": ";
        Json root = Json::object();
        putExtras(root, *scene_.root());
        append(root);
        const std::size_t listed = scene_.texmaps().size();
        section("texmaps", maps_.things(), [&](const Texmap* map) {
            return texmapJson(*map, maps_.indexOf(const_cast<Texmap*>(map)) < listed);
        });
        section("objects", objects_.things(), [](const Object* one) { return objectJson(*one); });
        section("nodes", nodes_, [&](const Node* node) { return nodeJson(*node); });
        text_ += ",\n\"selection\": ";
        Json selection = Json::array();
        scene_.selection().forEach([&](Node* node) { selection.push_back(indices_.at(node)); });
        append(selection);
        text_ += "\n}\n";
        return std::move(text_);
    }

private:
    void append(const Json& json) {
        text_ += json.dump(-1, ' ', false, Json::error_handler_t::replace);
    }

    template <typename T, typename ToJson>
    void section(const char* name, const std::vector<T*>& things, ToJson&& toJson) {
        text_ += ",\n\"" + std::string(name) + "\": [";
        const char* separator = "\n";
        for (const T* const thing : things) {
            text_ += separator;
            append(toJson(thing));
            separator = ",\n";
        }
        text_ += things.empty() ? "]" : "\n]";
    }

    Json nodeJson(const Node& node) const {
        Json json = {{"name", node.name()}};
        if (node.parent() != scene_.root()) json["parent"] = indices_.at(node.parent());
        if (Object* const object = node.GetObjectRef()) json["object"] = objects_.indexOf(object);
        if (Texmap* const map = node.GetTexmap()) json["texmap"] = maps_.indexOf(map);
        if (!isPlainIdentity(node.GetLocalTM(0)))
            json["transform"] = matrixJson(node.GetLocalTM(0));
        if (node.IsHidden()) json["hidden"] = true;
        if (node.IsGroupHead()) json["groupHead"] = true;
        if (node.IsGroupMember()) json["groupMember"] = true;
        json["wire"] = node.GetWireColor();
        putExtras(json, node);
        return json;
    }

    const Scene& scene_;
    std::vector<Node*> nodes_;  // parents before children, siblings in order; without the root
    std::unordered_map<const Node*, std::size_t> indices_;
    Shared<Texmap> maps_;
    Shared<Object> objects_;
    std::string text_;
};

}  // namespace

std::string writtenScene(const Scene& scene) {
    return Writer(scene).text();
}

}  // namespace kiln
