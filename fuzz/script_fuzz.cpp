// A script of any bytes runs or is refused at a place of its own, and ends. The engine then still
// works, and the scene can be emptied.
#include "expect.h"

#include <kiln/host/core.h>
#include <plugins.h>
#include <script/engine.h>

#include <string>
#include <string_view>

namespace {

constexpr char kName[] = "fuzz.ks";

/// What would reach files is refused here: a fuzzer writes to whatever it can name.
void refuseFiles(script::Engine& engine) {
    for (const char* verb : {"openScene", "saveScene", "importFile", "exportFile", "runScript"})
        engine.addVerb(verb, "path options?", [](const script::Arguments& arguments) {
            arguments.text(0);
            return script::Value(script::Done{});
        });
    engine.addVerb("getFiles", "pattern", [](const script::Arguments& arguments) {
        return script::Value::ofArray({arguments[0]});
    });
}

script::Limits smallLimits() {
    script::Limits limits;
    limits.steps = 3000;
    limits.calls = 100;
    limits.stackBytes = std::size_t{512} * 1024;
    limits.textBytes = 1 << 14;
    limits.arrayItems = 1000;
    return limits;
}

kiln::Core& preparedCore() {
    kiln::Core& core = kiln::Core::create();
    expect(kilnbatch::loadPlugins("").empty(), "the plug-ins are known");
    return core;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = preparedCore();
    core.newScene();
    script::Engine engine;
    script::addHostVerbs(engine);
    refuseFiles(engine);
    engine.setLimits(smallLimits());
    std::size_t printed = 0;
    engine.setOutput([&](std::string_view line) { printed += line.size(); });
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        printed += engine.run(text, kName).printed().size();
    } catch (const script::Error& error) {
        expect(error.file() == kName, "an error names its script");
        expect(error.position().line >= 1 && error.position().column >= 1, "and a place in it");
        expect(!error.message().empty(), "and a reason");
    }
    try {
        expect(script::Engine().run("1 + 1", kName).printed() == "2", "another engine works");
        engine.run("undefined", kName);
    } catch (const script::Error&) {
        expect(false, "the engine still works");
    }
    return 0;
}
