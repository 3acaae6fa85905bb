// The gap buffer against the standard string as its model: the same edits, the same contents, the
// same refusals.
//
// Input: operations of four bytes each: which one, a position, a count, a fill byte.
#include "expect.h"

#include <diagnostics/assertion.h>
#include <quillon/fltbytestring.h>

#include <cstring>
#include <string>

namespace {

std::string contents(const FltBytestring& bytes) {
    if (bytes.size() == 0) return {};
    return {reinterpret_cast<const char*>(bytes.contiguous()),
            static_cast<std::size_t>(bytes.size())};
}

/// Runs `edit`, which must be refused exactly when `allowed` is false. Returns `allowed`.
template <typename Edit>
bool attempt(bool allowed, Edit&& edit) {
    bool refused = false;
    try {
        edit();
    } catch (const diagnostics::AviaryAssertion&) {
        refused = true;
    }
    expect(refused != allowed, "an edit is refused exactly when it lies outside");
    return allowed;
}

struct Operation {
    std::uint8_t kind;
    std::int32_t position;  ///< -8 to 247
    std::int32_t count;     ///< -8 to 247
    char fill;
};

class Pair {
public:
    void apply(const Operation& operation) {
        const std::int32_t p = operation.position;
        const std::int32_t n = operation.count;
        const auto length = static_cast<std::int32_t>(model_.size());
        const bool inside = p >= 0 && n >= 0 && p <= length && n <= length - p;
        const std::string text(static_cast<std::size_t>(n > 0 ? n : 0), operation.fill);
        switch (operation.kind % 8) {
            case 0:
                if (attempt(n <= 0 || (p >= 0 && p <= length),
                            [&] { bytes_.insert(p, n, text.data()); }) &&
                    n > 0)
                    model_.insert(static_cast<std::size_t>(p), text);
                break;
            case 1:
                if (attempt(n == 0 || inside, [&] { bytes_.erase(p, n); }) && n > 0)
                    model_.erase(static_cast<std::size_t>(p), static_cast<std::size_t>(n));
                break;
            case 2:
                if (attempt(inside, [&] { bytes_.overwrite(p, n, text.data()); }))
                    model_.replace(static_cast<std::size_t>(p), static_cast<std::size_t>(n), text);
                break;
            case 3:
                resize(n, operation.fill);
                break;
            case 4:
                attempt(p >= 0 && p <= length, [&] { bytes_.moveGap(p); });
                break;
            case 5:
                look(p, n);
                break;
            case 6:
                bytes_.reserve(n);
                break;
            default: {
                FltBytestring copy(bytes_);
                expect(copy.gapStart() == bytes_.gapStart() && copy.capacity() == bytes_.capacity(),
                       "a copy has the same layout");
                bytes_ = std::move(copy);
            }
        }
        verify();
    }

    void finish() const { expect(contents(bytes_) == model_, "both hold the same"); }

private:
    void resize(std::int32_t n, char fill) {
        const std::int32_t before = bytes_.size();
        if (!attempt(n >= 0, [&] { bytes_.resize(n); })) return;
        model_.resize(static_cast<std::size_t>(n), fill);
        // New bytes are not cleared, so they are written before anybody looks.
        if (n > before)
            bytes_.overwrite(before, n - before, model_.data() + static_cast<std::size_t>(before));
    }

    void look(std::int32_t p, std::int32_t n) {
        const std::uint8_t* place = nullptr;
        const auto length = static_cast<std::int32_t>(model_.size());
        if (!attempt(p >= 0 && p < length, [&] { place = bytes_.checkedAddress(p, n); })) return;
        const std::int32_t present = n < length - p ? n : length - p;
        if (present > 0)
            expect(std::memcmp(place, model_.data() + p, static_cast<std::size_t>(present)) == 0,
                   "the bytes at an address are those of the string");
    }

    void verify() const {
        expect(bytes_.size() == static_cast<std::int32_t>(model_.size()), "both are as long");
        expect(bytes_.gapSize() == bytes_.capacity() - bytes_.size(), "the gap is what is left");
        expect(bytes_.gapStart() >= 0 && bytes_.gapStart() <= bytes_.size(),
               "the gap lies within the string");
        for (std::int32_t i = 0; i < bytes_.size(); ++i)
            expect(*bytes_.address(i, 1) ==
                       static_cast<std::uint8_t>(model_[static_cast<std::size_t>(i)]),
                   "both hold the same bytes");
    }

    FltBytestring bytes_;
    std::string model_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Pair pair;
    for (std::size_t i = 0; i + 4 <= size && i < 4 * 64; i += 4)
        pair.apply({data[i], data[i + 1] - 8, data[i + 2] - 8, static_cast<char>(data[i + 3])});
    pair.finish();
    return 0;
}
