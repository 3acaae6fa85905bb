#include <base/text.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "base64.h"
#include "chunks.h"
#include "classes.h"
#include "scenefile.h"

namespace kiln {

namespace {

// ---------------------------------------------------------------- values

constexpr std::size_t kLongestNumber = 32;

// JSON has no infinities and no NaN: those are written as their bits.
char* writeBits(char* to, double value) noexcept {
    return to + std::snprintf(to, kLongestNumber, "\"0x%016llx\"",
                              static_cast<unsigned long long>(std::bit_cast<std::uint64_t>(value)));
}

char* writeNumber(char* to, std::uint64_t value) noexcept {
    return std::to_chars(to, to + kLongestNumber, value).ptr;
}

/// The shortest digits that read back as the same number of type `T`.
template <std::floating_point T>
char* writeNumber(char* to, T value) noexcept {
    if (!std::isfinite(value)) return writeBits(to, static_cast<double>(value));
    constexpr T kMostWhole = 1e7;  // below it whole numbers are quicker to write, and as short
    if (std::abs(value) < kMostWhole) {
        const auto whole = static_cast<std::int32_t>(value);
        if (static_cast<T>(whole) == value && (whole != 0 || !std::signbit(value)))
            return std::to_chars(to, to + kLongestNumber, whole).ptr;
    }
    to = std::to_chars(to, to + kLongestNumber, value).ptr;
    if (value != 0) return to;
    *to++ = '.';  // a minus zero, which is no whole number
    *to++ = '0';
    return to;
}

template <typename T>
void putNumber(std::string& text, T value) {
    char digits[kLongestNumber];
    text.append(digits, writeNumber(digits, value));
}
void putNumber(std::string& text, DWORD value) {
    putNumber(text, std::uint64_t{value});
}

/// A list of numbers, each put with `add`. It may be written in portions: all but the last end with
/// `flush`, and all but the first begin as `Rest`.
class NumberList {
public:
    enum class Rest { kNo, kYes };
    explicit NumberList(std::string& text, Rest rest = Rest::kNo)
        : text_(text), any_(rest == Rest::kYes) {
        if (!any_) *at_++ = '[';
    }
    NumberList(const NumberList&) = delete;
    NumberList& operator=(const NumberList&) = delete;

    template <typename T>
    void add(T value) {
        if (static_cast<std::size_t>(digits_ + sizeof digits_ - at_) <= kLongestNumber) flush();
        if (any_) *at_++ = ',';
        any_ = true;
        at_ = writeNumber(at_, value);
    }
    void add(DWORD value) { add(std::uint64_t{value}); }
    void add(const Point3& point) {
        for (const double value : {point.x, point.y, point.z}) add(value);
    }
    void add(const Point3f& point) {
        for (const float value : {point.x, point.y, point.z}) add(value);
    }
    void add(const Face& face) {
        for (const DWORD value : {face.v[0], face.v[1], face.v[2], face.flags, face.smGroup})
            add(value);
    }
    void add(const TVFace& face) {
        for (const DWORD value : face.t) add(value);
    }
    void flush() {
        text_.append(digits_, at_);
        at_ = digits_;
    }
    void end() {
        flush();
        text_ += ']';
    }

private:
    std::string& text_;
    bool any_;
    char digits_[2048];
    char* at_ = digits_;
};

void putText(std::string& text, std::string_view value) {
    const bool isAscii = std::ranges::all_of(value, [](char c) { return c > 0; });
    const std::string valid = isAscii ? std::string() : base::validUtf8(value);
    text += '"';
    for (const char c : isAscii ? value : valid) {
        constexpr std::string_view kSpecial = "\"\\\b\f\n\r\t";
        constexpr std::string_view kNames = "\"\\bfnrt";
        if (const std::size_t found = kSpecial.find(c); found != std::string_view::npos) {
            text += '\\';
            text += kNames[found];
        } else if (static_cast<unsigned char>(c) < 0x20) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\u%04x", static_cast<unsigned>(c));
            text += escape;
        } else {
            text += c;
        }
    }
    text += '"';
}

/// The next member of an object that has been begun.
void putName(std::string& text, std::string_view name) {
    if (text.back() != '{') text += ',';
    text += '"';
    text += name;
    text += "\":";
}

template <typename T>
void putMember(std::string& text, std::string_view name, T value) {
    putName(text, name);
    if constexpr (std::is_same_v<T, bool>)
        text += value ? "true" : "false";
    else
        putNumber(text, value);
}
void putMember(std::string& text, std::string_view name, const char* value) {
    putName(text, name);
    putText(text, value);
}

template <typename T>
void putList(std::string& text, std::string_view name, const Tab<T>& values) {
    putName(text, name);
    NumberList list(text);
    for (const T& value : values) list.add(value);
    list.end();
}

void putClass(std::string& text, const Class_ID& id) {
    putName(text, "class");
    NumberList list(text);
    list.add(id.PartA());
    list.add(id.PartB());
    list.end();
}

void putBytes(std::string& text, std::string_view name, const void* bytes, std::size_t length) {
    putName(text, name);
    text += '"';
    appendBase64(static_cast<const BYTE*>(bytes), length, text);
    text += '"';
}

// ---------------------------------------------------------------- things

// Bit for bit: a minus zero is written too.
bool isPlainIdentity(const Matrix3& matrix) {
    using Bits = std::array<std::uint64_t, 12>;
    return std::bit_cast<Bits>(matrix) == std::bit_cast<Bits>(Matrix3());
}

void putMatrix(std::string& text, const Matrix3& matrix) {
    putName(text, "transform");
    NumberList list(text);
    for (int row = 0; row < 4; ++row) list.add(matrix.GetRow(row));
    list.end();
}

/// A mesh, in portions that do not grow with it.
class MeshText {
public:
    explicit MeshText(const Mesh& mesh) : mesh_(mesh) {}

    /// Appends the next portion; false once it was the last.
    bool next(std::string& text) {
        for (int room = kPortion; room > 0 && list_ < kLists;) room -= putPortion(text, room);
        if (list_ < kLists) return true;
        text += '}';
        return false;
    }

private:
    static constexpr int kLists = 6;
    static constexpr int kAlways = 2;      // the others may be missing
    static constexpr int kPortion = 4096;  // elements

    /// Of the present list; how many elements that were.
    int putPortion(std::string& text, int most) {
        switch (list_) {
            case 0:
                return putPortion(text, most, "{\"vertices\":", mesh_.verts);
            case 1:
                return putPortion(text, most, ",\"faces\":", mesh_.faces);
            case 2:
                return putPortion(text, most, ",\"textureVertices\":", mesh_.tVerts);
            case 3:
                return putPortion(text, most, ",\"textureFaces\":", mesh_.tvFaces);
            case 4:
                return putPortion(text, most, ",\"normals\":", mesh_.normals);
            default:
                return putPortion(text, most, ",\"colors\":", mesh_.colors);
        }
    }
    template <typename T>
    int putPortion(std::string& text, int most, const char* head, const Tab<T>& list) {
        if (list.IsEmpty() && list_ >= kAlways) {
            ++list_;
            return 0;
        }
        if (at_ == 0) text += head;
        NumberList numbers(text, at_ == 0 ? NumberList::Rest::kNo : NumberList::Rest::kYes);
        const int first = at_;
        const int end = first + std::min(list.Count() - first, most);
        while (at_ < end) numbers.add(list[at_++]);
        if (end < list.Count()) {
            numbers.flush();
            return end - first;
        }
        numbers.end();
        ++list_;
        at_ = 0;
        return end - first;
    }

    const Mesh& mesh_;
    int list_ = 0, at_ = 0;  // where the next portion begins
};

void putState(std::string& text, const ReferenceTarget& thing) {
    const std::vector<BYTE> state = thing.SaveState();
    if (!state.empty()) putBytes(text, "state", state.data(), state.size());
}

// The elements of a list that has been begun, each an object that `put` fills.
void beginElement(std::string& text) {
    text += text.back() == '[' ? "{" : ",{";
}

void putChunks(std::string& text, const Animatable& thing) {
    bool any = false;
    forEachChunk(thing, [&](const AppDataChunk& chunk) {
        if (!any) {
            putName(text, "chunks");
            text += '[';
        }
        any = true;
        beginElement(text);
        putClass(text, chunk.clID);
        putMember(text, "super", chunk.sclID);
        putMember(text, "sub", chunk.subID);
        putMember(text, "length", chunk.length);
        putBytes(text, "data", chunk.data, chunk.length);
        text += '}';
    });
    if (any) text += ']';
}

// Chunks and custom attributes.
void putExtras(std::string& text, const Animatable& thing, int depth = 0) {
    putChunks(text, thing);
    const ICustAttribContainer* const container = thing.GetCustAttribContainer();
    if (!container) return;
    if (depth == kDeepestAttribute) throw std::length_error(kTooDeep);
    putName(text, "attributes");
    text += '[';
    for (int i = 0; i < container->GetNumCustAttribs(); ++i) {
        const CustAttrib& attribute = *container->GetCustAttrib(i);
        beginElement(text);
        putClass(text, attribute.ClassID());
        putState(text, attribute);
        putExtras(text, attribute, depth + 1);
        text += '}';
    }
    text += ']';
}

// What an object of a class of the host's own keeps.
void putOwnState(std::string& text, const Object& object) {
    const Class_ID id = object.ClassID();
    if (object.SuperClassID() == LIGHT_CLASS_ID) {
        const auto& light = static_cast<const GenLight&>(object);
        putMember(text, "color", light.GetColor());
        putMember(text, "intensity", light.GetIntensity());
        putMember(text, "on", light.GetUseLight());
    } else if (id == BOXOBJ_CLASS_ID) {
        const auto& box = static_cast<const BoxObject&>(object);
        putName(text, "size");
        NumberList edges(text);
        edges.add(Point3{box.GetLength(), box.GetWidth(), box.GetHeight()});
        edges.end();
    } else if (id == DUMMY_CLASS_ID) {
        putMember(text, "size", static_cast<const DummyObject&>(object).GetSize());
    } else if (id == SPLINESHAPE_CLASS_ID) {
        const auto& spline = static_cast<const SplineShape&>(object);
        putList(text, "points", spline.GetPoints());
        putMember(text, "closed", spline.IsClosed());
        putMember(text, "renderable", spline.IsRenderable());
    }
}

/// An object, in portions that do not grow with its mesh.
class ObjectText {
public:
    explicit ObjectText(const Object& object) : object_(object) {
        if (isBuiltIn(object.SuperClassID(), object.ClassID()) &&
            object.ClassID() == TRIOBJ_CLASS_ID)
            mesh_.emplace(static_cast<const TriObject&>(object).GetMesh());
    }

    /// Appends the next portion; false once it was the last.
    bool next(std::string& text) {
        if (!std::exchange(begun_, true)) begin(text);
        if (mesh_ && mesh_->next(text)) return true;
        putExtras(text, object_);
        text += '}';
        return false;
    }

private:
    void begin(std::string& text) const {
        text += '{';
        putMember(text, "super", object_.SuperClassID());
        putClass(text, object_.ClassID());
        if (mesh_)
            putName(text, "mesh");
        else if (isBuiltIn(object_.SuperClassID(), object_.ClassID()))
            putOwnState(text, object_);
        else
            putState(text, object_);
    }

    const Object& object_;
    std::optional<MeshText> mesh_;
    bool begun_ = false;
};

void putTexmap(std::string& text, const Texmap& map, bool listed) {
    text += '{';
    putClass(text, map.ClassID());
    putMember(text, "name", map.GetName());
    if (map.ClassID() == BMTEX_CLASS_ID)
        putMember(text, "file", static_cast<const BitmapTex&>(map).GetMapName());
    else
        putState(text, map);
    if (!listed) putMember(text, "listed", false);
    putExtras(text, map);
    text += '}';
}

constexpr std::uint32_t kNone = std::numeric_limits<std::uint32_t>::max();

/// Things that several nodes may share, in the order they were met.
template <typename T>
class Shared {
public:
    std::uint32_t add(T* thing) {
        if (!thing) return kNone;
        const auto next = static_cast<std::uint32_t>(things_.size());
        // What has one reference is met once.
        const std::uint32_t index =
            thing->NumReferences() == 1 ? next : indices_.emplace(thing, next).first->second;
        if (index == next) things_.push_back(thing);
        return index;
    }
    const std::vector<T*>& things() const { return things_; }

private:
    std::vector<T*> things_;
    std::unordered_map<const T*, std::uint32_t> indices_;
};

/// A node, and where in the file that stands which it refers to.
struct Line {
    const Node* node;
    std::uint32_t parent, object, map;
};

}  // namespace

struct SceneWriter::Impl {
    explicit Impl(const Scene& shown);

    bool next(std::string& text);
    /// Some more of the nodes, with what they refer to.
    void collect();
    void collectLater(const Node* parent, std::uint32_t line);
    /// The next of a section's things, with what stands before it, or else the section's end.
    template <typename List, typename Put>
    void nextOf(const char* name, const List& list, std::string& text, Put&& put);
    void putNode(std::string& text, const Line& line) const;
    void putHead(std::string& text) const;
    void putSelection(std::string& text) const;

    const Scene& scene;
    std::size_t listed;  // maps in the scene's list, which come first
    Shared<Texmap> maps;
    Shared<::Object> objects;
    std::vector<Line> lines;  // parents before children, siblings in order; without the root
    std::vector<std::pair<const Node*, std::uint32_t>>
        pending;                                            // with the parent's line, last first
    std::vector<std::uint32_t> selection;                   // lines
    std::unordered_map<const Node*, std::size_t> selected;  // places in `selection`
    enum class Section { kCollecting, kHead, kMaps, kObjects, kNodes, kSelection, kEnd };
    Section section = Section::kCollecting;
    std::size_t index = 0;  // in the section
    std::optional<ObjectText> unfinished;
    std::size_t written = 0;  // pieces
};

SceneWriter::Impl::Impl(const Scene& shown) : scene(shown), listed(shown.texmaps().size()) {
    for (Texmap* const map : scene.texmaps()) maps.add(map);
    scene.selection().forEach([&](const Node* node) { selected.emplace(node, selected.size()); });
    selection.resize(selected.size());
    lines.reserve(scene.nodeCount());
    collectLater(scene.root(), kNone);
}

void SceneWriter::Impl::collectLater(const Node* parent, std::uint32_t line) {
    const auto first = static_cast<std::ptrdiff_t>(pending.size());
    parent->children().forEach([&](const Node* child) { pending.emplace_back(child, line); });
    std::reverse(pending.begin() + first, pending.end());
}

void SceneWriter::Impl::collect() {
    constexpr std::size_t kPortion = 4096;
    for (std::size_t i = 0; i < kPortion && !pending.empty(); ++i) {
        const auto [node, parent] = pending.back();
        pending.pop_back();
        const auto own = static_cast<std::uint32_t>(lines.size());
        if (own == kNone) throw std::length_error("there are too many nodes");
        const std::uint32_t object = objects.add(node->GetObjectRef());
        lines.push_back({node, parent, object, maps.add(node->GetTexmap())});
        if (!selected.empty())
            if (const auto place = selected.find(node); place != selected.end())
                selection[place->second] = own;
        collectLater(node, own);
    }
}

void SceneWriter::Impl::putNode(std::string& text, const Line& line) const {
    const Node& node = *line.node;
    text += '{';
    putName(text, "name");
    putText(text, node.name());
    if (line.parent != kNone) putMember(text, "parent", line.parent);
    if (line.object != kNone) putMember(text, "object", line.object);
    if (line.map != kNone) putMember(text, "texmap", line.map);
    if (const Matrix3 local = node.GetLocalTM(0); !isPlainIdentity(local)) putMatrix(text, local);
    if (node.IsHidden()) putMember(text, "hidden", true);
    if (node.IsGroupHead()) putMember(text, "groupHead", true);
    if (node.IsGroupMember()) putMember(text, "groupMember", true);
    putMember(text, "wire", node.GetWireColor());
    putExtras(text, node);
    text += '}';
}

void SceneWriter::Impl::putHead(std::string& text) const {
    text += "{\n\"format\": \"" + std::string(kSceneFormat) +
            "\",\n\"version\": " + std::to_string(kSceneVersion) + ",\n\"root\": {";
    putExtras(text, *scene.root());
    text += '}';
}

void SceneWriter::Impl::putSelection(std::string& text) const {
    text += ",\n\"selection\": ";
    NumberList list(text);
    for (const std::uint32_t one : selection) list.add(one);
    list.end();
    text += "\n}\n";
}

template <typename List, typename Put>
void SceneWriter::Impl::nextOf(const char* name, const List& list, std::string& text, Put&& put) {
    if (index == 0) text.append(",\n\"").append(name).append("\": [");
    if (index < list.size()) {
        text += index == 0 ? "\n" : ",\n";
        put(list[index++]);
        ++written;
        return;
    }
    text += list.empty() ? "]" : "\n]";
    section = static_cast<Section>(static_cast<int>(section) + 1);
    index = 0;
}

bool SceneWriter::Impl::next(std::string& text) {
    switch (section) {
        case Section::kCollecting:
            collect();
            if (pending.empty()) section = Section::kHead;
            return true;
        case Section::kHead:
            putHead(text);
            section = Section::kMaps;
            return true;
        case Section::kMaps:
            nextOf("texmaps", maps.things(), text,
                   [&](const Texmap* map) { putTexmap(text, *map, index <= listed); });
            return true;
        case Section::kObjects:
            if (!unfinished)
                nextOf("objects", objects.things(), text,
                       [&](const ::Object* one) { unfinished.emplace(*one); });
            if (unfinished && !unfinished->next(text)) unfinished.reset();
            return true;
        case Section::kNodes:
            nextOf("nodes", lines, text, [&](const Line& line) { putNode(text, line); });
            return true;
        case Section::kSelection:
            putSelection(text);
            section = Section::kEnd;
            break;
        case Section::kEnd:
            break;
    }
    return false;
}

SceneWriter::SceneWriter(const Scene& scene) : impl_(std::make_unique<Impl>(scene)) {}
SceneWriter::~SceneWriter() = default;

bool SceneWriter::next(std::string& text) {
    return impl_->next(text);
}

double SceneWriter::fraction() const noexcept {
    const std::size_t all =
        impl_->maps.things().size() + impl_->objects.things().size() + impl_->lines.size();
    return all == 0 ? 1.0 : static_cast<double>(impl_->written) / static_cast<double>(all);
}

}  // namespace kiln
