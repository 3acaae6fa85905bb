// The class description of a utility.
#pragma once

#include <kiln/kiln.h>

#include <string>

namespace plugin {

/// Of a utility of which there is one static object.
class UtilityClass final : public ClassDesc2 {
public:
    /// `name` returns the name in the language that the host speaks, UTF-8. The internal name is
    /// not copied.
    UtilityClass(UtilityObj& (*utility)(), const Class_ID& id, std::string (*name)(),
                 const char* internalName)
        : utility_(utility), id_(id), nameOf_(name), internalName_(internalName) {}

    bool IsPublic() override { return true; }
    /// Always the static object, which the host never frees.
    void* Create(bool) override { return &utility_(); }
    const char* ClassName() override;
    SClass_ID SuperClassID() override { return UTILITY_CLASS_ID; }
    Class_ID ClassID() override { return id_; }
    const char* Category() override { return ""; }
    const char* InternalName() override { return internalName_; }
    HINSTANCE HInstance() override;

private:
    UtilityObj& (*utility_)();
    Class_ID id_;
    std::string (*nameOf_)();
    const char* internalName_;
    std::string name_;
};

}  // namespace plugin
