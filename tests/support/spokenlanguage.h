// The host's language for the time of a test.
#pragma once

#include <kiln/host/core.h>
#include <kiln/language.h>

/// Has the host speak a language, and the one before again at the end.
class SpokenLanguage {
public:
    explicit SpokenLanguage(WORD language) : before_(GetLanguage()) {
        kiln::Core::setLanguage(language);
    }
    ~SpokenLanguage() { kiln::Core::setLanguage(before_); }
    SpokenLanguage(const SpokenLanguage&) = delete;
    SpokenLanguage& operator=(const SpokenLanguage&) = delete;

private:
    WORD before_;
};
