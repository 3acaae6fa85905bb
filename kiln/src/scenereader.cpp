#include <kiln/memory.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "base64.h"
#include "changes.h"
#include "chunks.h"
#include "classes.h"
#include "json.h"
#include "scenefile.h"
#include "texts.h"

namespace kiln {

namespace {

using Kind = JsonToken::Kind;

struct Damage {
    std::string message;
    const char* at;  ///< in the reader's memory; null where there is no single place
    ImpExpCause cause = ImpExpCause::kDamaged;
};
struct Cancelled {};

/// A value of the file together with the way to it, which is only spelled out in a complaint.
class Place {
public:
    /// The whole file.
    Place() = default;
    /// A member of the file, or an element of such a member, which is read by itself.
    Place(const JsonToken& token, const Place& up, std::string_view name)
        : Place(&token, &up, name, 0) {}
    Place(const JsonToken& token, const Place& up, std::size_t index)
        : Place(&token, &up, {}, index) {}
    /// A list of the file whose elements are read one by one.
    Place(const Place& up, std::string_view name) : Place(nullptr, &up, name, 0) {}

    [[noreturn]] void complain(const std::string& what,
                               ImpExpCause cause = ImpExpCause::kDamaged) const {
        // Of a long way both ends tell enough.
        constexpr std::size_t kShown = 60;
        std::string way = path();
        if (way.size() > 2 * kShown) way.replace(kShown, way.size() - 2 * kShown, "...");
        throw Damage{way + ": " + what, token_ ? token_->text : nullptr, cause};
    }
    [[noreturn]] void complainOfMissing(std::string_view name) const {
        complain("\"" + std::string(name) + "\" is missing");
    }

    Place operator[](std::string_view name) const {
        const Place member = find(name);
        if (!member.present()) complainOfMissing(name);
        return member;
    }
    /// The member with that name, which need not be there.
    Place find(std::string_view name) const {
        if (token_->kind != Kind::kObject) complain("must be an object");
        if ((token_->initials & JsonToken::initial(name.front())) == 0)
            return Place(nullptr, this, name, 0);
        const JsonToken* at = token_ + 1;
        for (std::size_t i = 0; i < token_->count; ++i, at += 1 + at[1].span)
            if (isName(*at, name)) return Place(at + 1, this, name, 0);
        return Place(nullptr, this, name, 0);
    }
    bool present() const { return token_ != nullptr; }

    std::size_t size() const {
        if (token_->kind != Kind::kList && token_->kind != Kind::kNumbers)
            complain("must be a list");
        return token_->count;
    }
    /// Visits the elements of a list of objects.
    template <typename Visit>
    void forEach(Visit&& visit) const {
        const std::size_t count = size();
        if (token_->kind == Kind::kNumbers)
            Place(token_, this, {}, 0).complain("must be an object");
        const JsonToken* at = token_ + 1;
        for (std::size_t i = 0; i < count; ++i, at += at->span) visit(Place(at, this, {}, i));
    }

    bool boolean() const {
        if (token_->kind != Kind::kTrue && token_->kind != Kind::kFalse)
            complain("must be true or false");
        return token_->kind == Kind::kTrue;
    }
    bool booleanOr(bool otherwise) const { return present() ? boolean() : otherwise; }
    std::string text() const {
        std::string text;
        readText(text);
        return text;
    }
    DWORD word() const { return static_cast<DWORD>(below(std::uint64_t{1} << 32)); }
    /// A whole number from 0 to below `limit`.
    std::uint64_t below(std::uint64_t limit) const {
        const char* at = token_->text;
        std::uint64_t value = 0;
        if (token_->kind != Kind::kNumber || !readJsonNumber(at, value)) complain(kNoWholeNumber);
        if (value >= limit) complain(outOfRange(value));
        return value;
    }
    double number() const {
        double value = 0;
        const char* at = token_->text;
        if (token_->kind == Kind::kText) return numberFromBits();
        if (token_->kind != Kind::kNumber || !readJsonNumber(at, value))
            complain("must be a number");
        return value;
    }
    /// The bytes that a base64 text stands for, in memory that `allocate` makes for so many.
    template <typename Allocate>
    std::size_t bytes(Allocate&& allocate) const {
        std::string scratch;
        const std::string_view text = plainText(scratch);
        const std::optional<std::size_t> size = base64Size(text);
        if (!size || !fromBase64(text, allocate(*size))) complain("is not base64");
        return *size;
    }
    Class_ID classId() const;

private:
    friend class Elements;
    static constexpr const char* kNoWholeNumber = "must be a whole number, not below 0";
    static std::string outOfRange(std::uint64_t value) {
        return std::to_string(value) + " is out of range";
    }

    Place(const JsonToken* token, const Place* up, std::string_view name, std::size_t index)
        : token_(token), up_(up), name_(name), index_(index) {}

    static bool isName(const JsonToken& token, std::string_view name) {
        if (token.plain)
            return token.length == name.size() && *token.text == name.front() &&
                   std::string_view(token.text, token.length) == name;
        std::string text;
        return appendJsonText(token, text) && text == name;
    }

    void readText(std::string& text) const {
        if (token_->kind != Kind::kText) complain("must be a text");
        if (!appendJsonText(*token_, text)) complain("is not UTF-8");
    }
    // The text where it stands, if it stands there as it is.
    std::string_view plainText(std::string& scratch) const {
        if (token_->kind == Kind::kText && token_->plain) return {token_->text, token_->length};
        readText(scratch);
        return scratch;
    }

    double numberFromBits() const {
        std::string scratch;
        const std::string_view digits = plainText(scratch);
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

    const JsonToken* token_ = nullptr;  // null for the file, and for what is not there
    const Place* up_ = nullptr;
    std::string_view name_;  // empty for an element of a list
    std::size_t index_ = 0;
};

/// The numbers of a list, one after the other. There are as many to take as the list has.
class Elements {
public:
    explicit Elements(const Place& list)
        : list_(list),
          isPacked_(list.token_->kind == Kind::kNumbers),
          count_(list.size()),
          token_(list.token_ + 1),
          at_(list.token_->text) {}

    double number() { return isPacked_ ? packed<double>("must be a number") : element().number(); }
    /// The nearest single.
    float single() {
        return isPacked_ ? packed<float>("must be a number")
                         : static_cast<float>(element().number());
    }
    DWORD word() { return static_cast<DWORD>(below(std::uint64_t{1} << 32)); }
    std::uint64_t below(std::uint64_t limit) {
        if (!isPacked_) return element().below(limit);
        const auto value = packed<std::uint64_t>(Place::kNoWholeNumber);
        if (value >= limit) complain(at_, index_ - 1, Place::outOfRange(value));
        return value;
    }

private:
    template <typename T>
    T packed(const char* otherwise) {
        // Most numbers of a scene have one digit.
        if (at_[0] >= '0' && at_[0] <= '9' && at_[1] == ',' && index_ + 1 < count_) {
            const T digit = static_cast<T>(at_[0] - '0');
            at_ += 2;
            ++index_;
            return digit;
        }
        skipJsonBlanks(at_);
        const char* const start = at_;
        T value{};
        if (!readJsonNumber(at_, value) || !endsNumber()) complain(start, index_, otherwise);
        ++index_;
        return value;
    }
    // A comma follows on every number but the last.
    bool endsNumber() {
        skipJsonBlanks(at_);
        const bool isLast = index_ + 1 == count_;
        return *at_++ == (isLast ? ']' : ',');
    }
    [[noreturn]] void complain(const char* at, std::size_t index, const std::string& what) const {
        const JsonToken token{at, 0, 0, 1, Kind::kNumber, true};
        Place(&token, &list_, {}, index).complain(what);
    }
    Place element() {
        const Place place(token_, &list_, {}, index_++);
        token_ += token_->span;
        return place;
    }

    const Place& list_;
    const bool isPacked_;
    const std::size_t count_;
    std::size_t index_ = 0;
    const JsonToken* token_;  // of elements that have one
    const char* at_;          // where the next number stands in a list that is one token
};

Class_ID Place::classId() const {
    if (size() != 2) complain("must have two numbers");
    Elements numbers(*this);
    const DWORD a = numbers.word();
    return Class_ID(a, numbers.word());
}

Point3 nextPoint(Elements& numbers) {
    Point3 point;
    for (double* const value : {&point.x, &point.y, &point.z}) *value = numbers.number();
    return point;
}

void append(Tab<Point3>& points, Elements& numbers) {
    points.Append(nextPoint(numbers));
}
void append(Tab<Point3f>& points, Elements& numbers) {
    Point3f point;
    for (float* const value : {&point.x, &point.y, &point.z}) *value = numbers.single();
    points.Append(point);
}

// The number of groups of `size` values in a list.
int groupsOf(const Place& list, std::size_t size) {
    const std::size_t count = list.size();
    if (count % size != 0)
        list.complain("must have a multiple of " + std::to_string(size) + " numbers");
    if (count > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        list.complain("is too long");
    return static_cast<int>(count / size);
}

template <typename Point>
void readPoints(const Place& list, Tab<Point>& points) {
    const int count = groupsOf(list, 3);
    points.Resize(count);
    Elements numbers(list);
    for (int i = 0; i < count; ++i) append(points, numbers);
}

Matrix3 matrixFrom(const Place& list) {
    if (list.size() != 12) list.complain("must have 12 numbers");
    Elements numbers(list);
    Point3 rows[4];
    for (Point3& row : rows) row = nextPoint(numbers);
    return {rows[0], rows[1], rows[2], rows[3]};
}

void readFaces(const Place& list, Tab<Face>& faces) {
    const int count = groupsOf(list, 5);
    faces.Resize(count);
    Elements numbers(list);
    for (int i = 0; i < count; ++i) {
        Face face;
        for (DWORD& corner : face.v) corner = numbers.word();
        face.flags = numbers.word();
        face.smGroup = numbers.word();
        faces.Append(face);
    }
}

void readTextureFaces(const Place& list, Tab<TVFace>& faces) {
    const int count = groupsOf(list, 3);
    faces.Resize(count);
    Elements numbers(list);
    for (int i = 0; i < count; ++i) {
        TVFace face;
        for (DWORD& corner : face.t) corner = numbers.word();
        faces.Append(face);
    }
}

void readColors(const Place& list, Tab<COLORREF>& colors) {
    const int count = groupsOf(list, 1);
    colors.Resize(count);
    Elements numbers(list);
    for (int i = 0; i < count; ++i) colors.Append(numbers.word());
}

void readMesh(const Place& json, Mesh& mesh) {
    readPoints(json["vertices"], mesh.verts);
    readFaces(json["faces"], mesh.faces);
    if (const Place list = json.find("textureVertices"); list.present())
        readPoints(list, mesh.tVerts);
    if (const Place list = json.find("textureFaces"); list.present())
        readTextureFaces(list, mesh.tvFaces);
    if (const Place list = json.find("normals"); list.present()) readPoints(list, mesh.normals);
    if (const Place list = json.find("colors"); list.present()) readColors(list, mesh.colors);
    if (!mesh.IsConsistent()) json.complain("indices and list lengths do not fit together");
}

void readState(const Place& json, ReferenceTarget& thing) {
    const Place state = json.find("state");
    std::vector<BYTE> bytes;
    if (state.present())
        state.bytes([&](std::size_t size) {
            bytes.resize(size);
            return bytes.data();
        });
    if (!thing.LoadState(bytes.data(), bytes.size()))
        (state.present() ? state : json).complain("is refused by the plug-in that saved it");
}

struct FreeBlock {
    void operator()(BYTE* block) const { KILN_free(block); }
};

/// The chunks of one thing.
class ChunkReader {
public:
    explicit ChunkReader(Animatable& thing) : chunks_(thing) {}

    void read(const Place& list) {
        list.forEach([this](const Place& json) { readChunk(json); });
        refuseTwins(list);
    }

private:
    using Id = std::tuple<DWORD, DWORD, SClass_ID, DWORD>;

    void readChunk(const Place& json) {
        const Class_ID id = json["class"].classId();
        const SClass_ID super = json["super"].word();
        const DWORD sub = json["sub"].word();
        const Place data = json["data"];
        std::unique_ptr<BYTE, FreeBlock> block;
        const std::size_t size = data.bytes([&](std::size_t bytes) {
            block.reset(static_cast<BYTE*>(KILN_malloc(bytes)));
            if (!block) throw std::bad_alloc();
            return block.get();
        });
        if (size != json["length"].word()) data.complain("does not have the chunk's length");
        if (!chunks_.append({id, super, sub, static_cast<DWORD>(size), block.get()}))
            throw std::bad_alloc();
        static_cast<void>(block.release());
        ids_.emplace_back(Id(id.PartA(), id.PartB(), super, sub), ids_.size());
    }

    // Complains of the first chunk that has the ids of one before it.
    void refuseTwins(const Place& list) {
        if (ids_.size() < 2) return;
        std::ranges::sort(ids_);
        std::size_t first = ids_.size();
        for (std::size_t i = 1; i < ids_.size(); ++i)
            if (ids_[i].first == ids_[i - 1].first) first = std::min(first, ids_[i].second);
        if (first == ids_.size()) return;
        std::size_t index = 0;
        list.forEach([&](const Place& json) {
            if (index++ == first) json.complain("is there twice");
        });
    }

    ChunkAppender chunks_;
    std::vector<std::pair<Id, std::size_t>> ids_;
};

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
    if (const Place chunks = json.find("chunks"); chunks.present()) ChunkReader(thing).read(chunks);
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
        Elements numbers(size);
        const Point3 edges = nextPoint(numbers);
        static_cast<BoxObject&>(object).SetSize(edges.x, edges.y, edges.z);
    } else if (id == DUMMY_CLASS_ID) {
        static_cast<DummyObject&>(object).SetSize(json["size"].number());
    } else if (id == SPLINESHAPE_CLASS_ID) {
        auto& spline = static_cast<SplineShape&>(object);
        readPoints(json["points"], spline.GetPoints());
        spline.SetClosed(json["closed"].boolean());
        spline.SetRenderable(json["renderable"].boolean());
    }
}

class SceneReader {
public:
    SceneReader(const SceneSource& source, Scene& scene)
        : json_(source.read), source_(source), scene_(scene) {}

    void run() {
        if (!json_.beginObject()) file_.complain("must be an object");
        for (std::string name; json_.nextMember(name);) readMember(name);
        requireHead();
        for (const std::string_view name : {"root", "texmaps", "objects", "nodes", "selection"})
            require(name);
    }

    const JsonReader& json() const { return json_; }

private:
    void readMember(const std::string& name) {
        if (name == "format" || name == "version") {
            readHead(Place(json_.value(), file_, name), name);
        } else if (name == "root") {
            requireHead();
            readExtras(Place(json_.value(), file_, name), *scene_.root());
        } else if (name == "texmaps") {
            requireHead();
            readList(name, [this](const Place& json) { readTexmap(json); });
        } else if (name == "objects") {
            requireHead();
            readList(name, [this](const Place& json) { readObject(json); });
        } else if (name == "nodes") {
            for (const char* const before : {"texmaps", "objects"}) require(before);
            readList(name, [this](const Place& json) { readNode(json); });
        } else if (name == "selection") {
            require("nodes");
            readSelection(Place(json_.value(), file_, name));
        } else {
            json_.value();  // of whoever else has written it
            return;
        }
        if (!read_.insert(name).second) file_.complain("\"" + name + "\" is there twice");
    }

    // What others refer to comes before them.
    void require(std::string_view name) const {
        if (!read_.contains(name)) file_.complainOfMissing(name);
    }
    void requireHead() const {
        for (const std::string_view name : {"format", "version"}) require(name);
    }

    template <typename Read>
    void readList(const std::string& name, Read&& read) {
        const Place list(file_, name);
        if (!json_.beginList()) list.complain("must be a list");
        for (std::size_t index = 0; json_.nextElement(); ++index) {
            read(Place(json_.value(), list, index));
            tellProgress(index);
        }
    }

    void tellProgress(std::size_t index) const {
        constexpr std::size_t kOften = 64;
        if (index % kOften != 0 || !source_.progress) return;
        const double read = static_cast<double>(json_.offset());
        if (!source_.progress(std::min(read / source_.size, 1.0), "scene")) throw Cancelled();
    }

    static void readHead(const Place& json, std::string_view name) {
        if (name == "format") {
            if (json.text() != kSceneFormat) json.complain("is not that of a scene file");
            return;
        }
        const DWORD number = json.word();
        if (number == 0 || number > kSceneVersion)
            json.complain(std::to_string(number) + " is not known to this host",
                          ImpExpCause::kVersion);
    }

    void readSelection(const Place& list) {
        Elements indices(list);
        for (std::size_t i = 0, count = list.size(); i < count; ++i)
            scene_.select(nodes_[indices.below(nodes_.size())]);
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

    JsonReader json_;
    const SceneSource& source_;
    Scene& scene_;
    const Place file_;
    std::set<std::string, std::less<>> read_;  // the file's members
    std::vector<Held<Texmap>> maps_;
    std::vector<Held<Object>> objects_;
    std::vector<Node*> nodes_;
};

ImportResult failed(const std::string& path, const std::string& what, ImpExpCause cause) {
    return {IMPEXP_FAIL, path + ": " + what, cause};
}

std::string lineOf(const JsonReader& json, const char* at) {
    return at ? " (line " + std::to_string(json.positionOf(at).line) + ")" : std::string();
}

ImportResult syntaxComplaint(const JsonReader& json, const std::string& path,
                             const JsonError& error) {
    const auto [line, column] = json.positionOf(error.at);
    return failed(path,
                  "is damaged: parse error at line " + std::to_string(line) + ", column " +
                      std::to_string(column) + ": " + error.what,
                  error.atEnd ? ImpExpCause::kTruncated : ImpExpCause::kDamaged);
}

}  // namespace

ImportResult readScene(const SceneSource& source, const std::string& path, Scene& scene) try {
    SceneReader reader(source, scene);
    try {
        reader.run();
        return {IMPEXP_SUCCESS, {}, ImpExpCause::kOther};
    } catch (const JsonError& error) {
        return syntaxComplaint(reader.json(), path, error);
    } catch (const Damage& damage) {
        return failed(path, "is damaged at " + damage.message + lineOf(reader.json(), damage.at),
                      damage.cause);
    }
} catch (const Cancelled&) {
    return {IMPEXP_CANCEL, textOf(TextId::kCancelled), ImpExpCause::kOther};
} catch (const std::bad_alloc&) {
    return failed(path, textOf(TextId::kOutOfMemory), ImpExpCause::kOutOfMemory);
} catch (const std::system_error& error) {
    return failed(path, "cannot be read: " + error.code().message(), ImpExpCause::kUnreadable);
} catch (const std::exception& error) {
    return failed(path, std::string("cannot be read: ") + error.what(), ImpExpCause::kOther);
}

}  // namespace kiln
