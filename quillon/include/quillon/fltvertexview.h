// Vertices read where they stand.
#pragma once

#include <quillon/fltbyteorder.h>
#include <quillon/fltgeometry.h>
#include <quillon/fltpackedcolor.h>
#include <quillon/fltrecordrange.h>
#include <quillon/fltvertex.h>

#include <cstddef>
#include <cstdint>
#include <span>

/// The fields of an `FltVertex` in the bytes of its record, for loops over very many of them.
/// Refers to the bytes. Records end where they like from their position on; what they lack, they
/// have not.
class FltVertexView {
public:
    /// Where the fields of one kind of vertex stand, in bytes from the start of the record. Of
    /// those that the kind does not have, `end` is `begin`.
    struct Layout {
        struct Place {
            std::uint16_t begin;
            std::uint16_t end;
        };
        Place flags, position, normal, texture, packedColor, colorIndex;
    };

    /// The length of the shortest record that has its position, and may be viewed.
    static constexpr std::size_t kShortest = 32;

    /// The layout of the vertices of `opcode`, which must be theirs.
    static const Layout& layoutOf(std::uint16_t opcode) noexcept {
        return kLayouts[opcode - kFltVertexWithColor];
    }

    /// Whether the record is a vertex with its position. An empty view is none.
    static bool isViewable(const FltRecordView& record) noexcept {
        return record.length() >= kShortest && FltVertex::isVertex(record.opcode());
    }

    /// `record` is one that `isViewable`.
    explicit FltVertexView(const FltRecordView& record) noexcept
        : bytes_(record.bytes()), layout_(&layoutOf(record.opcode())) {}
    explicit FltVertexView(std::span<const std::uint8_t> record) noexcept
        : FltVertexView(FltRecordView::at(record, 0)) {}

    std::span<const std::uint8_t> bytes() const noexcept { return bytes_; }
    const Layout& layout() const noexcept { return *layout_; }

    bool hasNormal() const noexcept { return has(layout_->normal); }
    bool hasTexture() const noexcept { return has(layout_->texture); }
    bool hasPackedColor() const noexcept { return has(layout_->packedColor); }
    bool hasColorIndex() const noexcept { return has(layout_->colorIndex); }

    std::uint16_t flags() const noexcept { return at<std::uint16_t>(layout_->flags.begin); }
    FltPoint3d position() const noexcept {
        const std::size_t place = layout_->position.begin;
        return {at<double>(place), at<double>(place + 8), at<double>(place + 16)};
    }
    // The others must be there.
    FltPoint3f normal() const noexcept {
        const std::size_t place = layout_->normal.begin;
        return {at<float>(place), at<float>(place + 4), at<float>(place + 8)};
    }
    FltTextureCoordinates texture() const noexcept {
        const std::size_t place = layout_->texture.begin;
        return {at<float>(place), at<float>(place + 4)};
    }
    FltPackedColor packedColor() const noexcept {
        const std::uint8_t* const place = bytes_.data() + layout_->packedColor.begin;
        return {place[0], place[1], place[2], place[3]};
    }
    std::uint32_t colorIndex() const noexcept {
        return at<std::uint32_t>(layout_->colorIndex.begin);
    }

private:
    bool has(const Layout::Place& place) const noexcept {
        return place.end != place.begin && bytes_.size() >= place.end;
    }
    template <typename Number>
    Number at(std::size_t place) const noexcept {
        Number number{};
        fltLoadBigEndian(bytes_.data() + place, number);
        return number;
    }

    static const Layout kLayouts[4];  ///< by kind, in the order of the opcodes

    std::span<const std::uint8_t> bytes_;
    const Layout* layout_;
};
