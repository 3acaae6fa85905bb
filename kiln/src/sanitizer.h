// What the address sanitizer is told of memory that it does not allocate itself.
#pragma once

#include <cstddef>

#if defined(__SANITIZE_ADDRESS__)
#define KILN_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KILN_ADDRESS_SANITIZER 1
#endif
#endif

#ifdef KILN_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#include <sanitizer/lsan_interface.h>
#endif

namespace kiln {

#ifdef KILN_ADDRESS_SANITIZER

inline constexpr bool kHasAddressSanitizer = true;

/// Nobody may touch the memory until it is allocated.
inline void forbidAccess(const volatile void* memory, std::size_t size) noexcept {
    __asan_poison_memory_region(memory, size);
}
inline void allowAccess(const volatile void* memory, std::size_t size) noexcept {
    __asan_unpoison_memory_region(memory, size);
}
/// What the memory refers to is no leak.
inline void beginReferences(const void* memory, std::size_t size) noexcept {
    __lsan_register_root_region(memory, size);
}
inline void endReferences(const void* memory, std::size_t size) noexcept {
    __lsan_unregister_root_region(memory, size);
}

#else

inline constexpr bool kHasAddressSanitizer = false;

inline void forbidAccess(const volatile void*, std::size_t) noexcept {}
inline void allowAccess(const volatile void*, std::size_t) noexcept {}
inline void beginReferences(const void*, std::size_t) noexcept {}
inline void endReferences(const void*, std::size_t) noexcept {}

#endif

}  // namespace kiln
