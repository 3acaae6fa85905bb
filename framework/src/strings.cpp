#include <framework/module.h>
#include <framework/strings.h>
#include <framework/text.h>

const std::string& loadString(unsigned id) {
    static std::string buffer;
    // With a length of 0 the platform returns a pointer into the resource instead of a copy.
    const wchar_t* resource = nullptr;
    const int length =
        ::LoadStringW(resourceInstance(), id, reinterpret_cast<wchar_t*>(&resource), 0);
    buffer = length > 0 ? toUtf8({resource, static_cast<size_t>(length)}) : std::string();
    return buffer;
}
