// Vertices written where they stand.
#pragma once

#include <quillon/fltbyteorder.h>
#include <quillon/fltgeometry.h>
#include <quillon/fltvertexview.h>

#include <cstdint>

/// Writes fields of an `FltVertex` into the bytes of its record, for loops over very many of them.
/// A field that the vertex's kind does not have must not be written.
class FltVertexEdit {
public:
    /// `record` has its opcode and room for all fields that are written.
    explicit FltVertexEdit(std::uint8_t* record, const FltVertexView::Layout& layout) noexcept
        : record_(record), layout_(layout) {}

    void position(const FltPoint3d& point) noexcept {
        put(layout_.position, point.x, point.y, point.z);
    }
    void normal(const FltPoint3f& normal) noexcept {
        put(layout_.normal, normal.x, normal.y, normal.z);
    }
    void texture(const FltTextureCoordinates& texture) noexcept {
        put(layout_.texture, texture.u, texture.v);
    }

private:
    template <typename... Numbers>
    void put(const FltVertexView::Layout::Place& place, const Numbers&... numbers) noexcept {
        std::uint8_t* at = record_ + place.begin;
        ((fltStoreBigEndian(at, numbers), at += sizeof numbers), ...);
    }

    std::uint8_t* record_;
    const FltVertexView::Layout& layout_;
};
