#include "filefolders.h"
#include "instancenumbers.h"
#include "texts.h"

#include <base/paths.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/textencoding.h>
#include <interchange/filereference.h>
#include <interchange/import.h>
#include <kiln/kiln.h>
#include <kiln/searchfolders.h>
#include <kiln/undo.h>
#include <palettes/database.h>
#include <palettes/move.h>
#include <palettes/references.h>
#include <quillon/fltfilereader.h>
#include <quillon/fltgroup.h>
#include <quillon/fltobject.h>
#include <quillon/fltxref.h>
#include <xref/references.h>

#include <new>
#include <system_error>

namespace xref {

namespace {

/// What a reference says.
struct Named {
    interchange::FileReference target;
    std::int32_t flags = 0;
};

Named namedBy(INode& node) {
    FltNodeKind kind{};
    FltXRef record;
    if (!fltGetKind(&node, false, kind) || kind != FltNodeKind::XRef ||
        !fltGetRecord(&node, record))
        throw Refusal(textOf(TextId::kNoReference, {node.GetName()}));
    return {interchange::parsedReference(fltkilnutil::textOf(record.fileName)), record.flags};
}

std::optional<std::string> locate(INode& reference, const std::string& name) {
    const Interface& host = *GetCOREInterface();
    base::FileFinder files;
    files.setLastFolders(SearchFolders(host));
    INode* const database = palettes::databaseOf(&reference);
    return files.locate(
        name, database != nullptr ? base::textOf(folderOf(*database, host)) : std::string());
}

/// Nobody follows this import.
class NoReport final : public ImpExpReport {
    void Error(const char*) override {}
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }
    bool IsReference() const override { return true; }
};

/// The node of the file's database, at the end of the scene.
INode& readFile(const std::string& path, Interface& host) {
    const std::string name = base::textOf(base::pathFrom(path).filename());
    try {
        const FltFileBytes file = FltFileBytes::load(path);
        NoReport report;
        return *interchange::buildScene(interchange::readFileIndex(file.bytes()), name, report,
                                        host);
    } catch (const FltFileError& error) {
        throw Refusal(textOf(TextId::kFileFailed, {name, error.what()}));
    } catch (const std::system_error& error) {
        throw Refusal(textOf(TextId::kFileFailed, {path, error.code().message()}));
    }
}

/// What of the file comes into the scene.
std::vector<INode*> topsOf(INode& file, const interchange::FileReference& target) {
    std::vector<INode*> tops;
    if (target.part.empty()) {
        for (int i = 0; i < file.NumberOfChildren(); ++i) tops.push_back(file.GetChildNode(i));
        return tops;
    }
    ForEachInSubtree(&file, [&](INode& node) {
        if (&node == &file || target.part != node.GetName()) return WalkStep::kOn;
        tops.push_back(&node);
        return WalkStep::kEnd;
    });
    if (tops.empty()) throw Refusal(textOf(TextId::kNoPart, {target.file, target.part}));
    return tops;
}

bool isSurface(INode& node) {
    FltNodeKind kind{};
    return fltGetKind(&node, false, kind) && !fltIsBead(kind) && kind != FltNodeKind::LightSource;
}

/// Has the reference be what its new children can hang below.
void makeParent(INode& reference, bool ofSurface) {
    const FltObject object;
    const FltGroup group;
    const bool done = ofSurface ? fltEnsureKind(&reference, FltNodeKind::Object, kFltRevision) &&
                                      fltPutRecord(&reference, object)
                                : fltEnsureKind(&reference, FltNodeKind::Group, kFltRevision) &&
                                      fltPutRecord(&reference, group);
    if (!done) throw std::bad_alloc();
}

/// Hangs a node below another, as far from it as it was from its file's origin.
void hang(INode& node, INode& below) {
    const Matrix3 place = node.GetNodeTM(0);
    if (!below.AttachChild(&node, false)) throw std::bad_alloc();
    if (!(node.GetLocalTM(0) == place)) node.SetLocalTM(0, place);
}

}  // namespace

std::optional<std::string> fileOf(INode& reference) {
    const Named named = namedBy(reference);
    if (named.target.file.empty()) return {};
    return locate(reference, named.target.file);
}

void makeLocal(INode& reference) {
    const Named named = namedBy(reference);
    const interchange::FileReference& target = named.target;
    INode* const database = palettes::databaseOf(&reference);
    if (database == nullptr) throw Refusal(textOf(TextId::kNoDatabase, {reference.GetName()}));
    if (target.file.empty()) throw Refusal(textOf(TextId::kNoName, {reference.GetName()}));
    const std::optional<std::string> path = locate(reference, target.file);
    if (!path) throw Refusal(textOf(TextId::kNoFile, {reference.GetName(), target.file}));
    Interface& host = *GetCOREInterface();
    FolderChange change(base::pathFrom(*path).parent_path(), folderOf(*database, host));

    UndoScope step(textOf(TextId::kMakeLocalStep).c_str());
    const int mapsBefore = host.GetTexmapCount();
    INode& file = readFile(*path, host);
    std::vector<Texmap*> maps;
    for (int i = mapsBefore; i < host.GetTexmapCount(); ++i) maps.push_back(host.GetTexmap(i));
    const std::vector<INode*> tops = topsOf(file, target);
    const std::vector<INode*> definitions = neededDefinitions(file, tops);
    InstanceNumbers numbers(*database);
    makeParent(reference, tops.size() == 1 && isSurface(*tops.front()));
    for (INode* const node : definitions) hang(*node, reference);
    for (INode* const node : tops) hang(*node, reference);
    numbers.renumber(reference);
    renameReferences(reference, change);
    try {
        palettes::moveUsers(*database, file, reference, palettes::takenOver(named.flags), maps,
                            [&](const std::string& name) { return change(name); });
    } catch (const palettes::Refusal& refusal) {
        throw Refusal(refusal.text());
    }
    host.DeleteNode(&file);
    for (Texmap* const map : maps) host.RemoveTexmap(map);
    step.Commit();
}

}  // namespace xref
