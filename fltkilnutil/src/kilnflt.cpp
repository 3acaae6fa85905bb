#include "nodechunk.h"

#include <diagnostics/log.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/inode.h>
#include <quillon/fltcomment.h>
#include <quillon/fltrecord.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/fltrecordrange.h>
#include <quillon/flttoken.h>

#include <array>
#include <cstring>

using namespace fltkilnutil;

namespace {

// The kind block: 40 bytes, of which these are read. Little-endian, as the host's machines are.
constexpr std::size_t kKindBlockSize = 40;
constexpr std::size_t kKindOffset = 4;       // 16 bits
constexpr std::size_t kParameterOffset = 8;  // 32 bits
constexpr std::size_t kKindBlockUsed = 12;

using KindBlock = std::array<std::byte, kKindBlockSize>;

void setKind(KindBlock& block, FltNodeKind kind, std::uint32_t parameter) noexcept {
    std::memcpy(&block[kKindOffset], &kind, sizeof kind);
    std::memcpy(&block[kParameterOffset], &parameter, sizeof parameter);
}

/// The node's kind block; empty when there is none or it is too short to be read.
Chunk kindBlock(INode* node) noexcept {
    const Chunk chunk = findChunk(node, ChunkId::Kind);
    return chunk.size() >= kKindBlockUsed ? chunk : Chunk();
}

/// The length that the record in `chunk` states. The bytes are a user's: a length that goes beyond
/// them, or is less than a record header, means a damaged chunk.
std::int32_t recordLength(Chunk chunk) {
    constexpr std::size_t kHeaderSize = FltRecordView::kHeaderSize;
    diagnostics::check(chunk.size() >= kHeaderSize, "kilnflt", 204);
    const std::size_t length =
        fltRecordHead({reinterpret_cast<const std::uint8_t*>(chunk.data()), chunk.size()}).length;
    diagnostics::check(length >= kHeaderSize && length <= chunk.size(), "kilnflt", 207);
    return static_cast<std::int32_t>(length);
}

/// Reads `chunk` through a token. A chunk that is not there is a plain failure; a damaged one is
/// noted for the log as well.
template <typename Read>
bool readChunk(Chunk chunk, Read&& read) noexcept {
    if (chunk.empty()) return false;
    try {
        FltToken token;
        token.attach(chunk.data(), recordLength(chunk));
        read(token);
        return true;
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;
    }
}

/// What a chunk is encoded in; kept warm, so that storing allocates nothing but the chunk.
struct WarmToken {
    FltToken token;

    /// Encodes what `write` puts into the token; false when that cannot be one record.
    template <typename Write>
    bool encode(Write&& write) noexcept {
        try {
            write(token);
            token.finish();
            return true;
        } catch (...) {
            diagnostics::noteCurrentException();
            return false;
        }
    }
    std::span<const std::byte> bytes() const noexcept {
        return std::as_bytes(std::span(token.data(), token.length()));
    }
};

/// Stores what `write` puts into a token. The chunk changes only when all bytes are there.
template <typename Write>
bool writeChunk(INode* node, ChunkId id, Write&& write) noexcept {
    static WarmToken warm;
    return warm.encode(write) && storeChunk(node, id, warm.bytes());
}

bool isHostLightSource(const Class_ID& light) noexcept {
    // A target spot light is none: its direction hangs on a second node, which a record cannot say.
    return light.PartA() == OMNI_LIGHT_CLASS_ID.PartA() ||
           light.PartA() == DIR_LIGHT_CLASS_ID.PartA() ||
           light.PartA() == FSPOT_LIGHT_CLASS_ID.PartA();
}

bool isSurface(SClass_ID superClass) noexcept {
    return superClass == GEOMOBJECT_CLASS_ID || superClass == SHAPE_CLASS_ID;
}

bool isRenderableMesh(const Object& object) {
    return object.CanConvertToType(TRIOBJ_CLASS_ID) && object.IsRenderable();
}

bool deriveKind(INode* node, FltNodeKind& kind) {
    const Object* const object = node->EvalWorldState(0).obj;
    const SClass_ID superClass = object != nullptr ? object->SuperClassID() : 0;
    bool derived = false;
    if (isSurface(superClass)) {
        derived = isRenderableMesh(*object);
        if (derived) kind = FltNodeKind::Face;
    } else if (superClass == LIGHT_CLASS_ID) {
        derived = isHostLightSource(object->ClassID());
        if (derived) kind = FltNodeKind::LightSource;
    } else {
        derived = node->IsGroupHead();
        if (derived) kind = FltNodeKind::Group;
    }
    return derived;
}

bool copyChunk(INode* source, INode* destination, ChunkId id) noexcept {
    return hasChunk(source, id) && storeChunk(destination, id, findChunk(source, id));
}

}  // namespace

bool fltHasData(INode* node) noexcept {
    return !kindBlock(node).empty();
}

bool fltEnsureKind(INode* node, FltNodeKind kind, std::uint32_t parameter) noexcept {
    KindBlock block{};
    const Chunk present = kindBlock(node);
    if (!present.empty()) std::memcpy(block.data(), present.data(), kKindBlockUsed);
    setKind(block, kind, parameter);
    if (present.empty()) return storeChunk(node, ChunkId::Kind, block);
    return NodeChange(node).overwrite(ChunkId::Kind, std::span(block).first(kKindBlockUsed));
}

bool fltGetKind(INode* node, bool derive, FltNodeKind& kind) noexcept {
    const Chunk block = kindBlock(node);
    if (!block.empty()) {
        std::memcpy(&kind, &block[kKindOffset], sizeof kind);
        return true;
    }
    try {
        return derive && node != nullptr && deriveKind(node, kind);
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;  // an object of another plug-in that throws has no kind
    }
}

bool fltGetParameter(INode* node, std::uint32_t& parameter) noexcept {
    const Chunk block = kindBlock(node);
    if (block.empty()) return false;
    std::memcpy(&parameter, &block[kParameterOffset], sizeof parameter);
    return true;
}

bool fltIsFaceObject(INode* node) noexcept {
    try {
        const Object* const object = node != nullptr ? node->EvalWorldState(0).obj : nullptr;
        return object != nullptr && isSurface(object->SuperClassID()) && isRenderableMesh(*object);
    } catch (...) {
        diagnostics::noteCurrentException();
        return false;
    }
}

bool fltPutRecord(INode* node, const FltRecord& record) noexcept {
    std::uint32_t revision = 0;
    return fltGetParameter(node, revision) &&
           writeChunk(node, ChunkId::Record,
                      [&](FltToken& token) { record.writeToken(token, revision); });
}

bool fltGetRecord(INode* node, FltRecord& record) noexcept {
    std::uint32_t revision = 0;
    return fltGetParameter(node, revision) &&
           readChunk(findChunk(node, ChunkId::Record),
                     [&](FltToken& token) { record.readToken(token, revision); });
}

bool fltHasRecord(INode* node) noexcept {
    return hasChunk(node, ChunkId::Record);
}

bool fltRemoveRecord(INode* node) noexcept {
    return removeChunk(node, ChunkId::Record);
}

bool fltPutOptions(INode* node, const FltNodeOptions& options) noexcept {
    return writeChunk(node, ChunkId::Options, [&](FltToken& token) { options.write(token); });
}

bool fltGetOptions(INode* node, FltNodeOptions& options) noexcept {
    return readChunk(findChunk(node, ChunkId::Options),
                     [&](FltToken& token) { options.read(token); });
}

bool fltHasOptions(INode* node) noexcept {
    return hasChunk(node, ChunkId::Options);
}

bool fltPutData(INode* node, FltNodeKind kind, std::uint32_t parameter, const FltRecord& record,
                const FltNodeOptions* options) noexcept {
    static WarmToken warmRecord, warmOptions;
    const bool isNew = !fltHasData(node);
    std::uint32_t revision = parameter;
    if (!isNew) fltGetParameter(node, revision);
    KindBlock kindBlock{};
    setKind(kindBlock, kind, parameter);
    NodeChange change(node);
    if (!warmRecord.encode([&](FltToken& token) { record.writeToken(token, revision); }) ||
        !change.prepare(ChunkId::Record, warmRecord.bytes()))
        return false;
    if (options != nullptr && (!warmOptions.encode([&](FltToken& token) {
            options->write(token);
        }) || !change.prepare(ChunkId::Options, warmOptions.bytes())))
        return false;
    if (isNew && !change.prepare(ChunkId::Kind, kindBlock)) return false;
    return change.commit();
}

bool fltPutComment(INode* node, std::string_view text) noexcept {
    return writeChunk(node, ChunkId::Comment, [&](FltToken& token) {
        const FltComment comment(std::string(text).c_str());
        comment.writeToken(token, kFltRevision);
    });
}

bool fltGetComment(INode* node, std::string& text) noexcept {
    return readChunk(findChunk(node, ChunkId::Comment), [&](FltToken& token) {
        FltComment comment;
        comment.readToken(token, kFltRevision);
        text = comment.text();
    });
}

bool fltCopyData(INode* source, INode* destination) noexcept {
    if (source == nullptr || destination == nullptr) return false;
    if (!copyChunk(source, destination, ChunkId::Kind)) return false;
    if (!copyChunk(source, destination, ChunkId::Record)) return false;
    for (const ChunkId id : {ChunkId::Comment, ChunkId::Options})
        if (hasChunk(source, id) && !copyChunk(source, destination, id)) return false;
    return true;
}

bool fltIsData(const AppDataChunk& chunk) noexcept {
    return isOurChunk(chunk);
}

bool fltRemoveData(INode* node) noexcept {
    bool removed = false;
    for (const ChunkId id :
         {ChunkId::Kind, ChunkId::Record, ChunkId::Comment, ChunkId::Options, ChunkId::Reserved})
        removed |= removeChunk(node, id);
    return removed;
}
