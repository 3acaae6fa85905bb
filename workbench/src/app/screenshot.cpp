#include "screenshot.h"

#include <base/replacefile.h>
#include <framework/gdi.h>
#include <render/pngfile.h>
#include <workbench/texts.h>

#include <algorithm>
#include <cstdint>
#include <system_error>
#include <vector>

using framework::MemoryDc, framework::WindowDc, framework::pixelFormat;

namespace workbench {
namespace {

struct Picture {
    int width = 0, height = 0;
    std::vector<std::uint32_t> pixels;  // 0x00RRGGBB, from top to bottom
};

Picture captureDesktop() {
    Picture picture;
    picture.width = ::GetSystemMetrics(SM_CXVIRTUALSCREEN);
    picture.height = ::GetSystemMetrics(SM_CYVIRTUALSCREEN);
    const int left = ::GetSystemMetrics(SM_XVIRTUALSCREEN);
    const int top = ::GetSystemMetrics(SM_YVIRTUALSCREEN);
    const WindowDc screen(nullptr);
    const MemoryDc memory(screen.get(), picture.width, picture.height);
    if (!memory.get() || !::BitBlt(memory.get(), 0, 0, picture.width, picture.height, screen.get(),
                                   left, top, SRCCOPY | CAPTUREBLT))
        return {};
    BITMAPINFO info = pixelFormat(picture.width, picture.height);
    picture.pixels.resize(static_cast<std::size_t>(picture.width) *
                          static_cast<std::size_t>(picture.height));
    const int lines =
        ::GetDIBits(screen.get(), memory.bitmap(), 0, static_cast<UINT>(picture.height),
                    picture.pixels.data(), &info, DIB_RGB_COLORS);
    if (lines != picture.height) return {};
    return picture;
}

}  // namespace

kiln::Status saveScreenshot(const std::string& path) {
    Picture picture = captureDesktop();
    if (picture.pixels.empty()) return kiln::Status::failure(textOf(TextId::kScreenUnreadable));
    const auto [least, most] = std::minmax_element(picture.pixels.begin(), picture.pixels.end());
    if (*least == *most) return kiln::Status::failure(textOf(TextId::kScreenEmpty));
    try {
        base::replaceFile(path, render::encodedPng(picture.width, picture.height, picture.pixels));
    } catch (const std::system_error& error) {
        return kiln::Status::failure(
            textOf(TextId::kNotWrittenBecause, {path, error.code().message()}));
    }
    return {};
}

}  // namespace workbench
