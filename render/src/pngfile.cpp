#include <render/pngfile.h>

#include <cstdint>
#include <new>
#include <vector>

#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#define STBI_WRITE_NO_STDIO
#include <stb/stb_image_write.h>

namespace render {

std::string encodedPng(int width, int height, std::span<const Color> pixels) {
    std::vector<std::uint8_t> channels;
    channels.reserve(pixels.size() * 3);
    for (const Color pixel : pixels) {
        for (const unsigned shift : {16u, 8u, 0u})
            channels.push_back(static_cast<std::uint8_t>(pixel >> shift));
    }
    std::string bytes;
    const auto append = [](void* to, void* data, int size) {
        static_cast<std::string*>(to)->append(static_cast<const char*>(data),
                                              static_cast<std::size_t>(size));
    };
    if (!stbi_write_png_to_func(append, &bytes, width, height, 3, channels.data(), width * 3))
        throw std::bad_alloc();
    return bytes;
}

}  // namespace render
