// Runs importers and exporters.
#include <base/paths.h>
#include <base/text.h>
#include <kiln/host/core.h>
#include <kiln/host/module.h>
#include <kiln/ownedptr.h>
#include <kiln/undo.h>

#include <algorithm>
#include <new>
#include <optional>
#include <type_traits>
#include <vector>

#include "coreimpl.h"
#include "texts.h"

namespace kiln {

namespace {

class Report : public ImpExpReport {
public:
    explicit Report(const ProgressFunction& progress) : progress_(progress) {}

    void Error(const char* message) override { error = message ? message : ""; }
    void Cause(ImpExpCause why) override { cause = why; }
    void Summary(const char* line) override { summary = line ? line : ""; }
    bool Progress(double fraction, const char* what) override {
        if (!cancelled_ && progress_)
            cancelled_ = !progress_(std::clamp(fraction, 0.0, 1.0), what ? what : "");
        return !cancelled_;
    }
    bool Cancelled() const override { return cancelled_; }

    std::string error;
    std::string summary;
    ImpExpCause cause = ImpExpCause::kOther;

private:
    const ProgressFunction& progress_;
    bool cancelled_ = false;
};

class ReferenceReport final : public Report {
public:
    using Report::Report;
    bool IsReference() const override { return true; }
};

template <typename T>
OwnedPtr<T> create(ClassDesc* description) {
    try {
        return OwnedPtr<T>(static_cast<T*>(description->Create(false)));
    } catch (...) {
        return nullptr;
    }
}

template <typename T>
std::vector<FileKind> kindsOf(SClass_ID superClass) {
    std::vector<FileKind> kinds;
    for (ClassDesc* const one : classesOf(superClass)) {
        const OwnedPtr<T> object = create<T>(one);
        if (!object) continue;
        FileKind kind{one, object->ShortDesc(), {}, {}};
        for (int i = 0; i < object->ExtCount(); ++i) kind.extensions.emplace_back(object->Ext(i));
        if constexpr (std::is_same_v<T, SceneExport>) {
            for (int i = 0; i < object->VersionCount(); ++i)
                kind.versions.push_back({object->Version(i), object->VersionName(i)});
        }
        kinds.push_back(std::move(kind));
    }
    return kinds;
}

std::string fileNameOf(const std::string& path) {
    return base::textOf(base::pathFrom(path).filename());
}

std::string extensionOf(const std::string& path) {
    const std::string extension = base::textOf(base::pathFrom(path).extension());
    return extension.empty() ? extension : extension.substr(1);
}

template <typename T>
OwnedPtr<T> handlerFor(const std::string& path, SClass_ID superClass) {
    const std::string extension = extensionOf(path);
    for (const FileKind& kind : kindsOf<T>(superClass))
        for (const std::string& one : kind.extensions)
            if (base::sameTextIgnoringCase(one, extension)) return create<T>(kind.owner);
    return nullptr;
}

/// The one that is meant, null where there is no choice; nothing where that is not clear. What is
/// not among `parts` may have been deleted.
std::optional<INode*> partOf(const std::vector<FilePart>& parts, const ExportChoice& choice) {
    const std::string& name = choice.partName;
    if (name.empty() && !choice.part && parts.size() < 2) return nullptr;
    std::optional<INode*> found;
    for (const FilePart& part : parts) {
        if (name.empty() ? part.node != choice.part : part.name != name && part.fileName != name)
            continue;
        if (found) return std::nullopt;
        found = part.node;
    }
    return found;
}

/// Says what can be chosen.
std::string unclearPart(const std::vector<FilePart>& parts, const std::string& name) {
    const std::string question =
        name.empty() ? textOf(TextId::kWhichPart) : textOf(TextId::kWhichOne, {quotedText(name)});
    if (parts.empty()) return textOf(TextId::kNoParts, {question});
    std::string list;
    for (const FilePart& part : parts) {
        if (!list.empty()) list += textOf(TextId::kComma);
        const std::string one = quotedText(part.name);
        list += part.fileName.empty() ? one : textOf(TextId::kPartOfFile, {one, part.fileName});
    }
    return textOf(TextId::kPartsAre, {question, list});
}

ImportResult resultOf(int code, const Report& report, TextId failure) {
    switch (code) {
        case IMPEXP_SUCCESS:
            return {code, report.summary, ImpExpCause::kOther};
        case IMPEXP_CANCEL:
            return {code, textOf(TextId::kCancelled), ImpExpCause::kOther};
        default:
            return {IMPEXP_FAIL, report.error.empty() ? textOf(failure) : report.error,
                    report.cause};
    }
}

}  // namespace

/// While it lives, the core's scene is one that nobody hears of.
class SceneAside {
public:
    SceneAside(Core::Impl& core, std::unique_ptr<Scene>& scene)
        : core_(core), scene_(scene), former_(SceneHistory::current()) {
        makers_->sceneReplaced(&scene->names());
        exchange();
        SceneHistory::setCurrent(&core.scene->history());
    }
    ~SceneAside() {
        SceneHistory::setCurrent(former_);
        exchange();
    }
    SceneAside(const SceneAside&) = delete;
    SceneAside& operator=(const SceneAside&) = delete;

private:
    void exchange() noexcept {
        core_.scene.swap(scene_);
        core_.makers.swap(makers_);
        core_.isAside = !core_.isAside;
    }

    const ChangesAside untold_;
    Core::Impl& core_;
    std::unique_ptr<Scene>& scene_;
    SceneHistory* const former_;
    std::shared_ptr<MakerRegistry> makers_ = std::make_shared<MakerRegistry>();
};

std::vector<FileKind> Core::importKinds() const {
    return kindsOf<SceneImport>(SCENE_IMPORT_CLASS_ID);
}

std::vector<FileKind> Core::exportKinds() const {
    return kindsOf<SceneExport>(SCENE_EXPORT_CLASS_ID);
}

ImportResult Core::importFile(const std::string& path, const ProgressFunction& progress) {
    const auto importer = handlerFor<SceneImport>(path, SCENE_IMPORT_CLASS_ID);
    if (!importer)
        return {IMPEXP_FAIL, textOf(TextId::kNoImporter, {path, quotedText(extensionOf(path))}),
                ImpExpCause::kOther};
    Report report(progress);
    int code = IMPEXP_FAIL;
    try {
        UndoScope import(textOf(TextId::kImportStep, {fileNameOf(path)}).c_str());
        code = importer->DoImport(path.c_str(), report, impl_);
        if (code == IMPEXP_SUCCESS) import.Commit();
    } catch (const std::bad_alloc&) {
        report.Error(textOf(TextId::kOutOfMemory).c_str());
        report.Cause(ImpExpCause::kOutOfMemory);
    } catch (...) {
        report.Error(textOf(TextId::kImporterFailed).c_str());
    }
    if (code == IMPEXP_SUCCESS) impl_->rememberFolder(KILN_IMPORT_DIR, path);
    impl_->sceneNotifies(NOTIFY_IMPORT_ENDED, const_cast<char*>(path.c_str()));
    return resultOf(code, report, TextId::kNotImported);
}

ImportResult Core::openImported(const std::string& path, const ProgressFunction& progress) {
    if (impl_->scene->isBusy())
        return {IMPEXP_FAIL, textOf(TextId::kSceneIsChanging), ImpExpCause::kOther};
    const auto show = [this](std::unique_ptr<Scene> next) {
        impl_->sceneNotifies(NOTIFY_SCENE_PRE_CLEAR, nullptr);
        std::unique_ptr<Scene> former = impl_->replaceScene(std::move(next));
        impl_->sceneNotifies(NOTIFY_SCENE_NEW, nullptr);
        return former;
    };
    Scene::File origin{path, base::FileStamp::read(path)};
    std::unique_ptr<Scene> former = show(std::make_unique<Scene>());
    ImportResult result;
    try {
        result = importFile(path, progress);
    } catch (...) {
        show(std::move(former));
        throw;
    }
    if (!result.ok()) {
        show(std::move(former));
    } else {
        impl_->scene->file = std::move(origin);
        impl_->scene->history().clear();
        setModified(false);
    }
    return result;
}

FileScene Core::readFileScene(const std::string& path) {
    if (impl_->scene->isBusy())
        return {nullptr, {IMPEXP_FAIL, textOf(TextId::kSceneIsChanging), ImpExpCause::kOther}};
    FileScenes& known = impl_->fileScenes;
    if (const FileScene* const found = fileScene(path)) return *found;
    FileScenes::Entry entry;
    ImportResult& result = entry.seen.result;
    const auto importer = handlerFor<SceneImport>(path, SCENE_IMPORT_CLASS_ID);
    if (!importer) {
        result.message = textOf(TextId::kNoImporter, {path, quotedText(extensionOf(path))});
    } else if (known.all.size() >= kMostFileScenes || known.nodes >= kMostFileNodes) {
        result.message = textOf(TextId::kTooManyFiles, {path});
    } else {
        const ProgressFunction none;
        ReferenceReport report(none);
        entry.scene = std::make_unique<Scene>();
        int code = IMPEXP_FAIL;
        try {
            const SceneAside aside(*impl_, entry.scene);
            code = importer->DoImport(path.c_str(), report, impl_);
        } catch (...) {
            report.Error(textOf(TextId::kImporterFailed).c_str());
        }
        entry.scene->history().clear();
        result = resultOf(code, report, TextId::kNotImported);
        if (result.ok())
            entry.seen.root = entry.scene->root();
        else
            entry.scene.reset();
    }
    if (entry.scene) known.nodes += entry.scene->nodeCount();
    ++known.changes;
    return known.all.emplace(path, std::move(entry)).first->second.seen;
}

const FileScene* Core::fileScene(const std::string& path) const {
    const auto found = impl_->fileScenes.all.find(path);
    return found == impl_->fileScenes.all.end() ? nullptr : &found->second.seen;
}

void Core::forgetFileScenes() noexcept {
    impl_->fileScenes.clear();
}

std::uint64_t Core::fileSceneChanges() const noexcept {
    return impl_->fileScenes.changes;
}

std::size_t Core::fileSceneNodes() const noexcept {
    return impl_->fileScenes.nodes;
}

std::vector<FilePart> Core::exportParts(const std::string& path, DWORD options) {
    std::vector<FilePart> parts;
    const auto exporter = handlerFor<SceneExport>(path, SCENE_EXPORT_CLASS_ID);
    if (!exporter) return parts;
    Tab<INode*> nodes;
    exporter->Parts(impl_, options, nodes);
    for (INode* const node : nodes)
        parts.push_back({node, node->GetName(), exporter->PartFileName(node).str()});
    return parts;
}

ImportResult Core::exportFile(const std::string& path, const ExportChoice& choice,
                              const ProgressFunction& progress) {
    const auto exporter = handlerFor<SceneExport>(path, SCENE_EXPORT_CLASS_ID);
    if (!exporter)
        return {IMPEXP_FAIL, textOf(TextId::kNoExporter, {path, quotedText(extensionOf(path))}),
                ImpExpCause::kOther};
    const std::vector<FilePart> parts = exportParts(path, choice.options);
    const std::optional<INode*> part = partOf(parts, choice);
    if (!part) return {IMPEXP_FAIL, unclearPart(parts, choice.partName), ImpExpCause::kOther};
    Report report(progress);
    int code = IMPEXP_FAIL;
    try {
        code = exporter->DoExport(path.c_str(), report, impl_, choice.options, *part);
    } catch (const std::bad_alloc&) {
        report.Error(textOf(TextId::kOutOfMemory).c_str());
        report.Cause(ImpExpCause::kOutOfMemory);
    } catch (...) {
        report.Error(textOf(TextId::kExporterFailed).c_str());
    }
    if (code == IMPEXP_SUCCESS) {
        impl_->rememberFolder(KILN_EXPORT_DIR, path);
        Scene::File& file = impl_->scene->file;
        if (base::sameTextIgnoringCase(file.path, path)) file.stamp = base::FileStamp::read(path);
    }
    return resultOf(code, report, TextId::kNotExported);
}

std::string Core::leftOutOfExport(const std::string& path, const ExportChoice& choice) {
    const auto exporter = handlerFor<SceneExport>(path, SCENE_EXPORT_CLASS_ID);
    if (!exporter) return {};
    const std::optional<INode*> part = partOf(exportParts(path, choice.options), choice);
    return part ? exporter->LeftOut(impl_, choice.options, *part).str() : std::string();
}

ImportResult Core::saveExported(const std::string& path, const ExportChoice& choice,
                                const ProgressFunction& progress) {
    ImportResult result = exportFile(path, choice, progress);
    if (!result.ok()) return result;
    Scene::File& file = impl_->scene->file;
    if (!base::sameTextIgnoringCase(file.path, path)) file = {path, base::FileStamp::read(path)};
    setModified(false);
    impl_->sceneNotifies(NOTIFY_SCENE_SAVED, const_cast<char*>(path.c_str()));
    return result;
}

}  // namespace kiln
