// The captions in memory, in both languages.
#pragma once

#include <fltkilnutil/captions.h>

#include <cstdint>

namespace fltkilnutil {

/// 512 cells of text for each language; cell i holds caption 101 + i. The texts stay where they
/// are, also when the other language is shown: what is in the cells changes.
class CaptionStore {
public:
    /// Copies, for each language, captions 101, 102, ... up to the first that the reader does not
    /// have. Longer ones than a cell holds are cut at a character boundary. Cells behind stay empty
    /// texts. Chinese is shown.
    explicit CaptionStore(const CaptionReader& reader);

    /// Puts the captions of `language` into the cells that `text` returns, and the others into
    /// those of `otherText`.
    void show(base::Language language) noexcept;

    /// The caption with `id` in the language that is shown, or an empty text; never null.
    const char* text(std::uint32_t id) const noexcept { return cell(shown_, id); }
    /// The same in the other language.
    const char* otherText(std::uint32_t id) const noexcept { return cell(others_, id); }

private:
    static constexpr std::uint32_t kFirstId = 101;
    static constexpr std::uint32_t kCells = 512;
    static constexpr std::uint32_t kTextSize = 256;
    using Cells = char[kCells][kTextSize + 1];

    static void fill(Cells& cells, const CaptionReader& reader, base::Language language);
    static const char* cell(const Cells& cells, std::uint32_t id) noexcept {
        return id - kFirstId < kCells ? cells[id - kFirstId] : "";
    }

    Cells shown_ = {};
    Cells others_ = {};
    base::Language language_ = base::Language::kChinese;
};

}  // namespace fltkilnutil
