#include <base/resources.h>
#include <base/utf16.h>
#include <framework/module.h>
#include <framework/strings.h>

namespace framework {

const std::string& loadString(unsigned id) {
    static std::string buffer;
    buffer = base::toUtf8(base::findString(resourceInstance(), id, resourceLanguage()));
    return buffer;
}

}  // namespace framework
