#include "usermessages.h"

#include <framework/strings.h>

using framework::CWnd, framework::loadString;

namespace tessera {

void showMessage(const CWnd& owner, unsigned stringId) {
    const std::string text = loadString(stringId);
    owner.ShowMessage(text);
}

void beepSimply() noexcept {
    constexpr UINT kSimpleBeep = 0xFFFFFFFF;
    ::MessageBeep(kSimpleBeep);
}

}  // namespace tessera
