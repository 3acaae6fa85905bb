// Any bytes as a file: checked as a file and, where they can be imported, as a scene, in which
// every finding is mended that can be.
#include <checks/check.h>
#include <checks/filesource.h>
#include <checks/mends.h>
#include <checks/scenesource.h>
#include <interchange/import.h>
#include <kiln/host/host.h>
#include <quillon/fltfilereader.h>

#include <cstdint>

namespace {

class SilentReport final : public ImpExpReport {
public:
    void Error(const char*) override {}
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }
};

checks::Report checked(checks::Source& source, const checks::Target& target) {
    checks::Check check(source, target);
    check.finish();
    return check.report();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = kiln::Core::create();
    static const checks::Target target = checks::findTarget("15.5");
    const std::span<const std::uint8_t> bytes(data, size);
    checks::FileSource file(bytes, "");
    checked(file, target);
    core.newScene();
    SilentReport report;
    Interface& host = core.hostInterface();
    try {
        interchange::buildScene(interchange::readFileIndex(bytes), "fuzz", report, host);
    } catch (const FltFileError&) {
        return 0;
    }
    checks::SceneSource scene(host);
    for (const checks::Finding& finding : checked(scene, target).findings)
        checks::mend(host, target, finding);
    checks::SceneSource mended(host);
    checked(mended, target);
    return 0;
}
