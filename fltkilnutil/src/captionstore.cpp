#include "captionstore.h"

#include <quillon/flttext.h>

#include <span>

namespace fltkilnutil {

CaptionStore::CaptionStore(const CaptionReader& reader) {
    std::string caption;
    for (std::uint32_t i = 0; i < kCells && reader(kFirstId + i, caption); ++i)
        fltSetText(std::span<char>(cells_[i], kTextSize), caption);
}

const char* CaptionStore::text(std::uint32_t id) const noexcept {
    return id - kFirstId < kCells ? cells_[id - kFirstId] : "";
}

}  // namespace fltkilnutil
