#include <base/paths.h>
#include <base/text.h>
#include <kiln/host/module.h>

#include "texts.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <utility>

namespace kiln {

namespace {

struct Registry {
    std::vector<ModuleInfo> modules;
    std::vector<HINSTANCE> files;  // one per module, null for those without a file
};

Registry& registry() {
    static Registry instance;
    return instance;
}

std::string hexadecimal(DWORD value) {
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(value));
    return text;
}

Status collectClasses(const std::string& name, const ModuleExports& exports,
                      std::vector<ClassDesc*>& classes) {
    for (int i = 0, count = exports.libNumberClasses(); i < count; ++i) {
        ClassDesc* const one = exports.libClassDesc(i);
        if (!one) return Status::failure(textOf(TextId::kNoDescriptor, {name, std::to_string(i)}));
        const bool twice = std::ranges::any_of(classes, [&](ClassDesc* other) {
            return other->SuperClassID() == one->SuperClassID() &&
                   other->ClassID() == one->ClassID();
        });
        if (twice || FindClassDesc(one->SuperClassID(), one->ClassID()))
            return Status::failure(textOf(TextId::kClassRegistered, {name, std::to_string(i)}));
        classes.push_back(one);
    }
    return {};
}

Status checkedRegistration(const std::string& name, const ModuleExports& exports, HINSTANCE file) {
    if (!exports.libDescription || !exports.libNumberClasses || !exports.libClassDesc ||
        !exports.libVersion)
        return Status::failure(textOf(TextId::kNotAPlugin, {name}));
    const DWORD version = exports.libVersion();
    if (version != KILN_SDK_VERSION)
        return Status::failure(textOf(TextId::kOtherVersion,
                                      {name, hexadecimal(version), hexadecimal(KILN_SDK_VERSION)}));
    const char* const description = exports.libDescription();
    ModuleInfo info{name, description ? description : "", {}};
    if (Status status = collectClasses(name, exports, info.classes); !status) return status;
    registry().files.reserve(registry().files.size() + 1);
    registry().modules.push_back(std::move(info));
    registry().files.push_back(file);
    return {};
}

Status registration(const std::string& name, const ModuleExports& exports, HINSTANCE file) {
    try {
        return checkedRegistration(name, exports, file);
    } catch (...) {
        return Status::failure(textOf(TextId::kClassesFailed, {name}));
    }
}

#ifdef _WIN32

std::string lastErrorText() {
    const DWORD error = GetLastError();
    wchar_t buffer[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                        nullptr, error, 0, buffer, 512, nullptr);
    std::string text = base::textOf(std::filesystem::path(std::wstring(buffer, length)));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == '.'))
        text.pop_back();
    return textOf(TextId::kErrorNumber, {text, std::to_string(error)});
}

template <typename Function>
void findExport(HINSTANCE file, const char* name, Function*& function) {
    function = reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(file, name)));
}

#endif

bool isModuleFile(const std::filesystem::directory_entry& entry) {
    const std::string extension = base::textOf(entry.path().extension());
    std::error_code ignored;
    return entry.is_regular_file(ignored) && (base::sameTextIgnoringCase(extension, ".dlu") ||
                                              base::sameTextIgnoringCase(extension, ".dli"));
}

}  // namespace

Status registerModule(const std::string& name, const ModuleExports& exports) {
    return registration(name, exports, nullptr);
}

Status loadModule(const std::string& path) {
#ifdef _WIN32
    std::error_code ignored;
    const std::filesystem::path file = std::filesystem::absolute(base::pathFrom(path), ignored);
    // Libraries that lie beside the module are found there.
    const HINSTANCE library = LoadLibraryExW(file.c_str(), nullptr, LOAD_WITH_ALTERED_SEARCH_PATH);
    if (!library) return Status::failure(textOf(TextId::kCannotLoad, {path, lastErrorText()}));
    if (std::ranges::find(registry().files, library) != registry().files.end()) {
        FreeLibrary(library);
        return {};
    }
    ModuleExports exports;
    findExport(library, "LibDescription", exports.libDescription);
    findExport(library, "LibNumberClasses", exports.libNumberClasses);
    findExport(library, "LibClassDesc", exports.libClassDesc);
    findExport(library, "LibVersion", exports.libVersion);
    Status status = registration(base::textOf(file), exports, library);
    if (!status) FreeLibrary(library);
    return status;
#else
    return Status::failure(textOf(TextId::kWindowsOnly, {path}));
#endif
}

ModuleScan scanModules(const std::string& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    std::filesystem::directory_iterator entry(base::pathFrom(folder), error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error))
        if (isModuleFile(*entry)) files.push_back(entry->path());
    std::ranges::sort(files);

    ModuleScan scan;
    for (const std::filesystem::path& file : files) {
        const Status status = loadModule(base::textOf(file));
        if (status)
            ++scan.loaded;
        else
            scan.refusals.push_back(status.message());
    }
    return scan;
}

const std::vector<ModuleInfo>& modules() {
    return registry().modules;
}

void unloadModules() {
    Registry& all = registry();
    while (!all.modules.empty()) {
        all.modules.pop_back();
        [[maybe_unused]] const HINSTANCE file = all.files.back();
        all.files.pop_back();
#ifdef _WIN32
        if (file) FreeLibrary(file);
#endif
    }
}

std::vector<ClassDesc*> classesOf(SClass_ID superClass) {
    std::vector<ClassDesc*> found;
    for (const ModuleInfo& module : registry().modules)
        for (ClassDesc* const one : module.classes)
            if (one->SuperClassID() == superClass) found.push_back(one);
    return found;
}

}  // namespace kiln

ClassDesc* FindClassDesc(SClass_ID superClass, const Class_ID& id) noexcept {
    for (const kiln::ModuleInfo& module : kiln::modules())
        for (ClassDesc* const one : module.classes)
            if (one->SuperClassID() == superClass && one->ClassID() == id) return one;
    return nullptr;
}
