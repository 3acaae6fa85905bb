#include "recordpatch.h"

#include <quillon/fltrecord.h>
#include <quillon/fltrecordbytes.h>
#include <quillon/flttoken.h>

#include <algorithm>

namespace palettes {

std::vector<std::uint8_t> patched(const FltRecordView& read, const FltRecord& before,
                                  const FltRecord& after, std::uint32_t revision) {
    FltToken then, now;
    before.writeToken(then, revision);
    after.writeToken(now, revision);
    const std::span<const std::uint8_t> old(then.data(), then.length()),
        bytes(now.data(), now.length());
    std::vector<std::uint8_t> result(bytes.begin(), bytes.end());
    const std::size_t common = std::min({result.size(), old.size(), read.bytes().size()});
    for (std::size_t i = FltRecordView::kHeaderSize; i < common; ++i)
        if (result[i] == old[i]) result[i] = read.bytes()[i];
    if (read.bytes().size() > old.size()) {
        const auto tail = read.bytes().subspan(old.size());
        result.insert(result.end(), tail.begin(), tail.end());
    }
    // What was not there and does not differ stays away.
    if (read.bytes().size() < old.size() && result.size() == old.size() &&
        std::ranges::equal(bytes.subspan(read.bytes().size()), old.subspan(read.bytes().size())))
        result.resize(read.bytes().size());
    fltStateLength(result);
    return result;
}

}  // namespace palettes
