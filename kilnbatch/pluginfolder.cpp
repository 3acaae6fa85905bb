#include "plugins.h"

#include <base/paths.h>
#include <kiln/host/host.h>

#include <array>
#include <filesystem>

namespace kilnbatch {

namespace {

std::string besideTheProgram() {
    std::array<wchar_t, 32768> path{};
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size() - 1));
    return base::textOf(std::filesystem::path(path.data()).parent_path() / L"plugins");
}

}  // namespace

std::vector<std::string> loadPlugins(const std::string& folder) {
    const std::string from = folder.empty() ? besideTheProgram() : folder;
    kiln::Core::get()->setDirectory(KILN_PLUGIN_DIR, from);
    return kiln::scanModules(from).refusals;
}

}  // namespace kilnbatch
