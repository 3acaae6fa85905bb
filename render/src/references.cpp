#include "texts.h"

#include <base/filefinder.h>
#include <base/paths.h>
#include <kiln/host/core.h>
#include <kiln/subtree.h>
#include <render/references.h>

#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace render {
namespace {

constexpr std::size_t kMostFailures = 200;

/// The least of times for a file that is not there.
std::filesystem::file_time_type timeOf(const std::string& path) {
    std::error_code error;
    const auto time = std::filesystem::last_write_time(base::pathFrom(path), error);
    return error ? std::filesystem::file_time_type::min() : time;
}

}  // namespace

void References::begin() {
    unread_.clear();
    asked_.clear();
    const kiln::Core* const core = kiln::Core::get();
    const std::uint64_t changes = core ? core->fileSceneChanges() : 0;
    // What files name is looked for again when one has been read, what the scene names each time.
    const bool isAnew = changes != changes_;
    if (isAnew) parts_.clear();
    std::erase_if(missing_, [&](const auto& one) { return isAnew || one.first.empty(); });
    changes_ = changes;
    if (folderChanges_ != files_.folderChanges()) found_.clear();
    folderChanges_ = files_.folderChanges();
}

/// One that is not there is looked for again when another folder is known.
References::File& References::fileOf(const std::string& folder, const std::string& name) {
    File& file = found_[{folder, name}];
    if (file.path.empty() && file.tried != files_.folderChanges() + 1) {
        file.tried = files_.folderChanges() + 1;
        if (auto path = files_.locate(name, folder)) {
            const std::filesystem::path exact =
                std::filesystem::absolute(base::pathFrom(*path)).lexically_normal();
            file.path = base::textOf(exact);
            file.folder = base::textOf(exact.parent_path());
        }
    }
    return file;
}

INode* References::partOf(INode* root, const char* name) {
    const auto [known, isNew] = parts_.try_emplace({root, name}, nullptr);
    INode*& part = known->second;
    if (isNew)
        ForEachInSubtree(root, [&](INode& node) {
            if (!part && std::string_view(node.GetName()) == name) part = &node;
        });
    return part;
}

References::Target References::find(const std::string& folder, const NodeReference& reference) {
    const kiln::Core* const core = kiln::Core::get();
    if (!core || !reference.file || !*reference.file) return {};
    Target target;
    target.isMissing = true;
    const File& file = fileOf(folder, reference.file);
    if (file.path.empty()) {
        fail(folder, textOf(TextId::kNoSuchFile, {reference.file}));
        return target;
    }
    const kiln::FileScene* const scene = core->fileScene(file.path);
    if (!scene) {
        if (asked_.insert(file.path).second) unread_.push_back(file.path);
        target.isMissing = false;
        return target;
    }
    if (!scene->root) {
        fail(folder, textOf(TextId::kFileFailed, {reference.file, scene->result.message}));
        return target;
    }
    target.folder = &file.folder;
    target.node = reference.part ? partOf(scene->root, reference.part) : scene->root;
    target.isMissing = !target.node;
    if (target.isMissing)
        fail(folder, textOf(TextId::kNoSuchPart, {reference.file, reference.part}));
    return target;
}

std::size_t References::nodesRead() {
    const kiln::Core* const core = kiln::Core::get();
    return core ? core->fileSceneNodes() : 0;
}

bool References::isCurrent() const {
    const kiln::Core* const core = kiln::Core::get();
    return !core || core->fileSceneChanges() == changes_;
}

bool References::read(const std::string& path) {
    kiln::Core* const core = kiln::Core::get();
    if (!core) return false;
    times_[path] = timeOf(path);
    core->readFileScene(path);
    return core->fileScene(path) != nullptr;
}

bool References::noticeChanges() {
    bool anyChanged = false;
    for (const auto& [path, time] : times_) anyChanged = anyChanged || timeOf(path) != time;
    for (auto& [key, file] : found_) {
        if (!file.path.empty()) continue;
        file.tried = 0;
        anyChanged = anyChanged || files_.locate(key.second, key.first);
    }
    kiln::Core* const core = kiln::Core::get();
    if (anyChanged && core) core->forgetFileScenes();
    if (anyChanged) times_.clear();
    return anyChanged;
}

void References::fail(const std::string& folder, std::string sentence) {
    if (missing_.size() < kMostFailures) missing_.emplace(folder, sentence);
    if (said_.size() < kMostFailures) said_.try_emplace(std::move(sentence), false);
}

std::vector<std::string> References::missing() const {
    std::vector<std::string> sentences;
    for (const auto& [folder, sentence] : missing_) sentences.push_back(sentence);
    return sentences;
}

std::vector<std::string> References::takeFailures() {
    std::vector<std::string> fresh;
    for (auto& [sentence, isTaken] : said_)
        if (!std::exchange(isTaken, true)) fresh.push_back(sentence);
    return fresh;
}

void References::clear() {
    found_.clear();
    parts_.clear();
    missing_.clear();
    unread_.clear();
    asked_.clear();
    times_.clear();
    said_.clear();
}

}  // namespace render
