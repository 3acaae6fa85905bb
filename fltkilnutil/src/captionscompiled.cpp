// The captions of builds without resource libraries.
#include <fltkilnutil/captions.h>

#include <algorithm>
#include <iterator>

namespace fltkilnutil {

namespace {

struct Caption {
    std::uint32_t id;
    const char* text;
};

constexpr Caption kCaptions[] = {
#define CAPTION(id, text) {id, text},
#include "captions.inc"
#undef CAPTION
};

bool libraryInstalled = true;

bool readCaption(std::uint32_t id, std::string& text) {
    const auto found = std::ranges::find(kCaptions, id, &Caption::id);
    if (found == std::end(kCaptions)) return false;
    text = found->text;
    return true;
}

}  // namespace

CaptionReader openCaptionLibrary() {
    return libraryInstalled ? readCaption : CaptionReader();
}

void setCaptionLibraryInstalled(bool installed) noexcept {
    libraryInstalled = installed;
}

}  // namespace fltkilnutil
