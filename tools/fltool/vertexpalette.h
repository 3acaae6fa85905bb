// Which offsets a vertex list may name.
#pragma once

#include <quillon/fltfilereader.h>

#include <cstdint>
#include <string>
#include <vector>

namespace fltool {

/// The vertex palette of a file, as it passes by: its record and the vertex records behind it.
/// Vertices are named by their byte offset from the start of the palette record.
class VertexPalette {
public:
    /// Takes notice of the reader's current record; every record of the file is shown once, in
    /// order. Returns what is wrong with it as a vertex or palette record, or nothing.
    std::string meet(FltFileReader& reader);

    /// What is wrong with the palette now that the file has ended, or nothing.
    std::string finish() const;

    /// What is wrong with the vertex list of that opcode (plain or morph) that the reader is at, or
    /// that its record continues; or nothing.
    std::string judgeList(FltFileReader& reader, std::uint16_t opcode) const;

    /// Where the palette record begins in the file.
    std::size_t offset() const noexcept { return offset_; }

private:
    bool hasVertexAt(std::uint32_t offset) const;
    std::string begin(FltFileReader& reader);

    bool exists_ = false;
    bool open_ = false;  ///< only vertices have followed so far
    std::size_t offset_ = 0;
    std::uint32_t statedSize_ = 0;         ///< palette record and vertices, as the record says
    std::uint32_t size_ = 0;               ///< the same, as counted
    std::vector<std::uint32_t> vertices_;  ///< ascending
};

}  // namespace fltool
