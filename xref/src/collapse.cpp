#include "filefolders.h"
#include "texts.h"

#include <base/file.h>
#include <base/paths.h>
#include <base/text.h>
#include <fltkilnutil/fltdefinitions.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/sourcerecords.h>
#include <interchange/export.h>
#include <kiln/kiln.h>
#include <kiln/undo.h>
#include <palettes/database.h>
#include <palettes/move.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>
#include <xref/references.h>

#include <new>
#include <unordered_set>

namespace xref {

namespace {

namespace fs = std::filesystem;

bool canBeReference(FltNodeKind kind) {
    return fltIsBead(kind) && kind != FltNodeKind::XRef && kind != FltNodeKind::InstanceDef &&
           kind != FltNodeKind::InstanceRef;
}

/// Whether nodes outside show a definition from `top` on down, which they could not in a file.
bool isShownElsewhere(INode& top) {
    std::unordered_set<const INode*> within;
    bool defines = false;
    ForEachInSubtree(&top, [&](INode& node) {
        within.insert(&node);
        FltNodeKind kind{};
        defines |= fltGetKind(&node, false, kind) && kind == FltNodeKind::InstanceDef;
    });
    if (!defines) return false;
    FltDefinitions definitions;
    return !ForEachInSubtree(GetCOREInterface()->GetRootNode(), [&](INode& node) {
        if (&node == &top) return WalkStep::kPastThis;
        return within.contains(definitions.of(&node)) ? WalkStep::kEnd : WalkStep::kOn;
    });
}

/// Keeps why an export failed.
class LastError final : public ImpExpReport {
public:
    const std::string& error() const { return error_; }

private:
    void Error(const char* message) override { error_ = message; }
    void Summary(const char*) override {}
    bool Progress(double, const char*) override { return true; }
    bool Cancelled() const override { return false; }

    std::string error_;
};

/// Writes the node to the file about its own origin. The scene is afterwards as it was.
void write(INode& node, INode& database, const std::string& path, FolderChange change) {
    UndoScope forTheFile(textOf(TextId::kCollapseStep).c_str());
    node.SetLocalTM(0, Matrix3());
    renameReferences(node, change);
    try {
        if (!change.changesNothing())
            palettes::renamePictures(database,
                                     [&](const std::string& name) { return change(name); });
    } catch (const palettes::Refusal& refusal) {
        throw Refusal(refusal.text());
    }
    interchange::ExportOptions options;
    options.top = &node;
    LastError report;
    if (interchange::exportFile(path.c_str(), options, report, *GetCOREInterface()) !=
        IMPEXP_SUCCESS)
        throw Refusal(report.error());
}

/// What is kept of the file that the node came from is of a record that it has no more.
void forgetSource(INode& node) {
    fltkilnutil::SourceRecordsWriter nothing;
    nothing.begin(fltkilnutil::sourceRecordsOf(node).revision);
    if (!fltkilnutil::sourceChunk(node, fltkilnutil::SourceChunk::records).empty())
        fltkilnutil::storeSourceChunk(node, fltkilnutil::SourceChunk::records, nothing.bytes());
}

}  // namespace

std::string collapse(INode& node, const std::string& path, bool replaces) {
    FltNodeKind kind{};
    if (!fltGetKind(&node, false, kind) || !canBeReference(kind))
        throw Refusal(textOf(TextId::kNoBead, {node.GetName()}));
    INode* const database = palettes::databaseOf(&node);
    if (database == nullptr) throw Refusal(textOf(TextId::kNoDatabase, {node.GetName()}));
    if (isShownElsewhere(node)) throw Refusal(textOf(TextId::kShownElsewhere, {node.GetName()}));
    const fs::path file = base::pathFrom(path);
    if (base::smallLetters(base::textOf(file.extension())) != ".flt")
        throw Refusal(textOf(TextId::kNoFlt, {path}));
    Interface& host = *GetCOREInterface();
    const fs::path home = folderOf(*database, host), folder = fs::absolute(file).parent_path();
    std::string name = nameFrom(home, file);
    FltXRef record;
    if (name.size() > sizeof record.fileName) throw Refusal(textOf(TextId::kLongName, {name}));
    fltSetText(record.fileName, name);
    if (!replaces && base::isFile(file)) throw Refusal(textOf(TextId::kFileExists, {path}));

    UndoScope step(textOf(TextId::kCollapseStep).c_str());
    write(node, *database, path, FolderChange(home, folder));
    while (INode* const child = node.GetChildNode(node.NumberOfChildren() - 1))
        host.DeleteNode(child);
    fltRemoveData(&node);
    forgetSource(node);
    if (!fltEnsureKind(&node, FltNodeKind::XRef, kFltRevision) || !fltPutRecord(&node, record))
        throw std::bad_alloc();
    step.Commit();
    return name;
}

}  // namespace xref
