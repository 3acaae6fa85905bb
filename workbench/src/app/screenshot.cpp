#include "screenshot.h"

#include <base/replacefile.h>
#include <base/utf16.h>
#include <framework/gdi.h>
#include <workbench/texts.h>

#include <wincodec.h>
#include <algorithm>
#include <cstdint>
#include <system_error>
#include <utility>
#include <vector>

using framework::MemoryDc, framework::WindowDc, framework::pixelFormat;

namespace workbench {
namespace {

/// Owns a reference to a COM object.
template <typename T>
class ComPtr {
public:
    ComPtr() = default;
    ~ComPtr() {
        if (object_) object_->Release();
    }
    ComPtr(const ComPtr&) = delete;
    ComPtr& operator=(const ComPtr&) = delete;
    T** out() { return &object_; }
    T* get() const { return object_; }
    T* operator->() const { return object_; }

private:
    T* object_ = nullptr;
};

/// The platform's object model, for the calling thread.
struct ComScope {
    HRESULT result = ::CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    ~ComScope() {
        if (SUCCEEDED(result)) ::CoUninitialize();
    }
};

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

HRESULT writePng(const std::wstring& path, Picture& picture) {
    const ComScope com;
    ComPtr<IWICImagingFactory> factory;
    ComPtr<IWICStream> stream;
    ComPtr<IWICBitmapEncoder> encoder;
    ComPtr<IWICBitmapFrameEncode> frame;
    WICPixelFormatGUID format = GUID_WICPixelFormat32bppBGR;
    const auto width = static_cast<UINT>(picture.width), height = static_cast<UINT>(picture.height);
    HRESULT result =
        ::CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                           IID_IWICImagingFactory, reinterpret_cast<void**>(factory.out()));
    if (SUCCEEDED(result)) result = factory->CreateStream(stream.out());
    if (SUCCEEDED(result)) result = stream->InitializeFromFilename(path.c_str(), GENERIC_WRITE);
    if (SUCCEEDED(result))
        result = factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.out());
    if (SUCCEEDED(result)) result = encoder->Initialize(stream.get(), WICBitmapEncoderNoCache);
    if (SUCCEEDED(result)) result = encoder->CreateNewFrame(frame.out(), nullptr);
    if (SUCCEEDED(result)) result = frame->Initialize(nullptr);
    if (SUCCEEDED(result)) result = frame->SetSize(width, height);
    if (SUCCEEDED(result)) result = frame->SetPixelFormat(&format);
    if (SUCCEEDED(result) && format != GUID_WICPixelFormat32bppBGR) result = E_FAIL;
    if (SUCCEEDED(result))
        result = frame->WritePixels(height, width * 4, width * height * 4,
                                    reinterpret_cast<BYTE*>(picture.pixels.data()));
    if (SUCCEEDED(result)) result = frame->Commit();
    if (SUCCEEDED(result)) result = encoder->Commit();
    return result;
}

}  // namespace

kiln::Status saveScreenshot(const std::string& path) {
    Picture picture = captureDesktop();
    if (picture.pixels.empty()) return kiln::Status::failure(textOf(TextId::kScreenUnreadable));
    const auto [least, most] = std::minmax_element(picture.pixels.begin(), picture.pixels.end());
    if (*least == *most) return kiln::Status::failure(textOf(TextId::kScreenEmpty));
    try {
        base::FileReplacement file(path);
        if (FAILED(writePng(base::toWide(file.name()), picture)))
            return kiln::Status::failure(textOf(TextId::kNotWritten, {path}));
        file.takePlace();
    } catch (const std::system_error& error) {
        return kiln::Status::failure(
            textOf(TextId::kNotWrittenBecause, {path, error.code().message()}));
    }
    return {};
}

}  // namespace workbench
