#include <diagnostics/assertion.h>
#include <quillon/fltbsearch.h>

namespace {

constexpr std::int32_t kFound = 1;
constexpr std::int32_t kNotFound = 0;

}  // namespace

std::int32_t fltBsearch(const void* list, std::int32_t count, const void* key,
                        FltBsearchCompare compare, std::uint32_t* result) {
    diagnostics::check(result != nullptr, "fltbsearch", 38);
    const auto end = [&](std::int32_t index, std::int32_t found) {
        *result = static_cast<std::uint32_t>(index);
        return found;
    };
    if (count <= 0) return end(0, kNotFound);
    diagnostics::check(list != nullptr, "fltbsearch", 45);

    // Both ends first: keys beyond the list are settled by one or two comparisons.
    const std::int32_t atFirst = compare(list, 0, key);
    if (atFirst >= 0) return end(0, atFirst == 0 ? kFound : kNotFound);
    const std::int32_t last = count - 1;
    const std::int32_t atLast = compare(list, last, key);
    if (atLast < 0) return end(count, kNotFound);
    if (atLast == 0) return end(last, kFound);

    std::int32_t lower = 0;
    std::int32_t upper = count;
    std::int32_t probe = count / 2;
    for (;;) {
        const std::int32_t order = compare(list, probe, key);
        if (order == 0) return end(probe, kFound);
        if (order < 0) {
            if (probe == last) return end(count, kNotFound);
            lower = probe;
        } else {
            if (probe == 0) return end(0, kNotFound);
            upper = probe;
        }
        const std::int32_t next = lower + (upper - lower) / 2;
        // Only an element before the key can be met twice: the upper bound is never probed again.
        if (next == probe) return end(probe + 1, kNotFound);
        probe = next;
    }
}
