#include <framework/module.h>
#include <plugin/utilityclass.h>

namespace plugin {

const char* UtilityClass::ClassName() {
    const framework::ModuleScope scope;
    try {
        name_ = nameOf_();
    } catch (...) {
        name_.clear();
    }
    return name_.c_str();
}

HINSTANCE UtilityClass::HInstance() {
    return framework::moduleInstance();
}

}  // namespace plugin
