#include <interchange/outline.h>

#include "kept.h"
#include "layouts.h"
#include "opcodes.h"

#include <quillon/fltfilereader.h>
#include <quillon/fltopcode.h>

#include <algorithm>
#include <array>
#include <string>

namespace interchange {

namespace {

constexpr std::uint32_t kOldestRevision = 1400;
constexpr std::uint32_t kNewestRevision = 1999;

}  // namespace

bool isVertexAt(FileBytes bytes, const Outline& outline, std::uint64_t vertex) noexcept {
    constexpr std::uint32_t kPositionEnd = 32;
    if (outline.vertexPalette == 0 || vertex + kPositionEnd > outline.vertexPaletteEnd) {
        return false;
    }
    const std::uint16_t opcode = uint16At(bytes, vertex);
    const std::uint16_t length = uint16At(bytes, vertex + 2);
    return opcode >= kFltVertexWithColor && opcode <= kFltVertexWithTexture &&
           length >= kPositionEnd && vertex + length <= outline.vertexPaletteEnd;
}

namespace {

/// What a record means for the outline.
enum class Role : std::uint8_t {
    unknown,
    node,  ///< becomes a node of the scene
    push,
    pop,
    longId,
    vertexPalette,
    vertex,
    vertexList,
    continuation,
    colorPalette,
    lightPalette,
    texture,
    other,  ///< known, and kept with the node that it follows
};

Role roleOfFamily(FltOpcodeClass family) {
    return family == FltOpcodeClass::primary ? Role::node : Role::other;
}

Role roleOfNamed(const FltOpcodeEntry& entry) {
    switch (entry.opcode) {
        case kFltInstanceRef:
        case kFltInstanceDef:
            return Role::node;
        case kFltPushLevel:
        case kFltPushSubface:
        case kFltPushExtension:
        case kFltPushAttribute:
            return Role::push;
        case kFltPopLevel:
        case kFltPopSubface:
        case kFltPopExtension:
        case kFltPopAttribute:
            return Role::pop;
        case kFltLongId:
            return Role::longId;
        case kFltVertexPalette:
            return Role::vertexPalette;
        case kFltVertexWithColor:
        case kFltVertexWithNormal:
        case kFltVertexWithTextureAndNormal:
        case kFltVertexWithTexture:
            return Role::vertex;
        case kFltVertexList:
        case kFltMorphVertexList:
            return Role::vertexList;
        case kFltColorPalette:
            return Role::colorPalette;
        case kFltLightSourcePalette:
            return Role::lightPalette;
        case kFltTexture:
            return Role::texture;
        default:
            return roleOfFamily(entry.family);
    }
}

/// The roles by opcode; everything from 256 on is unknown.
std::array<Role, 256> makeRoles() {
    std::array<Role, 256> roles{};
    for (const FltOpcodeEntry& entry : fltOpcodeTable()) {
        roles[static_cast<std::uint8_t>(entry.opcode)] = roleOfNamed(entry);
    }
    roles[kContinuation] = Role::continuation;
    roles[kMesh] = roles[kIndexedLightPoint] = roles[kLightPointSystem] = Role::node;
    roles[kLocalVertexPool] = roles[kMeshPrimitive] = Role::other;
    return roles;
}

/// An open level.
struct Level {
    std::uint16_t closer;        ///< opcode of the record that ends it
    bool opaque;                 ///< of extensions or attributes: what it holds are no nodes
    std::uint32_t offset;        ///< of the record that began it
    std::uint32_t owner;         ///< node that it belongs to, and under which its nodes go
    std::uint32_t current;       ///< node that the next piece or push is about
    std::uint32_t children = 0;  ///< nodes that stand directly in it
    bool deferred = false;       ///< may turn out to be all that a plain node has
};

class OutlineReader {
public:
    explicit OutlineReader(FileBytes bytes) : bytes_(bytes) {}

    Outline read() {
        readHeader();
        while (nextRecord()) {
            const Role role = roleOf(opcode_);
            handle(role);
            if (role != Role::continuation) ownList_ = role == Role::vertexList && ownList_;
        }
        if (levels_.size() > 1) {
            fail(end(), "the file ends with " + openLevels() + " still open, the innermost since " +
                            std::to_string(levels_.back().offset));
        }
        return std::move(outline_);
    }

private:
    /// Refuses the file in the words of the file reader.
    [[noreturn]] static void fail(std::size_t offset, const std::string& reason) {
        throw FltFileError("damaged at byte offset " + std::to_string(offset) + ": " + reason,
                           offset);
    }

    static Role roleOf(std::uint16_t opcode) {
        static const std::array<Role, 256> roles = makeRoles();
        return opcode < roles.size() ? roles[opcode] : Role::unknown;
    }

    std::string openLevels() const {
        const std::size_t count = levels_.size() - 1;
        return count == 1 ? "one level" : std::to_string(count) + " levels";
    }

    std::size_t end() const { return std::size_t{offset_} + length_; }

    void readHeader() {
        if (bytes_.empty()) fail(0, "the file is empty");
        if (bytes_.size() >= kNone) {
            fail(kNone, "the file goes on beyond what OpenFlight can count");
        }
        if (bytes_.size() < 2 || uint16At(bytes_, 0) != kFltHeader) {
            fail(0, "there is no header record, so this is not an OpenFlight file");
        }
        nextRecord();
        constexpr std::uint32_t kRevisionEnd = 16;
        if (length_ < kRevisionEnd) {
            fail(0, "the header ends before its format revision");
        }
        outline_.revision = uint32At(bytes_, 12);
        if (outline_.revision < kOldestRevision || outline_.revision > kNewestRevision) {
            fail(12, "a format revision of " +
                         std::to_string(static_cast<std::int32_t>(outline_.revision)) +
                         ", where 1400 (OpenFlight 14.0) or a later one is needed");
        }
        addNode(kFltHeader, kNone);
        levels_.push_back({0, false, 0, 0, 0});
    }

    /// Moves to the next record; false at the end of the file.
    bool nextRecord() {
        const std::size_t next = end();
        if (endsAt(next)) return false;
        if (left(next) < kRecordHeader) {
            if (levels_.size() != 1) refuse();
            outline_.strayBytes = static_cast<std::uint32_t>(left(next));
            return false;
        }
        const std::uint16_t length = uint16At(bytes_, next + 2);
        if (length < kRecordHeader || length > left(next)) refuse();
        offset_ = static_cast<std::uint32_t>(next);
        opcode_ = uint16At(bytes_, next);
        length_ = length;
        return true;
    }

    /// Refuses the file, in which a record was met that is none, as the file reader does.
    [[noreturn]] void refuse() const {
        FltFileReader reader(bytes_);
        while (reader.next()) continue;
        fail(end(), "a record that cannot be read");
    }

    /// Whether the file ends at `offset`: in an end-of-file record, or in the zeros with which some
    /// programs fill the last block, however few they are.
    bool endsAt(std::size_t offset) const {
        if (left(offset) >= kRecordHeader) return uint16At(bytes_, offset) == kFltEndOfFile;
        return std::ranges::all_of(bytes_.subspan(offset),
                                   [](std::uint8_t byte) { return byte == 0; });
    }

    std::size_t left(std::size_t offset) const { return bytes_.size() - offset; }

    void handle(Role role) {
        if (role == Role::unknown) ++outline_.unknownRecords;
        if (role == Role::push) {
            push();
        } else if (role == Role::pop) {
            pop();
        } else if (levels_.back().opaque) {
            addPiece(levels_.back().owner, kNone);
        } else if (role == Role::node) {
            beginNode();
        } else {
            handlePiece(role);
        }
    }

    /// A record that adds to the node before it, or to the file as a whole.
    void handlePiece(Role role) {
        switch (role) {
            case Role::longId:
                addLongId();
                break;
            case Role::vertexPalette:
                outline_.vertexPalette = offset_;
                outline_.vertexPaletteEnd = offset_ + length_;
                nodesBefore_ = outline_.nodes.size();
                cornersBefore_ = outline_.corners.size();
                break;
            case Role::vertex:
                if (offset_ == outline_.vertexPaletteEnd) outline_.vertexPaletteEnd += length_;
                return;
            case Role::vertexList:
                beginCorners();
                if (ownList_ && levels_.back().deferred) return;
                break;
            case Role::continuation:
                if (ownList_) {
                    addCorners();
                    return;
                }
                break;
            case Role::colorPalette:
                if (outline_.colorPalette == 0) outline_.colorPalette = offset_;
                break;
            case Role::lightPalette:
                outline_.lights.push_back(offset_);
                break;
            case Role::texture:
                outline_.textures.push_back(offset_);
                break;
            default:
                break;
        }
        addPiece(levels_.back().current);
    }

    void addPiece(std::uint32_t owner, std::uint32_t children = 0) {
        if (outline_.nodes[owner].plain) spellOut(owner);
        if (levels_.back().deferred && levels_.back().owner == owner) spellOut(levels_.back());
        append(owner, offset_, children);
    }

    /// Puts what a plain node has into its chain.
    void spellOut(std::uint32_t owner) {
        OutlineNode& node = outline_.nodes[owner];
        node.plain = false;
        append(owner, behind(node.record), 0);
        append(owner, node.list, 0);
        append(owner, behind(node.list), 0);
    }

    void spellOut(Level& level) {
        level.deferred = false;
        append(level.owner, level.offset, 0);
        const std::uint32_t list = outline_.nodes[level.owner].list;
        if (list != 0 && list != offset_) append(level.owner, list, 0);
    }

    std::uint32_t behind(std::uint32_t record) const {
        return record + uint16At(bytes_, record + 2);
    }

    void append(std::uint32_t owner, std::uint32_t record, std::uint32_t children) {
        const auto index = static_cast<std::uint32_t>(outline_.pieces.size());
        outline_.pieces.push_back({record, kNone, children});
        OutlineNode& node = outline_.nodes[owner];
        if (node.lastPiece == kNone) {
            node.firstPiece = index;
        } else {
            outline_.pieces[node.lastPiece].next = index;
        }
        node.lastPiece = index;
    }

    /// Makes room for one more, and when there is none left, for as many as the whole file has if
    /// it goes on as it does since its vertex palette, before which the list had `before` entries.
    template <typename T>
    void makeRoom(std::vector<T>& list, std::size_t before) const {
        if (list.size() < list.capacity()) return;
        // Not 0: what asks for room is a record of its own, and stands behind the palette.
        const std::size_t passed = end() - outline_.vertexPaletteEnd;
        const double expected = 1.01 * static_cast<double>(list.size() - before) *
                                (static_cast<double>(left(end())) / static_cast<double>(passed));
        list.reserve(list.size() + std::max(list.size(), static_cast<std::size_t>(expected)) + 1);
    }

    std::uint32_t addNode(std::uint16_t kind, std::uint32_t parent) {
        OutlineNode node;
        node.kind = kind;
        node.parent = parent;
        node.record = offset_;
        makeRoom(outline_.nodes, nodesBefore_);
        outline_.nodes.push_back(node);
        return static_cast<std::uint32_t>(outline_.nodes.size() - 1);
    }

    void beginNode() {
        Level& level = levels_.back();
        if (opcode_ == kFltSwitch) checkSwitch();
        ++level.children;
        level.current = addNode(opcode_, level.owner);
    }

    /// A switch says how many mask words it has; it must have them.
    void checkSwitch() {
        constexpr std::uint32_t kWords = 28;
        if (length_ < kWords) return;
        const auto masks = static_cast<std::int32_t>(uint32At(bytes_, offset_ + 20));
        const auto words = static_cast<std::int32_t>(uint32At(bytes_, offset_ + 24));
        const std::int64_t room = (length_ - kWords) / 4;
        if (masks < 0 || words < 0 || std::int64_t{masks} * words > room) {
            fail(offset_, "a switch of " + std::to_string(masks) + " masks of " +
                              std::to_string(words) + " words, of which the record has " +
                              std::to_string(room));
        }
    }

    void push() {
        if (levels_.size() > kDeepestLevel) {
            fail(offset_, "levels nest deeper than " + std::to_string(kDeepestLevel));
        }
        const Level& outer = levels_.back();
        const std::uint32_t owner = outer.opaque ? outer.owner : outer.current;
        const bool opaque = outer.opaque || beginsOpaque(opcode_);
        const bool deferred = mayBePlain(owner);
        if (!deferred) addPiece(owner, opaque ? kNone : 0);
        levels_.push_back({fltClosingOpcode(opcode_), opaque, offset_, owner, owner, 0, deferred});
    }

    bool mayBePlain(std::uint32_t owner) const {
        const OutlineNode& node = outline_.nodes[owner];
        return opcode_ == kFltPushLevel && holdsPoints(node) && node.firstPiece == kNone &&
               !node.plain && offset_ == behind(node.record);
    }

    static bool holdsPoints(const OutlineNode& node) {
        return node.kind == kFltFace || isLightPoint(node.kind);
    }

    /// Whether the level that ends here makes its owner a plain node.
    bool makesPlain(const Level& level) const {
        const OutlineNode& node = outline_.nodes[level.owner];
        return level.deferred && level.children == 0 && node.list == behind(level.offset) &&
               node.cornerCount != 0 && uint16At(bytes_, node.list) == kFltVertexList &&
               offset_ == behind(node.list);
    }

    void pop() {
        if (levels_.size() == 1) {
            fail(offset_, std::string(fltOpcodeName(opcode_)) + " without a level to close");
        }
        const Level level = levels_.back();
        if (opcode_ != level.closer) {
            fail(offset_, std::string(fltOpcodeName(opcode_)) + " where the level opened at " +
                              std::to_string(level.offset) + " is of another sort");
        }
        const bool plain = makesPlain(level);
        if (!plain && level.deferred) spellOut(levels_.back());
        levels_.pop_back();
        outline_.nodes[level.owner].plain = outline_.nodes[level.owner].plain || plain;
        if (!plain) addPiece(level.owner, level.opaque ? kNone : level.children);
    }

    void addLongId() {
        OutlineNode& node = outline_.nodes[levels_.back().current];
        ++outline_.longIds;
        if (node.longId == 0) node.longId = offset_;
    }

    /// Faces and light points have one vertex list each, in the first level below them; a second
    /// one has no meaning.
    void beginCorners() {
        ownList_ = false;
        const Level& level = levels_.back();
        if (levels_.size() == 1 || level.current != level.owner) return;
        OutlineNode& node = outline_.nodes[level.owner];
        if (!holdsPoints(node) || node.list != 0) return;
        node.list = offset_;
        node.firstCorner = static_cast<std::uint32_t>(outline_.corners.size());
        listOwner_ = level.owner;
        ownList_ = true;
        // A morphing list gives two vertices per corner, the undisturbed one first.
        cornerStride_ = opcode_ == kFltMorphVertexList ? 8 : 4;
        addCorners();
    }

    void addCorners() {
        const std::uint32_t end = offset_ + length_;
        for (std::uint32_t i = offset_ + kRecordHeader; i + 4 <= end; i += cornerStride_) {
            makeRoom(outline_.corners, cornersBefore_);
            outline_.corners.push_back(vertexAt(uint32At(bytes_, i)));
        }
        OutlineNode& node = outline_.nodes[listOwner_];
        node.cornerCount = static_cast<std::uint32_t>(outline_.corners.size()) - node.firstCorner;
    }

    /// The file offset of the vertex at an offset from the start of the vertex palette.
    std::uint32_t vertexAt(std::uint32_t paletteOffset) {
        const std::uint64_t vertex = std::uint64_t{outline_.vertexPalette} + paletteOffset;
        if (isVertexAt(bytes_, outline_, vertex)) return static_cast<std::uint32_t>(vertex);
        fail(offset_, "a vertex list with the palette offset " + std::to_string(paletteOffset) +
                          ", where there is no vertex");
    }

    FileBytes bytes_;
    Outline outline_;
    std::vector<Level> levels_;
    std::uint32_t offset_ = 0;
    std::uint16_t opcode_ = 0;
    std::uint16_t length_ = 0;
    std::size_t nodesBefore_ = 0;  ///< nodes that stand before the vertex palette
    std::size_t cornersBefore_ = 0;
    std::uint32_t listOwner_ = kNone;
    std::uint32_t cornerStride_ = 4;
    bool ownList_ = false;  ///< whether the record before, not counting continuations, was the
                            ///< vertex list of `listOwner_`
};

}  // namespace

Outline readOutline(FileBytes bytes) {
    return OutlineReader(bytes).read();
}

}  // namespace interchange
