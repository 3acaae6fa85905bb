// The nesting that control records open and close.
#pragma once

#include <quillon/fltrecordtype.h>

#include <cstdint>

/// Push records minus pop records, per kind. Depths go negative when a file pops more than it
/// pushes; whoever cares tests for that. `FltLevelWalk` is for those who need to know which push a
/// pop belongs to.
struct FltNesting {
    std::int32_t level = 0;
    std::int32_t subface = 0;
    std::int32_t extension = 0;
    std::int32_t attribute = 0;

    /// Counts a record of `opcode`.
    void count(std::uint16_t opcode) noexcept {
        const FltLevelChange change = fltLevelChange(opcode);
        if (change.by != 0) [[unlikely]]
            step(change);
    }

    std::int32_t total() const noexcept { return level + subface + extension + attribute; }

    friend bool operator==(const FltNesting&, const FltNesting&) = default;

private:
    void step(FltLevelChange change) noexcept;
};
