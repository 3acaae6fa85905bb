#include <kiln/nodelook.h>

#include <algorithm>
#include <array>

namespace {

// Sources come and go with modules, also while the process ends: nothing here is ever destroyed.
struct Sources {
    std::array<NodeLookSource*, 8> all{};
    std::size_t count = 0;
};

constinit Sources sources;

}  // namespace

// One too many is not asked.
NodeLookSource::NodeLookSource() noexcept {
    if (sources.count < sources.all.size()) sources.all[sources.count++] = this;
}

NodeLookSource::~NodeLookSource() {
    const auto end = std::remove(sources.all.begin(), sources.all.begin() + sources.count, this);
    sources.count = static_cast<std::size_t>(end - sources.all.begin());
}

NodeLookSource* GetNodeLookSource() noexcept {
    return sources.count == 0 ? nullptr : sources.all[sources.count - 1];
}
