#include <base/file.h>
#include <base/paths.h>
#include <base/replacefile.h>
#include <kiln/host/core.h>
#include <kiln/host/module.h>

#include "coreimpl.h"
#include "scenefile.h"
#include "texts.h"

#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace kiln {

namespace {

Core* theCore = nullptr;

Status failed(TextId what, const std::string& path, const std::error_code& reason) {
    return Status::failure(textOf(what, {path, reason.message()}));
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

void Core::destroy() {
    if (!theCore) return;
    theCore->closeUtility();
    theCore->newScene();
    // Modules still see the host while they go.
    unloadModules();
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
    if (id < 0 || id >= KILN_DIR_COUNT) return false;
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

Status Core::loadScene(const std::string& path) {
    std::string text;
    if (const std::error_code reason = base::readFile(path, text))
        return failed(TextId::kCannotOpen, path, reason);
    Status status = loadSceneText(text, path);
    if (status) impl_->rememberFolder(KILN_SCENE_DIR, path);
    return status;
}

Status Core::loadSceneText(const std::string& text, const std::string& path) {
    if (impl_->scene->isBusy()) return Status::failure(textOf(TextId::kSceneIsChanging));
    auto next = std::make_unique<Scene>();
    {
        const RecordingPause aside;
        if (Status status = readScene(text, path, *next); !status) return status;
    }
    impl_->sceneNotifies(NOTIFY_SCENE_PRE_CLEAR, nullptr);
    impl_->replaceScene(std::move(next));
    impl_->sceneNotifies(NOTIFY_SCENE_OPENED, const_cast<char*>(path.c_str()));
    return {};
}

std::string Core::sceneText() const {
    return writtenScene(*impl_->scene);
}

Status Core::saveScene(const std::string& path) {
    try {
        base::replaceFile(path, sceneText());
    } catch (const std::system_error& error) {
        return failed(TextId::kCannotWrite, path, error.code());
    } catch (const std::length_error& error) {
        return Status::failure(textOf(TextId::kCannotWrite, {path, error.what()}));
    }
    setModified(false);
    impl_->rememberFolder(KILN_SCENE_DIR, path);
    impl_->sceneNotifies(NOTIFY_SCENE_SAVED, const_cast<char*>(path.c_str()));
    return {};
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
