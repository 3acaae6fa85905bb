// The levels that the records of a file open and close.
#pragma once

#include <quillon/fltrecordtype.h>

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

/// Levels of push records may nest this deep; what nests deeper is refused. Far beyond real
/// content, and shallow enough for every program that later walks it by recursion.
inline constexpr std::size_t kFltDeepestLevel = 512;

/// Knows at each record of a file which levels are open around it. It is shown every record in
/// order; `Level` is what its user keeps of an open level, if anything.
///
/// Levels within an opaque one are opaque too.
template <typename Level>
class FltLevelWalk {
public:
    struct Open {
        std::uint16_t opcode;  ///< of the push
        FltLevelKind kind;
        bool isOpaque;
        Level level;
    };

    enum class Step {
        kNone,       ///< neither push nor pop
        kOpened,     ///< a push; its level is the innermost one now
        kClosed,     ///< the pop of the innermost level, which is `left()` now
        kUnmatched,  ///< a pop of no level, or of one that is not the innermost; it changes nothing
    };

    /// Takes the next record; a push opens a level with `level`.
    Step meet(std::uint16_t opcode, Level level = {}) {
        const auto [kind, by] = fltLevelChange(opcode);
        if (by == 0) [[likely]]
            return Step::kNone;
        if (by > 0) {
            open_.push_back({opcode, kind, fltIsOpaque(kind) || isOpaque(), std::move(level)});
            return Step::kOpened;
        }
        if (open_.empty() || open_.back().kind != kind) return Step::kUnmatched;
        leave();
        return Step::kClosed;
    }

    /// Whether some open level is one that the pop `opcode` closes.
    bool canClose(std::uint16_t opcode) const noexcept {
        const auto [kind, by] = fltLevelChange(opcode);
        for (const Open& open : open_)
            if (by < 0 && open.kind == kind) return true;
        return false;
    }

    /// Gives up the innermost level, as if its pop had been met.
    void leave() {
        left_ = std::move(open_.back());
        open_.pop_back();
    }

    std::size_t depth() const noexcept { return open_.size(); }
    bool isOpaque() const noexcept { return !open_.empty() && open_.back().isOpaque; }
    Open& innermost() noexcept { return open_.back(); }
    const Open& innermost() const noexcept { return open_.back(); }
    /// The level that was closed last.
    const Open& left() const noexcept { return left_; }

private:
    std::vector<Open> open_;
    Open left_{};
};
