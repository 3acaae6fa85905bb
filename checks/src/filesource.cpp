#include <checks/filesource.h>

#include <base/paths.h>
#include <diagnostics/assertion.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltlevelwalk.h>
#include <quillon/fltlongid.h>
#include <quillon/fltmesh.h>
#include <quillon/fltrecordtype.h>
#include <quillon/flttext.h>
#include <quillon/flttransform.h>
#include <quillon/fltvertexlist.h>
#include <quillon/fltvertexview.h>

#include <algorithm>
#include <map>
#include <optional>

namespace checks {

namespace {

std::string_view textOf(std::span<const std::uint8_t> bytes) {
    return fltText({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

bool isVertexList(std::uint16_t opcode) {
    return opcode == kFltVertexList || opcode == kFltMorphVertexList;
}

bool isSurfaceOrLight(std::uint16_t kind) {
    return kind == kFltFace || kind == kFltMesh || fltIsLightPoint(kind);
}

Transform transformOf(const FltMatrix& record) {
    Transform transform;
    for (std::size_t i = 0; i < 4; ++i)
        transform.rows[i] = {double{record.rows[i][0]}, double{record.rows[i][1]},
                             double{record.rows[i][2]}};
    return transform;
}

}  // namespace

/// Reads ahead up to the next node's record: what stands before it belongs to the present one.
class FileSource::Walk {
public:
    Walk(std::span<const std::uint8_t> bytes, std::string path)
        : bytes_(bytes), path_(std::move(path)), reader_(bytes) {
        advance();
    }

    bool next(Node& node) {
        while (isHere_ && !isNode()) advance();  // what stands before any node
        if (!isHere_) return false;
        startNode(node);
        // Levels opened from here on, at this depth, are the node's own.
        for (advance(); isHere_ && !isNode(); advance()) takeRecord();
        if (kind_ == kFltFace && isHere_ && isAboveSubfaces()) takeListBehindSubfaces();
        finishNode(node);
        return true;
    }

    std::string nameAt(std::size_t offset) const {
        const auto named = longIds_.find(offset);
        if (named != longIds_.end()) return named->second;
        const FltRecordView record = FltRecordView::at(bytes_, offset);
        return record.empty() ? std::string() : std::string(textOf(fltIdOf(record)));
    }

    const std::string& path() const noexcept { return path_; }
    std::size_t size() const noexcept { return bytes_.size(); }
    std::uint64_t unusedVertices() const noexcept { return vertices_ - usedVertices_; }

private:
    struct Level {
        std::uint32_t owner = kNone;  ///< the number of the node whose children stand in it
    };

    void advance() {
        try {
            isHere_ = reader_.next();
        } catch (const FltFileError&) {
            isHere_ = false;
        }
        if (!isHere_) return;
        const std::uint16_t opcode = reader_.opcode();
        switch (levels_.meet(opcode, {lastAtLevel()})) {
            case FltLevelWalk<Level>::Step::kOpened:
                latest_.push_back(kNone);
                break;
            case FltLevelWalk<Level>::Step::kClosed:
                latest_.pop_back();
                if (levels_.depth() < depth_) isLeft_ = true;
                break;
            default:
                break;
        }
        if (levels_.depth() > kFltDeepestLevel) isHere_ = false;
    }

    /// The node that a level opened here belongs to.
    std::uint32_t lastAtLevel() const {
        if (!latest_.empty() && latest_.back() != kNone) return latest_.back();
        return levels_.depth() == 0 ? kNone : levels_.innermost().level.owner;
    }

    bool isNode() const {
        if (levels_.isOpaque()) return false;
        const std::uint16_t opcode = reader_.opcode();
        if (opcode == kFltHeader) return true;
        const FltRecordType* const type = fltRecordType(opcode);
        return type != nullptr && type->place == FltRecordPlace::kNode;
    }

    void startNode(Node& node) {
        node = {};
        kind_ = reader_.opcode();
        node.kind = kind_;
        node.place = reader_.offset();
        offset_ = reader_.offset();
        node.parent =
            levels_.depth() == 0 ? (count_ == 0 ? kNone : 0) : levels_.innermost().level.owner;
        latest_.back() = count_++;
        depth_ = levels_.depth();
        isLeft_ = false;
        record_ = readRecord();
        attached_.clear();
        polygons_.clear();
        pool_.clear();
        transform_.reset();
        listOpcode_ = 0;
        if (isSurfaceOrLight(kind_)) polygons_.hasNormals = polygons_.hasTexture = true;
    }

    const FltRecord* readRecord() {
        std::unique_ptr<FltRecord>& record = records_[reader_.opcode()];
        if (!record) {
            const FltRecordType* const type = fltRecordType(reader_.opcode());
            if (type == nullptr || type->create == nullptr) return nullptr;
            record = type->create();
        }
        try {
            record->readFromFile(&reader_.token());
            return record.get();
        } catch (const diagnostics::AviaryAssertion&) {
            return nullptr;
        }
    }

    void takeRecord() {
        const std::uint16_t opcode = reader_.opcode();
        if (FltVertex::isVertex(opcode)) {
            ++vertices_;
            return;
        }
        if (opcode == kFltVertexPalette) {
            palette_ = reader_.offset();
            FltVertexPalette record;
            record.readBytes(reader_.bytes(), reader_.revision());
            paletteEnd_ = std::min<std::size_t>(palette_ + record.length, bytes_.size());
            used_.assign((paletteEnd_ - palette_) / 4 + 1, false);
            return;
        }
        if (levels_.isOpaque()) return;
        if (opcode == kFltContinuation) {
            isWhole_ = false;
            if (listOpcode_ != 0) takeList(listOpcode_, reader_.body());
            return;
        }
        listOpcode_ = 0;
        if (isVertexList(opcode)) {
            // One behind subfaces is their parent's, which has it already.
            if (isLeft_) return;
            listOpcode_ = opcode;
            return takeList(opcode, reader_.body());
        }
        attached_.push_back(FltRecordView::at(bytes_, reader_.offset()));
        if (opcode == kFltLongId) longIds_.try_emplace(offset_, textOf(reader_.body()));
        if (opcode == kFltMatrix && !transform_) {
            FltMatrix matrix;
            matrix.readBytes(reader_.bytes(), reader_.revision());
            transform_ = transformOf(matrix);
        }
        if (kind_ == kFltMesh && opcode == kFltLocalVertexPool) takePool();
        if (kind_ == kFltMesh && opcode == kFltMeshPrimitive) takePrimitive();
    }

    /// Whether the node that comes next is a subface of the present one.
    bool isAboveSubfaces() const {
        if (levels_.depth() == 0) return false;
        const auto& level = levels_.innermost();
        return level.opcode == kFltPushSubface && level.level.owner == count_ - 1;
    }

    /// A face's own corners stand in the level behind that of its subfaces.
    void takeListBehindSubfaces() {
        FltLevelWalk<Level> levels;
        levels.meet(kFltPushSubface);
        bool isBehind = false;
        std::uint16_t list = 0;
        for (std::size_t at = reader_.offset();;) {
            const FltRecordView record = FltRecordView::at(bytes_, at);
            if (record.empty()) return;
            at += record.length();
            const std::uint16_t opcode = record.opcode();
            const auto step = levels.meet(opcode);
            const bool isClosed = step == FltLevelWalk<Level>::Step::kClosed;
            if (step == FltLevelWalk<Level>::Step::kUnmatched ||
                levels.depth() > kFltDeepestLevel || (isClosed && isBehind && levels.depth() == 0))
                return;
            if (isClosed && levels.depth() == 0) isBehind = true;
            if (!isBehind || levels.isOpaque()) continue;
            if (levels.depth() == 0) {
                // Whatever is a node here stands beside the face.
                const FltRecordType* const type = fltRecordType(opcode);
                if (type != nullptr && type->place == FltRecordPlace::kNode) return;
            } else if (levels.depth() == 1 && isVertexList(opcode)) {
                takeList(list = opcode, record.body());
            } else if (opcode == kFltContinuation && list != 0) {
                takeList(list, record.body());
            } else {
                list = 0;
            }
        }
    }

    /// The corners that a vertex list names; of a morphing one those that are seen from nearby.
    void takeList(std::uint16_t opcode, std::span<const std::uint8_t> body) {
        const FltVertexOffsets offsets(body);
        const std::size_t step = FltVertexOffsets::perCorner(opcode);
        for (std::size_t i = 0; i + step <= offsets.size(); ++i) {
            const std::size_t place = palette_ + offsets[i];
            const FltRecordView vertex = FltRecordView::at(bytes_.first(paletteEnd_), place);
            if (palette_ == 0 || !FltVertexView::isViewable(vertex)) continue;
            use(offsets[i]);
            if (step == 2 && i % 2 == 0) continue;
            const FltVertexView view(vertex);
            polygons_.corners.push_back(view.position());
            polygons_.hasNormals = polygons_.hasNormals && view.hasNormal();
            polygons_.hasTexture = polygons_.hasTexture && view.hasTexture();
        }
    }

    void use(std::uint32_t offset) {
        const std::size_t bit = offset / 4;
        if (bit >= used_.size() || used_[bit]) return;
        used_[bit] = true;
        ++usedVertices_;
    }

    void takePool() {
        FltLocalVertexPool pool;
        try {
            pool.readBody(reader_.body());
        } catch (const diagnostics::AviaryAssertion&) {
            return;
        }
        isWhole_ = true;
        pool_.clear();
        for (const FltPoolVertex& vertex : pool.vertices) pool_.push_back(vertex.position);
        polygons_.hasNormals = (pool.mask & kFltPoolNormal) != 0;
        polygons_.hasTexture = (pool.mask & kFltPoolBaseTexture) != 0;
    }

    void takePrimitive() {
        FltMeshPrimitive primitive;
        try {
            primitive.readBody(reader_.body());
        } catch (const diagnostics::AviaryAssertion&) {
            return;
        }
        const std::vector<std::uint32_t>& indices = primitive.indices;
        for (const std::uint32_t index : indices) {
            if (index < pool_.size()) continue;
            // What continuations hold of a pool is not looked at.
            if (isWhole_) polygons_.badIndex = index;
            return;
        }
        const auto add = [&](std::initializer_list<std::size_t> corners) {
            for (const std::size_t i : corners) polygons_.corners.push_back(pool_[indices[i]]);
            polygons_.ends.push_back(static_cast<std::uint32_t>(polygons_.corners.size()));
        };
        switch (primitive.type) {
            case FltPrimitiveType::kTriangleStrip:
                for (std::size_t i = 2; i < indices.size(); ++i)
                    i % 2 == 0 ? add({i - 2, i - 1, i}) : add({i - 1, i - 2, i});
                break;
            case FltPrimitiveType::kTriangleFan:
                for (std::size_t i = 2; i < indices.size(); ++i) add({0, i - 1, i});
                break;
            case FltPrimitiveType::kQuadStrip:
                for (std::size_t i = 3; i < indices.size(); i += 2) add({i - 3, i - 2, i, i - 1});
                break;
            case FltPrimitiveType::kPolygon:
                for (const std::uint32_t index : indices) polygons_.corners.push_back(pool_[index]);
                polygons_.ends.push_back(static_cast<std::uint32_t>(polygons_.corners.size()));
                break;
            default:
                break;
        }
    }

    void finishNode(Node& node) {
        node.revision = reader_.revision();
        name_ = nameAt(offset_);
        node.name = name_;
        node.record = record_;
        node.attached = attached_;
        if (transform_) {
            node.hasTransform = true;
            node.transform = *transform_;
        }
        if (!isSurfaceOrLight(kind_)) return;
        if (kind_ == kFltFace)
            polygons_.ends.push_back(static_cast<std::uint32_t>(polygons_.corners.size()));
        if (polygons_.corners.empty()) polygons_.hasNormals = polygons_.hasTexture = false;
        node.polygons = &polygons_;
    }

    std::span<const std::uint8_t> bytes_;
    std::string path_;
    FltFileReader reader_;
    bool isHere_ = false;
    FltLevelWalk<Level> levels_;
    std::vector<std::uint32_t> latest_{kNone};  ///< by level: the number of the latest node in it
    std::uint32_t count_ = 0;
    std::map<std::uint16_t, std::unique_ptr<FltRecord>> records_;  ///< one of each class, reused
    std::map<std::size_t, std::string> longIds_;  ///< by the offsets of their nodes

    // Of the present node.
    std::uint16_t kind_ = 0;
    std::size_t offset_ = 0;
    std::size_t depth_ = 0;  ///< levels around it
    bool isLeft_ = false;    ///< the level in which it stands has been closed
    const FltRecord* record_ = nullptr;
    std::string name_;
    std::vector<FltRecordView> attached_;
    Polygons polygons_;
    std::vector<FltPoint3d> pool_;
    bool isWhole_ = true;  ///< the pool has all its vertices
    std::optional<Transform> transform_;
    std::uint16_t listOpcode_ = 0;  ///< of the vertex list that a continuation goes on with

    std::size_t palette_ = 0;
    std::size_t paletteEnd_ = 0;
    std::vector<bool> used_;  ///< by offset in the palette, in steps of 4
    std::uint64_t vertices_ = 0;
    std::uint64_t usedVertices_ = 0;
};

FileSource::FileSource(std::span<const std::uint8_t> bytes, std::string path)
    : walk_(std::make_unique<Walk>(bytes, std::move(path))) {}

FileSource::~FileSource() = default;

bool FileSource::next(Node& node) {
    return walk_->next(node);
}

std::size_t FileSource::estimate() const {
    // A face has some hundred bytes, its vertices included.
    constexpr std::size_t kBytesOfNode = 200;
    return walk_->size() / kBytesOfNode + 1;
}

std::string FileSource::nameAt(std::uint64_t place) const {
    return walk_->nameAt(place);
}

std::vector<std::string> FileSource::folders() const {
    if (walk_->path().empty()) return {};
    const std::filesystem::path folder = base::pathFrom(walk_->path()).parent_path();
    return {folder.empty() ? std::string(".") : base::textOf(folder)};
}

std::string FileSource::fileOf(std::uint64_t) const {
    return walk_->path();
}

std::uint64_t FileSource::unusedVertices() const {
    return walk_->unusedVertices();
}

}  // namespace checks
