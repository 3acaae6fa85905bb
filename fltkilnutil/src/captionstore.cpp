#include "captionstore.h"

#include <quillon/flttext.h>

#include <algorithm>
#include <span>
#include <utility>

namespace fltkilnutil {

CaptionStore::CaptionStore(const CaptionReader& reader) {
    fill(shown_, reader, base::Language::kChinese);
    fill(others_, reader, base::Language::kEnglish);
}

void CaptionStore::fill(Cells& cells, const CaptionReader& reader, base::Language language) {
    std::string caption;
    for (std::uint32_t i = 0; i < kCells && reader(language, kFirstId + i, caption); ++i)
        fltSetText(std::span<char>(cells[i], kTextSize), caption);
}

void CaptionStore::show(base::Language language) noexcept {
    if (std::exchange(language_, language) != language) std::swap(shown_, others_);
}

}  // namespace fltkilnutil
