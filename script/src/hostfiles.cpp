#include "hostfiles.h"

#include "texts.h"

#include <base/paths.h>
#include <kiln/host/core.h>

#include <algorithm>
#include <cmath>
#include <filesystem>

namespace script {

namespace {

kiln::Core& core() {
    kiln::Core* const core = kiln::Core::get();
    if (!core) throw Failure(textOf(TextId::kNoScene));
    return *core;
}

// What the plug-in said of its work.
Value require(const kiln::ImportResult& result, const std::string& path) {
    if (result.ok()) return Value(result.message);
    if (!result.message.empty()) throw Failure(result.message);
    throw Failure(
        textOf(result.code == IMPEXP_CANCEL ? TextId::kCancelled : TextId::kFailed, {path}));
}

// Whether `name` fits `pattern`, in which * stands for any characters and ? for one byte.
bool fits(std::string_view name, std::string_view pattern) {
    std::size_t at = 0, in = 0, star = pattern.npos, resume = 0;
    while (at < name.size()) {
        if (in < pattern.size() && (pattern[in] == '?' || pattern[in] == name[at])) {
            ++at, ++in;
        } else if (in < pattern.size() && pattern[in] == '*') {
            star = in++;
            resume = at;
        } else if (star != pattern.npos) {
            in = star + 1;
            at = ++resume;
        } else {
            return false;
        }
    }
    return pattern.find_first_not_of('*', in) == pattern.npos || in >= pattern.size();
}

// The files of one folder whose names fit, in the order of their names.
Value getFiles(const Arguments& arguments) {
    const std::filesystem::path pattern = base::pathFrom(arguments.text(0));
    const std::string name = base::genericTextOf(pattern.filename());
    const std::filesystem::path folder = pattern.has_parent_path() ? pattern.parent_path() : ".";
    std::vector<std::string> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code ignored;
        if (!entry->is_regular_file(ignored) ||
            !fits(base::genericTextOf(entry->path().filename()), name))
            continue;
        found.push_back(base::genericTextOf(pattern.has_parent_path() ? entry->path()
                                                                      : entry->path().filename()));
    }
    if (error) throw Failure(textOf(TextId::kFolderUnreadable, {base::genericTextOf(folder)}));
    std::ranges::sort(found);
    return Value::ofArray({found.begin(), found.end()});
}

Value exportFile(const Arguments& arguments) {
    constexpr double kMost = 0xFFFF;
    const double revision = arguments.number(2, 0);
    if (!(revision >= 0 && revision <= kMost) || revision != std::floor(revision))
        throw Failure("a revision is a whole number such as 1580");
    kiln::ExportChoice choice;
    choice.options = (arguments.boolean(1, false) ? SCENE_EXPORT_SELECTED : 0) |
                     static_cast<DWORD>(revision) << SCENE_EXPORT_VERSION_SHIFT;
    if (arguments.has(3) && arguments[3].text() != nullptr)
        choice.partName = arguments.text(3);
    else if (arguments.has(3))
        choice.part = arguments.node(3);
    return require(core().exportFile(arguments.text(0), choice), arguments.text(0));
}

}  // namespace

void addFileVerbs(Engine& engine) {
    engine.addVerb("newScene", "", [](const Arguments&) {
        core().newScene();
        return Value(Done{});
    });
    engine.addVerb("openScene", "path", [](const Arguments& arguments) {
        require(core().loadScene(arguments.text(0)), arguments.text(0));
        return Value(Done{});
    });
    engine.addVerb("saveScene", "path", [](const Arguments& arguments) {
        require(core().saveScene(arguments.text(0)), arguments.text(0));
        return Value(Done{});
    });
    engine.addVerb("importFile", "path", [](const Arguments& arguments) {
        return require(core().importFile(arguments.text(0)), arguments.text(0));
    });
    engine.addVerb("exportFile", "path selected? revision? database?", exportFile);
    engine.addVerb("getFiles", "pattern", getFiles);
}

}  // namespace script
