#include <interchange/outline.h>

#include <bit>

namespace interchange {

namespace {

template <typename T>
T numberAt(FileBytes bytes, std::size_t offset) noexcept {
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i) {
        value = static_cast<T>(static_cast<T>(value << 8) | bytes[offset + i]);
    }
    return value;
}

}  // namespace

std::uint16_t uint16At(FileBytes bytes, std::size_t offset) noexcept {
    return numberAt<std::uint16_t>(bytes, offset);
}

std::uint32_t uint32At(FileBytes bytes, std::size_t offset) noexcept {
    return numberAt<std::uint32_t>(bytes, offset);
}

float float32At(FileBytes bytes, std::size_t offset) noexcept {
    return std::bit_cast<float>(numberAt<std::uint32_t>(bytes, offset));
}

double float64At(FileBytes bytes, std::size_t offset) noexcept {
    return std::bit_cast<double>(numberAt<std::uint64_t>(bytes, offset));
}

FileBytes recordAt(FileBytes bytes, std::uint32_t offset) noexcept {
    return bytes.subspan(offset, uint16At(bytes, offset + 2));
}

}  // namespace interchange
