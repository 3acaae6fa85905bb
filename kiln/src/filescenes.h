// Scenes of files beside the one that is shown.
#pragma once

#include <kiln/host/core.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "scene.h"

namespace kiln {

/// By their paths.
struct FileScenes {
    struct Entry {
        FileScene seen;
        std::unique_ptr<Scene> scene;  // null for one that could not be read
    };

    void clear() noexcept {
        all.clear();
        nodes = 0;
        ++changes;
    }

    std::map<std::string, Entry> all;
    std::size_t nodes = 0;
    std::uint64_t changes = 0;
};

}  // namespace kiln
