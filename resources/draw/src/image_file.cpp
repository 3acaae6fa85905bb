#include "image_file.h"

#include <algorithm>
#include <cmath>

namespace draw {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t kInfoHeaderSize = 40;

void put16(Bytes& out, std::uint32_t value) {
    out.push_back(static_cast<std::uint8_t>(value));
    out.push_back(static_cast<std::uint8_t>(value >> 8));
}

void put32(Bytes& out, std::uint32_t value) {
    put16(out, value);
    put16(out, value >> 16);
}

std::uint8_t toByte(double part) {
    return static_cast<std::uint8_t>(std::lround(std::clamp(part, 0.0, 1.0) * 255));
}

void putColor(Bytes& out, Color color) {
    out.push_back(toByte(color.blue));
    out.push_back(toByte(color.green));
    out.push_back(toByte(color.red));
}

// BITMAPINFOHEADER. In an icon the height counts the transparency mask too.
void putInfoHeader(Bytes& out, int width, int height, std::uint32_t bitsPerPixel) {
    put32(out, kInfoHeaderSize);
    put32(out, static_cast<std::uint32_t>(width));
    put32(out, static_cast<std::uint32_t>(height));
    put16(out, 1);
    put16(out, bitsPerPixel);
    for (int field = 0; field < 6; ++field) put32(out, 0);
}

void padTo4(Bytes& out, std::size_t rowStart) {
    while ((out.size() - rowStart) % 4 != 0) out.push_back(0);
}

Bytes iconImage(const Canvas& canvas) {
    Bytes out;
    putInfoHeader(out, canvas.width(), canvas.height() * 2, 32);
    for (int y = canvas.height() - 1; y >= 0; --y) {
        for (int x = 0; x < canvas.width(); ++x) {
            putColor(out, canvas.at(x, y));
            out.push_back(toByte(canvas.at(x, y).alpha));
        }
    }
    // The mask serves only displays without an alpha channel.
    for (int y = canvas.height() - 1; y >= 0; --y) {
        const std::size_t rowStart = out.size();
        for (int x = 0; x < canvas.width(); x += 8) {
            unsigned bits = 0;
            for (int i = 0; i < 8; ++i) {
                const bool clear =
                    x + i < canvas.width() && toByte(canvas.at(x + i, y).alpha) < 128;
                bits = bits << 1 | (clear ? 1U : 0U);
            }
            out.push_back(static_cast<std::uint8_t>(bits));
        }
        padTo4(out, rowStart);
    }
    return out;
}

}  // namespace

std::vector<std::uint8_t> bitmapFile(const Canvas& canvas) {
    constexpr std::uint32_t kFileHeaderSize = 14;
    Bytes pixels;
    for (int y = canvas.height() - 1; y >= 0; --y) {
        const std::size_t rowStart = pixels.size();
        for (int x = 0; x < canvas.width(); ++x) putColor(pixels, canvas.at(x, y));
        padTo4(pixels, rowStart);
    }

    Bytes out{'B', 'M'};
    const std::uint32_t offset = kFileHeaderSize + kInfoHeaderSize;
    put32(out, offset + static_cast<std::uint32_t>(pixels.size()));
    put32(out, 0);
    put32(out, offset);
    putInfoHeader(out, canvas.width(), canvas.height(), 24);
    out.insert(out.end(), pixels.begin(), pixels.end());
    return out;
}

std::vector<std::uint8_t> iconFile(const std::vector<Canvas>& canvases) {
    constexpr std::size_t kDirectorySize = 6;
    constexpr std::size_t kEntrySize = 16;
    Bytes out;
    put16(out, 0);
    put16(out, 1);  // an icon, not a cursor
    put16(out, static_cast<std::uint32_t>(canvases.size()));

    Bytes images;
    for (const Canvas& canvas : canvases) {
        const Bytes image = iconImage(canvas);
        out.push_back(static_cast<std::uint8_t>(canvas.width()));
        out.push_back(static_cast<std::uint8_t>(canvas.height()));
        put16(out, 0);
        put16(out, 1);
        put16(out, 32);
        put32(out, static_cast<std::uint32_t>(image.size()));
        put32(out, static_cast<std::uint32_t>(kDirectorySize + kEntrySize * canvases.size() +
                                              images.size()));
        images.insert(images.end(), image.begin(), image.end());
    }
    out.insert(out.end(), images.begin(), images.end());
    return out;
}

}  // namespace draw
