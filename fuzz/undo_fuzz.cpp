// Changes of every kind, as the bytes choose them, undone, redone, rolled back and short of memory:
// the scene is always what it was.
#include "../tests/support/historymodel.h"
#include "expect.h"
#include "input.h"

#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static kiln::Core& core = kiln::Core::create();
    const std::size_t blocks = [&] {
        core.newScene();
        return kiln::allocatedBlocks();
    }();
    Input input({data, size});
    HistoryModel model(core, [&](unsigned below) {
        return below <= 256 ? input.byte() % below : static_cast<unsigned>(input.length()) % below;
    });
    while (!input.empty()) {
        const std::string wrong = model.step();
        expect(wrong.empty(), wrong.c_str());
    }
    core.newScene();
    expect(kiln::allocatedBlocks() == blocks, "every block goes back to the host");
    return 0;
}
