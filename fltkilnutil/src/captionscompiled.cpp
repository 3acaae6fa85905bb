// The captions of builds without resource libraries.
#include <base/texttable.h>
#include <fltkilnutil/captions.h>

namespace fltkilnutil {

namespace {

constexpr base::TextRow kCaptions[] = {
#define CAPTION(id, chinese, english) {id, chinese, english},
#include "captions.inc"
#undef CAPTION
};

bool libraryInstalled = true;

bool readCaption(base::Language language, std::uint32_t id, std::string& text) {
    text = base::compiledText(kCaptions, id, language);
    return !text.empty();
}

}  // namespace

CaptionReader openCaptionLibrary() {
    return libraryInstalled ? readCaption : CaptionReader();
}

void setCaptionLibraryInstalled(bool installed) noexcept {
    libraryInstalled = installed;
}

}  // namespace fltkilnutil
