#include "filefolders.h"

#include "texts.h"

#include <base/file.h>
#include <base/paths.h>
#include <fltkilnutil/kilnflt.h>
#include <fltkilnutil/textencoding.h>
#include <interchange/export.h>
#include <interchange/filereference.h>
#include <kiln/kiln.h>
#include <quillon/flttext.h>
#include <quillon/fltxref.h>
#include <xref/refusal.h>

#include <new>
#include <utility>

namespace xref {

namespace {

namespace fs = std::filesystem;

fs::path wholePath(const fs::path& path) {
    if (path.empty()) return path;
    const fs::path whole = fs::absolute(path).lexically_normal();
    return whole.has_filename() ? whole : whole.parent_path();
}

}  // namespace

fs::path folderOf(INode& database, const Interface& host) {
    const std::string name = interchange::sourceFileOf(database);
    fs::path first;
    for (const int id : {KILN_IMPORT_DIR, KILN_SCENE_DIR}) {
        fs::path folder = wholePath(base::pathFrom(host.GetDir(id)));
        if (folder.empty()) continue;
        if (!name.empty() && base::isFile(folder / base::pathFrom(name))) return folder;
        if (first.empty()) first = folder;
    }
    return first;
}

std::string nameFrom(const fs::path& folder, const fs::path& path) {
    const fs::path whole = wholePath(path);
    const fs::path relative = folder.empty() ? fs::path() : whole.lexically_relative(folder);
    return base::genericTextOf(relative.empty() ? whole : relative);
}

FolderChange::FolderChange(const fs::path& from, const fs::path& to)
    : from_(wholePath(from)), to_(wholePath(to)) {}

std::string FolderChange::operator()(const std::string& name) {
    const bool isAbsolute =
        name.starts_with('/') || name.starts_with('\\') || (name.size() > 1 && name[1] == ':');
    if (changesNothing() || from_.empty() || name.empty() || isAbsolute) return name;
    const auto found = files_.locate(name, base::textOf(from_));
    return found ? nameFrom(to_, base::pathFrom(*found)) : name;
}

void renameReferences(INode& top, FolderChange& change) {
    if (change.changesNothing()) return;
    ForEachInSubtree(&top, [&](INode& node) {
        FltNodeKind kind{};
        FltXRef record;
        if (!fltGetKind(&node, false, kind) || kind != FltNodeKind::XRef ||
            !fltGetRecord(&node, record))
            return;
        const interchange::FileReference named =
            interchange::parsedReference(fltkilnutil::textOf(record.fileName));
        const std::string file = change(named.file);
        if (file == named.file) return;
        const std::string name = named.part.empty() ? file : file + '<' + named.part + '>';
        if (name.size() > sizeof record.fileName) throw Refusal(textOf(TextId::kLongName, {name}));
        fltSetText(record.fileName, name);
        if (!fltPutRecord(&node, record)) throw std::bad_alloc();
    });
}

}  // namespace xref
