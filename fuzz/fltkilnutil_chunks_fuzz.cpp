// Arbitrary bytes as the four chunks of a node of each kind: loaded or refused without a change to
// the node, every row edited, stored, loaded again.
//
// Input: kind, dressing and revision in a byte each, the four chunks' lengths in two bytes each,
// then the kind block, the record, the comment and the options. What follows is the text that the
// rows are edited with. A bit of the dressing puts opcode and length of a proper record into a
// chunk, which random bytes seldom have.
#include "expect.h"
#include "input.h"

#include <fltkilnutil/fltattr.h>
#include <fltkilnutil/kilnflt.h>
#include <kiln/host/core.h>
#include <kiln/host/diagnostics.h>
#include <kiln/kiln.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>
#include <string>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr Class_ID kChunkClass(0x6A3C1F07, 0x2E9D0001);
constexpr SClass_ID kChunkSuperClass = 0xA10;
constexpr DWORD kChunks = 4;
constexpr std::uint32_t kRevisions[] = {1580, 1570, 1560, 1540, 1510, 1420, 0, 0xFFFFFFFF};

void attach(INode* node, DWORD id, const Bytes& bytes) {
    void* const block = KILN_malloc(bytes.size());
    if (!bytes.empty()) std::memcpy(block, bytes.data(), bytes.size());
    node->AddAppDataChunk(kChunkClass, kChunkSuperClass, id, static_cast<DWORD>(bytes.size()),
                          block);
}

std::array<Bytes, kChunks> chunksOf(INode* node) {
    std::array<Bytes, kChunks> chunks;
    for (DWORD id = 0; id < kChunks; ++id) {
        const auto* const chunk = node->GetAppDataChunk(kChunkClass, kChunkSuperClass, id);
        if (chunk == nullptr || chunk->data == nullptr) continue;
        const auto* const data = static_cast<const std::uint8_t*>(chunk->data);
        chunks[id].assign(data, data + chunk->length);
    }
    return chunks;
}

/// Puts opcode and length into the bytes, as far as there are any.
void dressRecord(Bytes& bytes, std::uint16_t opcode) {
    const std::size_t length = bytes.size();
    if (length < 4 || length > 0xFFFF) return;
    bytes[0] = static_cast<std::uint8_t>(opcode >> 8);
    bytes[1] = static_cast<std::uint8_t>(opcode);
    bytes[2] = static_cast<std::uint8_t>(length >> 8);
    bytes[3] = static_cast<std::uint8_t>(length);
}

void dressKind(Bytes& bytes, FltNodeKind kind, std::uint32_t revision) {
    bytes.resize(40);
    std::memcpy(&bytes[4], &kind, sizeof kind);
    std::memcpy(&bytes[8], &revision, sizeof revision);
}

std::uint16_t optionsOpcode(FltNodeKind kind) {
    return kind == FltNodeKind::LightSource ? 102 : static_cast<std::uint16_t>(kind);
}

/// Reads the chunks from the input onto the node; chunks without bytes are left out.
void attachChunks(INode* node, FltNodeKind kind, Input& input) {
    const std::uint8_t dressing = input.byte();
    const std::uint32_t revision = kRevisions[input.byte() % std::size(kRevisions)];
    std::array<std::size_t, kChunks> lengths{};
    for (std::size_t& length : lengths) length = input.length();
    std::array<Bytes, kChunks> chunks;
    for (std::size_t i = 0; i < kChunks; ++i) {
        const auto bytes = input.bytes(lengths[i]);
        chunks[i].assign(bytes.begin(), bytes.end());
    }
    if (dressing & 1) dressKind(chunks[0], kind, revision);
    if (dressing & 2) dressRecord(chunks[1], static_cast<std::uint16_t>(kind));
    if (dressing & 4) dressRecord(chunks[2], 31);
    if (dressing & 8) dressRecord(chunks[3], optionsOpcode(kind));
    for (DWORD id = 0; id < kChunks; ++id)
        if (!chunks[id].empty() || (dressing & 0x10) != 0) attach(node, id, chunks[id]);
}

void editEveryRow(FltAttrGroup& group, const std::string& text) {
    for (FltAttrDesc* row = group.descriptors; !row->isTerminator(); ++row) {
        const bool choose = !row->choices.empty() && (text.size() & 1) == 0;
        row->value.setText(choose ? row->choices[text.size() / 2 % row->choices.size()]
                                  : text.c_str());
    }
}

void loadAndStore(INode* node, FltAttrGroup& group) {
    expect(fltAttrLoad(node, 1580) == &group, "what was stored can be loaded");
    expect(fltAttrStore(node, group), "what was loaded can be stored");
}

/// What is loaded and stored without an edit stays the same to the last byte. Not so for a light
/// source, one row of which is declared to be written anew every time. A switch whose new mask
/// width leaves a part of a mask over loses that part when it is read, since it says how many whole
/// masks there are.
void expectNothingLost(INode* node, FltAttrGroup& group) {
    if (group.kind == FltNodeKind::Switch) loadAndStore(node, group);
    const auto stored = chunksOf(node);
    loadAndStore(node, group);
    if (group.kind != FltNodeKind::LightSource)
        expect(chunksOf(node) == stored, "storing without an edit changes nothing");
}

/// One row of the copy is edited alone, the same row of the node among all.
void expectEditIsTheSame(INode* node, INode* copy, FltAttrGroup& group, const std::string& text) {
    const std::size_t rows = fltAttrCount(group);
    if (rows == 0 || !fltCopyData(node, copy)) return;
    FltAttrDesc& row = group.descriptors[text.size() % rows];
    if (fltAttrLoad(node, 1580) != &group) return;
    row.value.setText(text.c_str());
    const bool stored = fltAttrStore(node, group);
    expect(fltAttrEdit(copy, 1580, group, row, text.c_str()) == stored,
           "one row can be edited when all can");
    if (group.kind == FltNodeKind::LightSource) return;  // storing all changes more than the edit
    for (const DWORD id : {1u, 3u})
        expect(chunksOf(copy)[id] == chunksOf(node)[id], "to the same bytes");
}

void exercise(INode* node, INode* copy, const std::string& text) {
    const auto before = chunksOf(node);
    std::string comment;
    constexpr std::size_t kSafeComment =
        65'000;  // a longer one may outgrow a record by its padding
    if (fltGetComment(node, comment) && comment.size() < kSafeComment)
        expect(fltPutComment(copy, comment), "a comment fits again");
    FltAttrGroup* const group = fltAttrLoad(node, 1580);
    expect(chunksOf(node) == before, "loading changes nothing");
    if (group != nullptr) {
        expectEditIsTheSame(node, copy, *group, text);
        fltRemoveData(copy);
        const auto now = chunksOf(node);
        expect(fltAttrLoad(node, 1580) == group, "it can still be loaded");
        editEveryRow(*group, text);
        if (fltAttrStore(node, *group))
            expectNothingLost(node, *group);
        else
            expect(chunksOf(node) == now, "a refused store changes nothing");
    }
    fltCopyData(node, copy);
    fltRemoveData(node);
    expect(node->NumAppDataChunks() == 0, "all data can be removed");
}

FltNodeKind chosenKind(std::uint8_t number) {
    FltAttrGroup* const* const groups = fltAttrGroups();
    expect(groups != nullptr, "the captions are compiled in");
    constexpr std::size_t kGroups = 14;
    return groups[number % kGroups]->kind;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = kiln::Core::create();
    static const std::size_t blocks = kiln::allocatedBlocks();
    Input input({data, size});
    const FltNodeKind kind = chosenKind(input.byte());
    INode* const node = GetCOREInterface()->CreateObjectNode(new DummyObject);
    INode* const copy = GetCOREInterface()->CreateObjectNode(new DummyObject);
    attachChunks(node, kind, input);
    const auto rest = input.rest();
    exercise(node, copy, std::string(rest.begin(), rest.end()));
    core.newScene();
    expect(kiln::allocatedBlocks() == blocks, "every block is given back to the host");
    return 0;
}
