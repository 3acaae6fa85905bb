#include <base/resources.h>
#include <framework/module.h>
#include <framework/strings.h>
#include <framework/text.h>

const std::string& loadString(unsigned id) {
    static std::string buffer;
    buffer = toUtf8(base::findString(resourceInstance(), id, resourceLanguage()));
    return buffer;
}
