// The host allocator: the only one whose blocks may be handed to the host to free.
#pragma once

#include <kiln/platform.h>

#include <cstddef>

/// Allocates `size` bytes (a block of its own even for 0), aligned for any type, not cleared.
/// Null when there is no memory. Freed with `KILN_free` and with nothing else.
[[nodiscard]] KILNAPI void* KILN_malloc(std::size_t size) noexcept;

/// Changes the size of `block` (null: allocates), keeping its bytes up to the smaller size. The
/// result replaces `block`. When there is no memory the result is null and `block` stays valid.
[[nodiscard]] KILNAPI void* KILN_realloc(void* block, std::size_t size) noexcept;

/// Frees a block of `KILN_malloc`, `KILN_realloc` or `KILN_strdup`; null does nothing. A block that
/// did not come from there, or is freed twice, ends the program with a message.
KILNAPI void KILN_free(void* block) noexcept;

/// A copy of `text` (null counts as empty) in a block of the host allocator; null without memory.
/// This is what `FPValue::SetOwnedString` takes.
[[nodiscard]] KILNAPI char* KILN_strdup(const char* text) noexcept;
