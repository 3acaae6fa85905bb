// A plug-in file for the tests of loading: one custom attribute class and one interface.
#include <kiln/kiln.h>

namespace {

#ifndef SAMPLE_VERSION
#define SAMPLE_VERSION KILN_SDK_VERSION
#endif

class SampleAttribute final : public CustAttrib {
public:
    Class_ID ClassID() const override { return {0x77, 1}; }
};

class SampleDescription final : public ClassDesc2 {
public:
    bool IsPublic() override { return true; }
    void* Create(bool) override { return static_cast<Animatable*>(new SampleAttribute); }
    const char* ClassName() override { return "Sample attribute"; }
    SClass_ID SuperClassID() override { return CUST_ATTRIB_CLASS_ID; }
    Class_ID ClassID() override { return {0x77, 1}; }
    const char* Category() override { return ""; }
};
SampleDescription description;

constexpr FPFunctionDesc kFunctions[] = {
    {0, "Throw", -1, TYPE_VOID},
    {1, "Text", -1, TYPE_STRING},
};

class SampleInterface final : public FPStaticInterface {
public:
    SampleInterface()
        : FPStaticInterface({0x77, 2}, "SamplePlugin", 0, &description, FP_CORE, kFunctions) {}

protected:
    FPStatus _dispatch_fn(FunctionID id, TimeValue, FPValue& result, FPParams*) override {
        if (id == 0) throw 1;
        result.SetOwnedString(KILN_strdup("from the plug-in"));
        return FPS_OK;
    }
};
SampleInterface published;

}  // namespace

KILN_PLUGIN_EXPORT const char* LibDescription() {
    return "Sample \xE6\xB0\xB4";
}
KILN_PLUGIN_EXPORT int LibNumberClasses() {
    return 1;
}
KILN_PLUGIN_EXPORT ClassDesc* LibClassDesc(int i) {
    return i == 0 ? &description : nullptr;
}
KILN_PLUGIN_EXPORT DWORD LibVersion() {
    return SAMPLE_VERSION;
}
