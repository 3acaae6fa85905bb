// Changes of every kind and actions of the plug-ins, as the bytes choose them, undone, redone,
// rolled back and short of memory: the scene is always what it was.
#include "../tests/support/pluginactions.h"
#include "../tests/support/temporaryfolder.h"
#include "expect.h"
#include "input.h"

#include <plugins.h>

#include <string>

namespace {

kiln::Core& preparedCore() {
    kiln::Core& core = kiln::Core::create();
    expect(kilnbatch::loadPlugins("").empty(), "the plug-ins are known");
    return core;
}

std::string writtenFile(const TemporaryFolder& folder) {
    std::string file = folder.file("change.flt");
    expect(samples::writeScene(databaseToChange(), file), "a file can be written");
    return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = preparedCore();
    static const TemporaryFolder folder;
    static const std::string file = writtenFile(folder);
    const std::size_t blocks = [&] {
        core.newScene();
        return kiln::allocatedBlocks();
    }();
    Input input({data, size});
    const auto choose = [&](unsigned below) {
        return below <= 256 ? input.byte() % below : static_cast<unsigned>(input.length()) % below;
    };
    PluginActions actions(core, choose, file);
    HistoryModel model(core, choose);
    model.further = [&] { return actions(); };
    actions.begin();
    while (!input.empty()) {
        const std::string wrong = model.step();
        expect(wrong.empty(), wrong.c_str());
    }
    core.newScene();
    expect(kiln::allocatedBlocks() == blocks, "every block goes back to the host");
    return 0;
}
