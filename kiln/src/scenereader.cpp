#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <nlohmann/json.hpp>
#include <set>
#include <tuple>

#include <kiln/memory.h>

#include "base64.h"
#include "changes.h"
#include "chunks.h"
#include "classes.h"
#include "scenefile.h"

namespace kiln {

namespace {

using Json = nlohmann::json;

struct Damage {
    std::string message;
};

/// A value of the file together with the way to it, which is only spelled out in a complaint.
class Place {
public:
    explicit Place(const Json& root) : json_(root) {}

    [[noreturn]] void complain(const std::string& what) const {
        // Of a long way both ends tell enough.
        constexpr std::size_t kShown = 60;
        std::string way = path();
        if (way.size() > 2 * kShown) way.replace(kShown, way.size() - 2 * kShown, "...");
        throw Damage{way + ": " + what};
    }

    Place operator[](std::string_view name) const {
        const Place member = find(name);
        if (!member.present()) complain("\"" + std::string(name) + "\" is missing");
        return member;
    }
    /// The member with that name, which need not be there.
    Place find(std::string_view name) const {
        if (!json_.is_object()) complain("must be an object");
        const auto member = json_.find(name);
        return member == json_.end() ? Place(kNothing, this, name, 0)
                                     : Place(*member, this, name, 0);
    }
    bool present() const { return &json_ != &kNothing; }

    std::size_t size() const {
        if (!json_.is_array()) complain("must be a list");
        return json_.size();
    }
    Place operator[](std::size_t index) const { return Place(json_[index], this, {}, index); }

    template <typename Visit>
    void forEach(Visit&& visit) const {
        for (std::size_t i = 0, count = size(); i < count; ++i) visit((*this)[i]);
    }

    bool boolean() const {
        if (!json_.is_boolean()) complain("must be true or false");
        return json_.get<bool>();
    }
    bool booleanOr(bool otherwise) const { return present() ? boolean() : otherwise; }
    /// Valid as long as the file.
    const std::string& text() const {
        if (!json_.is_string()) complain("must be a text");
        return json_.get_ref<const std::string&>();
    }
    DWORD word() const { return static_cast<DWORD>(below(std::uint64_t{1} << 32)); }
    /// A whole number from 0 to below `limit`.
    std::uint64_t below(std::uint64_t limit) const {
        if (!json_.is_number_unsigned()) complain("must be a whole number, not below 0");
        const auto value = json_.get<std::uint64_t>();
        if (value >= limit) complain(std::to_string(value) + " is out of range");
        return value;
    }
    double number() const {
        if (json_.is_number()) return json_.get<double>();
        if (json_.is_string()) return numberFromBits();
        complain("must be a number");
    }
    std::vector<BYTE> bytes() const {
        auto decoded = fromBase64(text());
        if (!decoded) complain("is not base64");
        return std::move(*decoded);
    }
    Class_ID classId() const {
        if (size() != 2) complain("must have two numbers");
        return Class_ID((*this)[0].word(), (*this)[1].word());
    }

private:
    Place(const Json& json, const Place* up, std::string_view name, std::size_t index)
        : json_(json), up_(up), name_(name), index_(index) {}

    double numberFromBits() const {
        const std::string& digits = text();
        std::uint64_t bits = 0;
        const char* const end = digits.data() + digits.size();
        if (digits.size() == 18 && digits.starts_with("0x")) {
            const auto parsed = std::from_chars(digits.data() + 2, end, bits, 16);
            if (parsed.ec == std::errc() && parsed.ptr == end) return std::bit_cast<double>(bits);
        }
        complain("must be a number");
    }

    std::string path() const {
        if (!up_) return "the file";
        std::string way = up_->up_ ? up_->path() : std::string();
        if (name_.empty()) return way.append("[").append(std::to_string(index_)).append("]");
        if (!way.empty()) way += '.';
        return way.append(name_);
    }

    static const Json kNothing;

    const Json& json_;
    const Place* up_ = nullptr;
    std::string_view name_;  // empty for an element of a list
    std::size_t index_ = 0;
};

const Json Place::kNothing;

Point3 pointAt(const Place& list, std::size_t first) {
    return {list[first].number(), list[first + 1].number(), list[first + 2].number()};
}

// The number of groups of `size` values in a list.
std::size_t groupsOf(const Place& list, std::size_t size) {
    const std::size_t count = list.size();
    if (count % size != 0)
        list.complain("must have a multiple of " + std::to_string(size) + " numbers");
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        list.complain("is too long");
    return count / size;
}

template <typename Point>
void readPoints(const Place& list, Tab<Point>& points) {
    const std::size_t count = groupsOf(list, 3);
    points.Resize(static_cast<int>(count));
    for (std::size_t i = 0; i < count; ++i) points.Append(Point(pointAt(list, 3 * i)));
}

Matrix3 matrixFrom(const Place& list) {
    if (list.size() != 12) list.complain("must have 12 numbers");
    return {pointAt(list, 0), pointAt(list, 3), pointAt(list, 6), pointAt(list, 9)};
}

void readMesh(const Place& json, Mesh& mesh) {
    readPoints(json["vertices"], mesh.verts);
    const Place faces = json["faces"];
    for (std::size_t i = 0, count = groupsOf(faces, 5); i < count; ++i) {
        Face face;
        for (std::size_t corner = 0; corner < 3; ++corner)
            face.v[corner] = faces[5 * i + corner].word();
        face.flags = faces[5 * i + 3].word();
        face.smGroup = faces[5 * i + 4].word();
        mesh.faces.Append(face);
    }
    if (const Place list = json.find("textureVertices"); list.present())
        readPoints(list, mesh.tVerts);
    if (const Place list = json.find("textureFaces"); list.present())
        for (std::size_t i = 0, count = groupsOf(list, 3); i < count; ++i)
            mesh.tvFaces.Append(
                {{list[3 * i].word(), list[3 * i + 1].word(), list[3 * i + 2].word()}});
    if (const Place list = json.find("normals"); list.present()) readPoints(list, mesh.normals);
    if (const Place list = json.find("colors"); list.present())
        list.forEach([&](const Place& color) { mesh.colors.Append(color.word()); });
    if (!mesh.IsConsistent()) json.complain("indices and list lengths do not fit together");
}

void readState(const Place& json, ReferenceTarget& thing) {
    const Place state = json.find("state");
    const std::vector<BYTE> bytes = state.present() ? state.bytes() : std::vector<BYTE>();
    if (!thing.LoadState(bytes.data(), bytes.size()))
        (state.present() ? state : json).complain("is refused by the plug-in that saved it");
}

using ChunkIds = std::set<std::tuple<Class_ID, SClass_ID, DWORD>>;

void readChunk(const Place& json, ChunkIds& ids, ChunkAppender& chunks) {
    const Class_ID id = json["class"].classId();
    const SClass_ID super = json["super"].word();
    const DWORD sub = json["sub"].word();
    const Place data = json["data"];
    const std::vector<BYTE> bytes = data.bytes();
    if (bytes.size() != json["length"].word()) data.complain("does not have the chunk's length");
    if (!ids.emplace(id, super, sub).second) json.complain("is there twice");
    void* const block = KILN_malloc(bytes.size());
    if (!block) throw std::bad_alloc();
    if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
    if (!chunks.append({id, super, sub, static_cast<DWORD>(bytes.size()), block})) {
        KILN_free(block);
        throw std::bad_alloc();
    }
}

template <typename T>
struct Release {
    void operator()(T* thing) const { thing->ReleaseReference(); }
};
/// One reference.
template <typename T>
using Held = std::unique_ptr<T, Release<T>>;

template <typename T>
Held<T> createHeld(const Place& json, SClass_ID superClass) {
    const Place id = json["class"];
    T* const thing = static_cast<T*>(createOrStandIn(superClass, id.classId()).release());
    if (!thing) id.complain("is a class of the host's own that has another super class");
    thing->AddReference();
    return Held<T>(thing);
}

// `depth` is how many attributes the thing is within, itself counted.
void readExtras(const Place& json, Animatable& thing, int depth = 0) {
    if (const Place chunks = json.find("chunks"); chunks.present()) {
        ChunkIds ids;
        ChunkAppender appender(thing);
        chunks.forEach([&](const Place& chunk) { readChunk(chunk, ids, appender); });
    }
    const Place attributes = json.find("attributes");
    if (!attributes.present()) return;
    if (depth == kDeepestAttribute) attributes.complain(kTooDeep);
    ICustAttribContainer* const container = thing.AllocCustAttribContainer();
    if (!container) throw std::bad_alloc();
    attributes.forEach([&](const Place& one) {
        const auto attribute = createHeld<CustAttrib>(one, CUST_ATTRIB_CLASS_ID);
        readState(one, *attribute);
        readExtras(one, *attribute, depth + 1);
        if (!container->AppendCustAttrib(attribute.get())) throw std::bad_alloc();
    });
}

// What an object of a class of the host's own keeps.
void readOwnState(const Place& json, Object& object) {
    const Class_ID id = object.ClassID();
    if (object.SuperClassID() == LIGHT_CLASS_ID) {
        auto& light = static_cast<GenLight&>(object);
        light.SetColor(json["color"].word());
        light.SetIntensity(json["intensity"].number());
        light.SetUseLight(json["on"].boolean());
    } else if (id == TRIOBJ_CLASS_ID) {
        readMesh(json["mesh"], static_cast<TriObject&>(object).GetMesh());
    } else if (id == BOXOBJ_CLASS_ID) {
        const Place size = json["size"];
        if (size.size() != 3) size.complain("must have 3 numbers");
        static_cast<BoxObject&>(object).SetSize(size[0].number(), size[1].number(),
                                                size[2].number());
    } else if (id == DUMMY_CLASS_ID) {
        static_cast<DummyObject&>(object).SetSize(json["size"].number());
    } else if (id == SPLINESHAPE_CLASS_ID) {
        auto& spline = static_cast<SplineShape&>(object);
        readPoints(json["points"], spline.GetPoints());
        spline.SetClosed(json["closed"].boolean());
        spline.SetRenderable(json["renderable"].boolean());
    }
}

class Reader {
public:
    Reader(const Place& file, Scene& scene) : file_(file), scene_(scene) {}

    void run() {
        readHead();
        readExtras(file_["root"], *scene_.root());
        file_["texmaps"].forEach([&](const Place& json) { readTexmap(json); });
        file_["objects"].forEach([&](const Place& json) { readObject(json); });
        file_["nodes"].forEach([&](const Place& json) { readNode(json); });
        file_["selection"].forEach(
            [&](const Place& json) { scene_.select(nodes_[json.below(nodes_.size())]); });
    }

private:
    void readHead() const {
        const Place format = file_["format"];
        if (format.text() != kSceneFormat) format.complain("is not that of a scene file");
        const Place version = file_["version"];
        const DWORD number = version.word();
        if (number == 0 || number > kSceneVersion)
            version.complain(std::to_string(number) + " is not known to this host");
    }

    void readTexmap(const Place& json) {
        auto map = createHeld<Texmap>(json, TEXMAP_CLASS_ID);
        map->SetName(json["name"].text().c_str());
        if (map->ClassID() == BMTEX_CLASS_ID)
            static_cast<BitmapTex&>(*map).SetMapName(json["file"].text().c_str());
        else
            readState(json, *map);
        readExtras(json, *map);
        if (json.find("listed").booleanOr(true)) scene_.addTexmap(map.get());
        maps_.push_back(std::move(map));
    }

    void readObject(const Place& json) {
        const Place super = json["super"];
        if (!isObjectSuperClass(super.word())) super.complain("is not that of an object");
        auto object = createHeld<Object>(json, super.word());
        if (isBuiltIn(object->SuperClassID(), object->ClassID()))
            readOwnState(json, *object);
        else
            readState(json, *object);
        readExtras(json, *object);
        objects_.push_back(std::move(object));
    }

    void readNode(const Place& json) {
        Object* object = nullptr;
        if (const Place index = json.find("object"); index.present())
            object = objects_[index.below(objects_.size())].get();
        // Only nodes that come before can be parents, so that no node is above itself.
        Node* parent = scene_.root();
        if (const Place index = json.find("parent"); index.present())
            parent = nodes_[index.below(nodes_.size())];
        Node* const node = scene_.createNode(object, json["name"].text(), parent);
        nodes_.push_back(node);
        if (const Place index = json.find("texmap"); index.present())
            node->SetTexmap(maps_[index.below(maps_.size())].get());
        if (const Place transform = json.find("transform"); transform.present())
            node->SetLocalTM(0, matrixFrom(transform));
        node->Hide(json.find("hidden").booleanOr(false));
        node->SetGroupHead(json.find("groupHead").booleanOr(false));
        node->SetGroupMember(json.find("groupMember").booleanOr(false));
        node->SetWireColor(json["wire"].word());
        readExtras(json, *node);
    }

    const Place& file_;
    Scene& scene_;
    std::vector<Held<Texmap>> maps_;
    std::vector<Held<Object>> objects_;
    std::vector<Node*> nodes_;
};

// The library's own words for where the text stops being JSON, without its prefixes.
std::string syntaxComplaint(const Json::parse_error& error) {
    const std::string text = error.what();
    const std::size_t start = text.find("parse error");
    return "is damaged: " + (start == std::string::npos ? text : text.substr(start));
}

}  // namespace

Status readScene(const std::string& text, const std::string& path, Scene& scene) try {
    const Json json = Json::parse(text);
    Reader(Place(json), scene).run();
    return {};
} catch (const Json::parse_error& error) {
    return Status::failure(path + ": " + syntaxComplaint(error));
} catch (const Damage& damage) {
    return Status::failure(path + ": is damaged at " + damage.message);
} catch (const std::bad_alloc&) {
    return Status::failure(path + ": there is not enough memory");
} catch (const std::exception& error) {
    return Status::failure(path + ": cannot be read: " + error.what());
}

}  // namespace kiln
