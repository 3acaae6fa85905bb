#include <base/file.h>
#include <base/filestamp.h>
#include <base/paths.h>
#include <base/replacefile.h>
#include <base/text.h>
#include <kiln/host/core.h>
#include <kiln/host/module.h>
#include <kiln/host/scenetext.h>

#include "coreimpl.h"
#include "scenefile.h"
#include "texts.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace kiln {

namespace {

Core* theCore = nullptr;

ImportResult failed(TextId what, const std::string& path, const std::error_code& reason,
                    ImpExpCause cause) {
    return {IMPEXP_FAIL, textOf(what, {path, reason.message()}), cause};
}

std::error_code lastError() {
    return {errno != 0 ? errno : EIO, std::generic_category()};
}

}  // namespace

Core::Core() : impl_(new Impl) {}
Core::~Core() {
    delete impl_;
}

Core& Core::create() {
    if (!theCore) {
        theCore = new Core;
    }
    return *theCore;
}

Core* Core::get() noexcept {
    return theCore;
}

void Core::close() {
    closeUtility();
    newScene();
    impl_->fileScenes.clear();
    // Modules still see the host while they go.
    unloadModules();
}

void Core::destroy() {
    if (!theCore) return;
    theCore->close();
    delete theCore;
    theCore = nullptr;
}

Interface& Core::hostInterface() noexcept {
    return *impl_;
}

void Core::setHostWindow(HostWindow* window) noexcept {
    impl_->window = window ? window : &impl_->noWindow;
}

HostWindow& Core::hostWindow() noexcept {
    return *impl_->window;
}

void Core::setTime(TimeValue t) noexcept {
    impl_->time = t;
}

void Core::Impl::rememberFolder(int id, const std::string& path) noexcept {
    try {
        directories[static_cast<std::size_t>(id)] =
            base::textOf(std::filesystem::absolute(base::pathFrom(path)).parent_path());
    } catch (...) {
        // What was asked for is done; the next dialog merely begins where the last one did.
    }
}

bool Core::setDirectory(int id, const std::string& path) {
    const bool isSearched = id >= KILN_SEARCH_DIR && id < KILN_SEARCH_DIR + KILN_SEARCH_DIR_COUNT;
    if (!isSearched && (id < 0 || id >= KILN_DIR_COUNT)) return false;
    std::string directory = path;
    // A root keeps its separator: without it, it would be another directory.
    while (directory.size() > 1 && (directory.back() == '/' || directory.back() == '\\') &&
           directory[directory.size() - 2] != ':')
        directory.pop_back();
    impl_->directories[static_cast<std::size_t>(id)] = directory;
    return true;
}

void Core::newScene() {
    if (impl_->scene->isBusy()) return;
    impl_->sceneNotifies(NOTIFY_SCENE_PRE_CLEAR, nullptr);
    impl_->replaceScene(std::make_unique<Scene>());
    impl_->sceneNotifies(NOTIFY_SCENE_NEW, nullptr);
}

void Core::resetScene() {
    if (impl_->scene->isBusy()) return;
    newScene();
    impl_->time = 0;
    impl_->sceneNotifies(NOTIFY_SCENE_RESET, nullptr);
}

ImportResult Core::loadScene(const std::string& path, const ProgressFunction& progress) {
    const std::filesystem::path file = base::pathFrom(path);
    Scene::File origin{path, base::FileStamp::of(path)};
    errno = 0;
    const base::File opened = base::openFile(file, false);
    if (!opened) return failed(TextId::kCannotOpen, path, lastError(), ImpExpCause::kUnreadable);
    base::ContentHash content;
    SceneSource source{[&](char* to, std::size_t size) {
        const std::size_t count = std::fread(to, 1, size, opened.get());
        if (std::ferror(opened.get())) throw std::system_error(lastError());
        content.add({to, count});
        return count;
    }};
    std::error_code ignored;
    source.size = static_cast<double>(std::filesystem::file_size(file, ignored));
    source.progress = progress;
    ImportResult result = impl_->openScene(source, path, [&](Scene& next) {
        if (origin.stamp) origin.stamp->setContent(content);
        next.file = std::move(origin);
    });
    if (result.ok()) impl_->rememberFolder(KILN_SCENE_DIR, path);
    return result;
}

ImportResult Core::loadSceneText(const std::string& text, const std::string& path) {
    std::string_view rest = text;
    SceneSource source{[&](char* to, std::size_t size) {
        const std::size_t count = rest.copy(to, size);
        rest.remove_prefix(count);
        return count;
    }};
    return impl_->openScene(source, path, [](Scene&) {});
}

ImportResult Core::Impl::openScene(const SceneSource& source, const std::string& path,
                                   const std::function<void(Scene& next)>& finish) {
    if (scene->isBusy())
        return {IMPEXP_FAIL, textOf(TextId::kSceneIsChanging), ImpExpCause::kOther};
    auto next = std::make_unique<Scene>();
    {
        const RecordingPause aside;
        ImportResult result = readScene(source, path, *next);
        if (!result.ok()) return result;
    }
    finish(*next);
    sceneNotifies(NOTIFY_SCENE_PRE_CLEAR, nullptr);
    replaceScene(std::move(next));
    sceneNotifies(NOTIFY_SCENE_OPENED, const_cast<char*>(path.c_str()));
    return {IMPEXP_SUCCESS, {}, ImpExpCause::kOther};
}

std::string Core::sceneText() const {
    SceneWriter writer(*impl_->scene);
    std::string text;
    while (writer.next(text)) {
    }
    return text;
}

struct SceneText::Impl {
    SceneWriter writer;
};

SceneText::SceneText()
    : impl_(theCore ? new Impl{SceneWriter(*theCore->impl_->scene)} : nullptr),
      changes_(sceneChanges()) {}
SceneText::~SceneText() = default;

SceneText::Progress SceneText::next(std::string& text) {
    if (!impl_ || changes_ != sceneChanges()) return Progress::kOutdated;
    try {
        return impl_->writer.next(text) ? Progress::kMore : Progress::kComplete;
    } catch (const std::length_error&) {
        return Progress::kOutdated;
    }
}

std::uint64_t sceneChanges() noexcept {
    return sceneChangeCount();
}

ImportResult Core::saveScene(const std::string& path, const ProgressFunction& progress) try {
    constexpr std::size_t kPiece = std::size_t{1} << 18;
    base::ReplacementWriter file(path);
    base::ContentHash content;
    SceneWriter writer(*impl_->scene);
    std::string text;
    for (bool more = true; more;) {
        more = writer.next(text);
        if (more && text.size() < kPiece) continue;
        file.write(text);
        content.add(text);
        text.clear();
        if (progress && !progress(writer.fraction(), "scene"))
            return {IMPEXP_CANCEL, textOf(TextId::kCancelled), ImpExpCause::kOther};
    }
    file.takePlace();
    impl_->scene->file = {path, base::FileStamp::of(path)};
    if (impl_->scene->file.stamp) impl_->scene->file.stamp->setContent(content);
    setModified(false);
    impl_->rememberFolder(KILN_SCENE_DIR, path);
    impl_->sceneNotifies(NOTIFY_SCENE_SAVED, const_cast<char*>(path.c_str()));
    return {IMPEXP_SUCCESS, {}, ImpExpCause::kOther};
} catch (const std::system_error& error) {
    return failed(TextId::kCannotWrite, path, error.code(), ImpExpCause::kUnwritable);
} catch (const std::length_error& error) {
    return {IMPEXP_FAIL, textOf(TextId::kCannotWrite, {path, error.what()}), ImpExpCause::kOther};
} catch (const std::bad_alloc&) {
    return {IMPEXP_FAIL, path + ": " + textOf(TextId::kOutOfMemory), ImpExpCause::kOutOfMemory};
}

bool Core::fileWasChanged(const std::string& path) const {
    const Scene::File& file = impl_->scene->file;
    return file.stamp && base::sameTextIgnoringCase(file.path, path) &&
           file.stamp->isOutdated(file.path);
}

bool Core::isModified() const noexcept {
    return impl_->scene->history().isModified();
}
void Core::setModified(bool modified) noexcept {
    impl_->scene->history().setModified(modified);
}

Status Core::openUtility(ClassDesc* utility) {
    closeUtility();
    if (!utility || utility->SuperClassID() != UTILITY_CLASS_ID)
        return Status::failure(textOf(TextId::kNotAUtility));
    try {
        impl_->utility = static_cast<UtilityObj*>(utility->Create(false));
        if (!impl_->utility)
            return Status::failure(textOf(TextId::kUtilityNotOpened, {utility->ClassName()}));
        impl_->utilityClass = utility;
        impl_->utility->BeginEditParams(impl_, impl_);
    } catch (...) {
        closeUtility();
        return Status::failure(textOf(TextId::kUtilityFailed, {utility->ClassName()}));
    }
    impl_->window->utilityChanged(utility);
    return {};
}

void Core::closeUtility() {
    // Cleared first: a utility that asks to be closed while it is being closed is closed once.
    UtilityObj* const utility = std::exchange(impl_->utility, nullptr);
    impl_->utilityClass = nullptr;
    if (!utility) return;
    try {
        utility->EndEditParams(impl_, impl_);
        utility->DeleteThis();
    } catch (...) {
        // It is closed for the host all the same.
    }
    impl_->window->utilityChanged(nullptr);
}

void Core::Impl::CloseUtility() {
    if (Core* const core = Core::get()) core->closeUtility();
}

ClassDesc* Core::openedUtility() const noexcept {
    return impl_->utilityClass;
}

}  // namespace kiln
