// What the host calls first: which classes the module has, and for which SDK it was built.
#include "avfltutil.h"
#include "vertexnormalscontrol.h"

#include <diagnostics/log.h>
#include <framework/module.h>
#include <framework/strings.h>
#include <kiln/kiln.h>
#include <resources/resource.h>
#include <tessera/browserexports.h>
#include <tessera/iaviaryutil.h>

using framework::ModuleScope, framework::loadString, framework::moduleInstance;

namespace {

constexpr const char* kSource = "avfltpanel";
constexpr int kCreateLine = 599;

/// Describes the utility. Its class id is on purpose the same pair of words as the interface's.
class AvFltUtilClassDesc final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }

    /// Always the one static object, which the host never frees. The guarded check has no condition
    /// and always passes.
    void* Create(bool) override {
        const ModuleScope scope;
        const bool allowed = diagnostics::guarded(kSource, kCreateLine, false, [] { return true; });
        return allowed ? static_cast<UtilityObj*>(&AvFltUtil::instance()) : nullptr;
    }

    const char* ClassName() override { return text(IDS_CLASS_NAME); }
    SClass_ID SuperClassID() override { return UTILITY_CLASS_ID; }
    Class_ID ClassID() override {
        return Class_ID(kAviaryInterfaceId.PartA(), kAviaryInterfaceId.PartB());
    }
    const char* Category() override { return ""; }
    const char* InternalName() override { return "AvFltUtil"; }
    HINSTANCE HInstance() override { return moduleInstance(); }
    bool HasAbout() override { return true; }
    void ShowAbout() override { qofltAboutShow(); }

    /// A string of the module, valid until the next one is loaded.
    static const char* text(unsigned id) noexcept {
        const ModuleScope scope;
        try {
            return loadString(id).c_str();
        } catch (...) {
            return "";
        }
    }
};

AvFltUtilClassDesc theClassDesc;

}  // namespace

// Nothing here calls it; it is exported for the plug-ins that do.
VertexNormalsControl::VertexNormalsControl() = default;

extern "C" {

const char* LibDescription() {
    return AvFltUtilClassDesc::text(IDS_LIBRARY_DESCRIPTION);
}

int LibNumberClasses() {
    return 1;
}

ClassDesc* LibClassDesc(int index) {
    return index == 0 ? &theClassDesc : nullptr;
}

DWORD LibVersion() {
    return KILN_SDK_VERSION;
}
}
