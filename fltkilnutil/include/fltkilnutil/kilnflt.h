// OpenFlight data on the nodes of the host's scene.
//
// A node is an OpenFlight node from the moment it has a kind block. Beside it the node may carry
// its record, a comment and an options block. All four are application data chunks of the node,
// which the host saves with the scene and whose buffers the host frees.
//
// What all functions here have in common: a null node is a failure; a failure is the result
// `false`; nothing throws; an operation touches no chunk but those that it names; a failed
// operation leaves the node's chunks as they were unless its description says otherwise. Chunk
// bytes come from users' scene files and are never trusted: damaged ones are refused, or read as
// far as they go with zeros for the rest.
#pragma once

#include <fltkilnutil/nodekind.h>
#include <fltkilnutil/nodeoptions.h>

#include <cstdint>
#include <string>
#include <string_view>

class FltRecord;
class INode;
struct AppDataChunk;

/// The format revision (times 100) of everything that this system creates: OpenFlight 15.8.
inline constexpr std::uint32_t kFltRevision = 1580;

/// Whether the node has a kind block, that is, whether it is an OpenFlight node.
bool fltHasData(INode* node) noexcept;

/// Makes the node an OpenFlight node: attaches a kind block if it has none (one too short to be a
/// kind block is replaced), then sets kind and parameter. The parameter is the format revision
/// with which the node's record is written and read; new nodes use `kFltRevision`.
/// False only for a null node or when the block cannot be allocated or attached.
bool fltEnsureKind(INode* node, FltNodeKind kind, std::uint32_t parameter) noexcept;

/// Reads the node's kind. With `derive`, a node without a kind block gets its kind from its host
/// object, without anything being stored: a renderable geometry or shape object that converts to a
/// triangle mesh is a face, an omni, directional or free spot light is a light source, and any
/// other node at the head of a host group is a group. `kind` is untouched when the result is false.
bool fltGetKind(INode* node, bool derive, FltNodeKind& kind) noexcept;

/// Reads the parameter stored in the kind block; false, `parameter` untouched, without one.
bool fltGetParameter(INode* node, std::uint32_t& parameter) noexcept;

/// Whether the host object of the node counts as a face: geometry or shape, convertible to the
/// host's triangle mesh, and renderable.
bool fltIsFaceObject(INode* node) noexcept;

/// Stores the record in OpenFlight form at the node's stored parameter; false without a kind block
/// or when the record is too large for one OpenFlight record. An existing record chunk is updated
/// in place and keeps its buffer when the length stays the same.
bool fltPutRecord(INode* node, const FltRecord& record) noexcept;

/// Reads the node's record into `record` at the stored parameter; false without a kind block or a
/// record chunk, and for bytes that the record refuses (another opcode, for kinds that check it).
/// What a refused read leaves in `record` is unspecified but valid.
bool fltGetRecord(INode* node, FltRecord& record) noexcept;

/// Whether the node has a record chunk, readable or not.
bool fltHasRecord(INode* node) noexcept;

/// Takes the record away from the node; false when there is none.
bool fltRemoveRecord(INode* node) noexcept;

/// Stores the options block of a node; needs no kind block.
bool fltPutOptions(INode* node, const FltNodeOptions& options) noexcept;

/// Reads the node's options block; false without an options chunk or for bytes that the options
/// refuse. What a refused read leaves in `options` is unspecified but valid.
bool fltGetOptions(INode* node, FltNodeOptions& options) noexcept;

/// Whether the node has an options chunk, readable or not.
bool fltHasOptions(INode* node) noexcept;

/// Stores a node's record and, unless null, its options at once: both or neither. A node without a
/// kind block becomes one of `kind` with `parameter`, and stays as it was when the rest cannot be
/// stored; for any other node the two are not looked at.
bool fltPutData(INode* node, FltNodeKind kind, std::uint32_t parameter, const FltRecord& record,
                const FltNodeOptions* options) noexcept;

/// Stores `text` (UTF-8, ended by its first NUL if it has one) as the node's comment; needs no kind
/// block. False for a comment that does not fit one OpenFlight record (about 65,500 bytes).
bool fltPutComment(INode* node, std::string_view text) noexcept;

/// Reads the node's comment, up to its first NUL; false, `text` untouched, when there is no comment
/// chunk or it does not hold a comment record.
bool fltGetComment(INode* node, std::string& text) noexcept;

/// Copies kind block and record, which the source must both have, then comment and options where
/// the source has them; each replaces the destination's chunk of that sort. Stops with false at
/// the first thing missing: from a source with a kind block and no record the destination has by
/// then got the kind block. The bytes are copied as they are, readable or not.
bool fltCopyData(INode* source, INode* destination) noexcept;

/// Whether the chunk is one of ours, readable or not.
bool fltIsData(const AppDataChunk& chunk) noexcept;

/// Removes all chunks of ours from the node; true when there was at least one.
bool fltRemoveData(INode* node) noexcept;
