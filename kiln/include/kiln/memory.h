// The host allocator: the only one whose blocks the host may be left to free.
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

/// Memory for the SDK's own classes, of which a scene has very many: `size` bytes (not 0), aligned
/// to 16 when the size is a multiple of 16, to 8 otherwise, and not cleared. Throws
/// `std::bad_alloc`. Freed with `KILN_deletePiece`, which must be told the same size, and with
/// nothing else.
[[nodiscard]] KILNAPI void* KILN_newPiece(std::size_t size);
KILNAPI void KILN_deletePiece(void* piece, std::size_t size) noexcept;
