// OpenFlight files put together byte by byte, whole ones and broken ones.
#pragma once

#include <quillon/fltopcode.h>
#include <array>
#include <bit>
#include <cstdint>
#include <initializer_list>
#include <span>
#include <string_view>
#include <vector>

/// Big-endian bytes.
class Bytes {
public:
    Bytes& u8(unsigned value) {
        bytes_.push_back(static_cast<std::uint8_t>(value));
        return *this;
    }
    Bytes& u16(unsigned value) { return u8(value >> 8).u8(value); }
    Bytes& u32(std::uint32_t value) { return u16(value >> 16).u16(value & 0xFFFF); }
    Bytes& f32(float value) { return u32(std::bit_cast<std::uint32_t>(value)); }
    Bytes& f64(double value) {
        const auto bits = std::bit_cast<std::uint64_t>(value);
        return u32(static_cast<std::uint32_t>(bits >> 32)).u32(static_cast<std::uint32_t>(bits));
    }
    Bytes& zeros(std::size_t count) {
        bytes_.resize(bytes_.size() + count);
        return *this;
    }
    Bytes& text(std::string_view text) {
        for (const char character : text) u8(static_cast<std::uint8_t>(character));
        return *this;
    }
    /// Text in a field of its own width.
    Bytes& field(std::string_view content, std::size_t width) {
        return text(content).zeros(width - content.size());
    }
    Bytes& append(const Bytes& other) {
        bytes_.insert(bytes_.end(), other.bytes_.begin(), other.bytes_.end());
        return *this;
    }

    std::size_t size() const { return bytes_.size(); }
    std::vector<std::uint8_t>& vector() { return bytes_; }
    operator std::span<const std::uint8_t>() const { return bytes_; }

private:
    std::vector<std::uint8_t> bytes_;
};

/// A file under construction. Starts with a header of the length that it has at 15.8.
class FltBytes : public Bytes {
public:
    static constexpr std::size_t kHeaderLength = 328;
    static constexpr std::size_t kVertexLength = 40;

    explicit FltBytes(std::string_view id = "db", std::uint32_t revision = 1580) {
        record(kFltHeader, Bytes().field(id, 8).u32(revision).zeros(kHeaderLength - 16));
    }

    FltBytes& record(unsigned opcode, const Bytes& body = {}) {
        u16(opcode).u16(static_cast<unsigned>(body.size() + 4)).append(body);
        return *this;
    }

    FltBytes& push() { return record(kFltPushLevel); }
    FltBytes& pop() { return record(kFltPopLevel); }
    FltBytes& group(std::string_view id) {
        return record(kFltGroup, Bytes().field(id, 8).zeros(20));
    }
    FltBytes& object(std::string_view id) {
        return record(kFltObject, Bytes().field(id, 8).zeros(16));
    }
    FltBytes& comment(std::string_view text) { return record(kFltComment, Bytes().text(text)); }
    FltBytes& longId(std::string_view text) { return record(kFltLongId, Bytes().text(text)); }

    /// A face as written at 15.8, without color unless `flags` say so.
    FltBytes& face(std::string_view id, std::uint32_t flags = 0x60000000,
                   std::uint32_t packedColor = 0, std::uint32_t colorIndex = 0) {
        Bytes body;
        body.field(id, 8).zeros(32).u32(flags).zeros(8).u32(packedColor).zeros(4);
        body.u16(0xFFFF).zeros(2).u32(colorIndex).zeros(8);
        return record(kFltFace, body);
    }

    /// A vertex palette of vertices with color.
    FltBytes& palette(std::initializer_list<std::array<double, 3>> points) {
        record(kFltVertexPalette,
               Bytes().u32(static_cast<std::uint32_t>(8 + kVertexLength * points.size())));
        for (const auto& [x, y, z] : points) {
            record(kFltVertexWithColor, Bytes().zeros(4).f64(x).f64(y).f64(z).zeros(8));
        }
        return *this;
    }

    /// A vertex list over vertices of `palette`, by number.
    FltBytes& list(std::initializer_list<std::uint32_t> vertices) {
        Bytes body;
        for (const std::uint32_t i : vertices) {
            body.u32(8 + i * static_cast<std::uint32_t>(kVertexLength));
        }
        return record(kFltVertexList, body);
    }

    /// A matrix that moves by (x, y, z), and zeros behind it.
    FltBytes& matrix(float x, float y, float z, std::size_t padding = 0) {
        Bytes body;
        for (const float value :
             {1.F, 0.F, 0.F, 0.F, 0.F, 1.F, 0.F, 0.F, 0.F, 0.F, 1.F, 0.F, x, y, z, 1.F}) {
            body.f32(value);
        }
        return record(kFltMatrix, body.zeros(padding));
    }

    /// A face over vertices of `palette`.
    FltBytes& polygon(std::string_view id, std::initializer_list<std::uint32_t> vertices) {
        return face(id).push().list(vertices).pop();
    }
};
