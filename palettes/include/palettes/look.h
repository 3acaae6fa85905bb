// What nodes look like, and what else only files say of them: as rows for many nodes at once.
#pragma once

#include <palettes/edits.h>

#include <fltkilnutil/fltfields.h>

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

class INode;

namespace palettes {

/// What a row shows of its field.
enum class LookPart : std::uint8_t {
    kWhole,
    kEntry,      ///< of a color index, the entry
    kIntensity,  ///< of a color index, the intensity
    kShare,      ///< of 65,535, which may be entered in percent
};

/// A field of nodes, in the words of the user.
struct LookRow {
    std::string caption;            ///< in the host's language
    std::vector<std::string> keys;  ///< of several the values stand side by side, with blanks
    LookPart part = LookPart::kWhole;
    std::optional<Palette> palette;    ///< whose entry it names
    std::vector<std::string> choices;  ///< empty where any value goes
    bool isAlternate = false;          ///< of the alternate color
    std::string value;                 ///< of the nodes that have the field: the first one's
    bool isMixed = false;              ///< others have other values
    bool canSet = false;               ///< of one node at least
    bool isColor = false;              ///< of the colors of a face
};

/// What a color of faces is, of the first that has one.
struct LookColor {
    std::optional<Rgb> color;
    bool isMixed = false;
};

/// What nodes have in common. Reads each of them once.
class Look {
public:
    /// Throws `std::bad_alloc`.
    explicit Look(std::span<INode* const> nodes);

    /// Those that one of the nodes has at least, in a fixed order.
    const std::vector<LookRow>& rows() const noexcept { return rows_; }
    /// How many of the nodes are faces or meshes.
    std::size_t surfaces() const noexcept { return surfaces_; }

    /// The color as it counts, or the alternate one; of `database` where it is one by index.
    LookColor color(const Database& database, bool isAlternate) const;
    /// What a row's value stands for: the name of an entry, a color, a share in percent. Empty for
    /// what says all itself, and for mixed values.
    std::string meaning(const Database& database, const LookRow& row) const;

private:
    const LookRow* row(std::string_view key, LookPart part = LookPart::kWhole) const noexcept;

    std::vector<LookRow> rows_;
    std::size_t surfaces_ = 0;
};

/// The nodes that a page is about: those of `selected`, and with `below` all faces and meshes below
/// them too. Each once.
std::vector<INode*> lookNodes(std::span<INode* const> selected, bool below);

/// Sets what a row shows on all nodes that have it, as one step; every other byte of them stays.
/// What their faces show in the scene follows: their color and their picture. Returns how many
/// nodes have the value now. Throws `Refusal`, with nothing changed, for a value that the field
/// cannot hold and where no node has it.
std::size_t setLook(std::span<INode* const> nodes, const LookRow& row, std::string_view value);

/// Gives faces and meshes that color, as one step: a packed one where packed ones count, else one
/// of their palette, which gets it if it is not there, and has it count. Returns how many they are.
/// Throws `Refusal`.
std::size_t setLookColor(std::span<INode* const> nodes, bool isAlternate, Rgb color);

}  // namespace palettes
