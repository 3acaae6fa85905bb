#include <fltkilnutil/sourcerecords.h>

#include <kiln/kiln.h>
#include <quillon/fltrecordbytes.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

namespace fltkilnutil {

namespace {

// In users' scene files.
constexpr Class_ID kSourceRecordsClass{0x51D8A2C4, 0x7B30E61A};
constexpr std::uint16_t kVersion = 1;
constexpr std::uint16_t kHasRecord = 1;
constexpr std::uint16_t kHasGivenName = 2;
constexpr std::size_t kFlagsOffset = 3;  // of their low byte, in the chunk

/// Takes a number off the front of `bytes`; false when they are too few.
template <typename Number>
bool take(FileBytes& bytes, Number& number) {
    if (bytes.size() < sizeof number) return false;
    fltLoadBigEndian(bytes.data(), number);
    bytes = bytes.subspan(sizeof number);
    return true;
}

}  // namespace

bool isSourceChunk(const AppDataChunk& chunk) noexcept {
    return chunk.clID == kSourceRecordsClass && chunk.sclID == SCENE_IMPORT_CLASS_ID;
}

FileBytes sourceChunk(const Animatable& thing, SourceChunk id) noexcept {
    const AppDataChunk* const chunk =
        thing.GetAppDataChunk(kSourceRecordsClass, SCENE_IMPORT_CLASS_ID, static_cast<DWORD>(id));
    if (chunk == nullptr || chunk->data == nullptr) return {};
    return {static_cast<const std::uint8_t*>(chunk->data), chunk->length};
}

void storeSourceChunk(Animatable& thing, SourceChunk id, FileBytes bytes) {
    void* const block = KILN_malloc(bytes.size());
    if (block == nullptr) throw std::bad_alloc();
    std::memcpy(block, bytes.data(), bytes.size());
    if (thing.AddAppDataChunk(kSourceRecordsClass, SCENE_IMPORT_CLASS_ID, static_cast<DWORD>(id),
                              static_cast<DWORD>(bytes.size()), block) == nullptr) {
        KILN_free(block);
        throw std::bad_alloc();
    }
}

const SourceRecords& SourceRecordsReader::read(const Animatable& node) {
    kept_.revision = 0;
    kept_.record = {};
    kept_.givenName = {};
    kept_.attached.clear();
    const FileBytes bytes = sourceChunk(node, SourceChunk::records);
    if (!bytes.empty() && !readChunk(bytes)) kept_ = {};
    return kept_;
}

bool SourceRecordsReader::readChunk(FileBytes bytes) {
    std::uint16_t version = 0, flags = 0;
    if (!take(bytes, version) || version != kVersion || !take(bytes, flags)) return false;
    if (!take(bytes, kept_.revision) || kept_.revision == 0) return false;
    if (flags & kHasRecord) {
        kept_.record = FltRecordView::at(bytes, 0);
        if (kept_.record.empty()) return false;
        bytes = bytes.subspan(kept_.record.length());
    }
    if (flags & kHasGivenName) {
        std::uint16_t length = 0;
        if (!take(bytes, length) || bytes.size() < length) return false;
        kept_.givenName = {reinterpret_cast<const char*>(bytes.data()), length};
        bytes = bytes.subspan(length);
    }
    return bytes.empty() || readAttached(bytes);
}

/// Takes records that may say anything, as long as they are whole and rightly nested.
bool SourceRecordsReader::readAttached(FileBytes bytes) {
    using Step = decltype(levels_)::Step;
    if (levels_.depth() != 0) levels_ = {};
    std::size_t length = 0;
    for (const FltRecordView record : FltRecordRange(bytes)) {
        length += record.length();
        SourceRecord entry{record, levels_.isOpaque()};
        const auto index = static_cast<std::uint32_t>(kept_.attached.size());
        const Step step = levels_.meet(record.opcode(), index);
        if (step == Step::kUnmatched || levels_.depth() > kFltDeepestLevel) return false;
        if (step == Step::kOpened) entry.isOpaque = levels_.isOpaque();
        if (step == Step::kClosed && !entry.isOpaque) {
            FileBytes body = record.body();
            entry.push = levels_.left().level;
            if (!take(body, entry.children)) return false;
        }
        kept_.attached.push_back(entry);
    }
    return length == bytes.size() && levels_.depth() == 0;
}

SourceRecords sourceRecordsOf(const Animatable& node) {
    return SourceRecordsReader().read(node);
}

void SourceRecordsWriter::begin(std::uint32_t revision) {
    bytes_.clear();
    append(kVersion);
    append(std::uint16_t{0});
    append(revision);
}

/// Of the flags only the low byte is in use.
void SourceRecordsWriter::nodeRecord(FileBytes record) {
    bytes_[kFlagsOffset] |= kHasRecord;
    append(record);
}

void SourceRecordsWriter::givenName(std::string_view name) {
    bytes_[kFlagsOffset] |= kHasGivenName;
    name = name.substr(0, 0xFFFF);
    append(static_cast<std::uint16_t>(name.size()));
    append({reinterpret_cast<const std::uint8_t*>(name.data()), name.size()});
}

void SourceRecordsWriter::record(FileBytes record) {
    append(record);
}

void SourceRecordsWriter::record(FileBytes record, std::size_t longest) {
    const std::size_t start = bytes_.size();
    append(record.first(std::min(record.size(), longest)));
    fltStateLength(std::span(bytes_).subspan(start));
}

void SourceRecordsWriter::marker(std::uint16_t opcode) {
    fltAppendRecord(bytes_, opcode, 0);
}

void SourceRecordsWriter::marker(std::uint16_t opcode, std::uint32_t value) {
    fltStoreBigEndian(fltAppendRecord(bytes_, opcode, sizeof value).data(), value);
}

void SourceRecordsWriter::numbers(std::uint16_t opcode, std::uint32_t count) {
    const auto body = fltAppendRecord(bytes_, opcode, sizeof count * std::size_t{count});
    for (std::uint32_t i = 0; i < count; ++i) fltStoreBigEndian(&body[sizeof i * i], i);
}

template <typename Number>
void SourceRecordsWriter::append(Number value) {
    bytes_.resize(bytes_.size() + sizeof value);
    fltStoreBigEndian(bytes_.data() + bytes_.size() - sizeof value, value);
}

void SourceRecordsWriter::append(FileBytes bytes) {
    bytes_.insert(bytes_.end(), bytes.begin(), bytes.end());
}

SourceRecordsEdit::SourceRecordsEdit(Animatable& node)
    : node_(node), chunk_(sourceChunk(node, SourceChunk::records)), kept_(sourceRecordsOf(node)) {}

void SourceRecordsEdit::change(const FltRecordView& record, std::size_t length, FileBytes by) {
    const auto place = static_cast<std::size_t>(record.bytes().data() - chunk_.data());
    changes_.push_back({place, length, {by.begin(), by.end()}});
}

void SourceRecordsEdit::append(FileBytes added) {
    changes_.push_back({chunk_.size(), 0, {added.begin(), added.end()}});
}

/// Where the attached records begin in the chunk.
std::size_t SourceRecordsEdit::attachedPlace() const noexcept {
    if (kept_.attached.empty()) return chunk_.size();
    return static_cast<std::size_t>(kept_.attached.front().record.bytes().data() - chunk_.data());
}

void SourceRecordsEdit::store(std::uint32_t revision) {
    if (changes_.empty() && nodeRecord_.empty()) return;
    // What is put in front of a record comes before what becomes of the record itself.
    std::ranges::stable_sort(
        changes_, {}, [](const Change& change) { return std::pair(change.place, change.length); });
    SourceRecordsWriter anew;
    std::size_t done = 0;  // of the chunk
    const bool isKept = kept_.revision != 0;
    if (!isKept || !nodeRecord_.empty()) {
        anew.begin(isKept ? kept_.revision : revision);
        if (!nodeRecord_.empty()) anew.nodeRecord(nodeRecord_);
        if (!kept_.givenName.empty()) anew.givenName(kept_.givenName);
        done = isKept ? attachedPlace() : chunk_.size();
    }
    for (const Change& change : changes_) {
        anew.record(chunk_.subspan(done, change.place - done));
        anew.record(change.by);
        done = change.place + change.length;
    }
    anew.record(chunk_.subspan(done));
    storeSourceChunk(node_, SourceChunk::records, anew.bytes());
}

bool isVertexList(std::uint16_t opcode) noexcept {
    return opcode == kFltVertexList || opcode == kFltMorphVertexList;
}

}  // namespace fltkilnutil
