#include <kiln/host/core.h>
#include <kiln/language.h>
#include <kiln/notify.h>

namespace {

WORD theLanguage = KILN_LANGUAGE_CHINESE;

}  // namespace

WORD GetLanguage() noexcept {
    return theLanguage;
}

namespace kiln {

bool Core::setLanguage(WORD language) {
    if (language != KILN_LANGUAGE_CHINESE && language != KILN_LANGUAGE_ENGLISH) return false;
    if (language == theLanguage) return true;
    theLanguage = language;
    BroadcastNotification(NOTIFY_LANGUAGE_CHANGED);
    return true;
}

}  // namespace kiln
