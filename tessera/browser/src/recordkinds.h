// The kinds of nodes that the tree tells apart.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

namespace tessera {

/// What an icon stands for. The numbers are those of the icon set, not the order of the images.
enum class IconKind : std::int32_t {
    kLightSource = 7,
    kSceneRoot = 9,
    kOmniLight = 12,
    kSpotLight = 13,
    kPlain = 17,
    kNone = -1,
};

/// A row of the table of record kinds. The position of a row is that of its icon among the tree's
/// images.
struct RecordKind {
    IconKind icon;
    std::uint16_t opcode;  ///< 65535: not an OpenFlight record
    std::uint16_t bitmap;  ///< resource id
    bool endsCreateList;   ///< the user can create neither this kind nor any of a later row
};

inline constexpr std::size_t kRecordKindCount = 19;
/// The row of the overlay image, which is no kind.
inline constexpr int kOverlayRow = 18;

extern const std::array<RecordKind, kRecordKindCount> kRecordKinds;

/// The first row of that opcode, -1 when there is none.
int kindRowByOpcode(std::uint16_t opcode) noexcept;
/// The first row of that icon kind, -1 when there is none.
int kindRowByIcon(IconKind icon) noexcept;

/// The number of rows that the user can create: those before the first that ends the list.
int creatableKindCount() noexcept;

/// Loads the display names from the module's strings, and frees them.
void loadKindNames();
void freeKindNames() noexcept;
/// The display name of a row; empty when its string is missing or the names are not loaded.
const std::string& kindName(int row) noexcept;

}  // namespace tessera
