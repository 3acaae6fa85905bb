// Any bytes as a picture: read or refused, and what was read can be shown.
#include "expect.h"

#include <render/texture.h>

#include <cstdint>
#include <vector>

constexpr std::size_t kFewTexels = 64 * 1024;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::vector<std::uint8_t> block(data, data + size);
    try {
        const render::Picture picture = render::readPicture(block);
        const auto texels =
            static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(picture.height);
        expect(texels > 0 && texels <= render::kMostTexels, "the picture has a size");
        expect(picture.texels.size() == texels, "and as many texels");
        if (texels > kFewTexels) return 0;  // time is better spent on others
        const render::Texture texture(picture);
        expect(texture.hasAlpha() == picture.hasAlpha(), "what can be seen through stays so");
        const auto last = texture.level(texture.levels() - 1);
        expect(last.widthBits == 0 && last.heightBits == 0, "the smallest is one texel");
        static_cast<void>(texture.level(0).at(INT32_MIN, INT32_MAX));
        constexpr std::int32_t kFar = 1 << 30;
        const render::TextureUse use = render::readTextureUse(block);
        const render::Texture used(picture, render::Texture::kMostBits, use);
        static_cast<void>(used.level(0).at(-kFar, kFar, use, size % 2 == 0));
    } catch (const render::PictureError& error) {
        expect(*error.what() != 0, "a refusal has a reason");
    }
    return 0;
}
