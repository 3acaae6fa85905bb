// Names of files as the files of other folders have them.
#pragma once

#include <base/filefinder.h>

#include <filesystem>
#include <string>

class INode;
class Interface;

namespace xref {

/// The folder of the file that a database was read from, as far as that is known; otherwise the one
/// where the user imported or opened last. Empty for none.
std::filesystem::path folderOf(INode& database, const Interface& host);

/// The name by which a file of `folder` names the one at `path`: relative, or the whole path where
/// none leads there.
std::string nameFrom(const std::filesystem::path& folder, const std::filesystem::path& path);

/// Names that a file of one folder has for others, as one of another folder has them.
class FolderChange {
public:
    FolderChange(const std::filesystem::path& from, const std::filesystem::path& to);

    /// A name (UTF-8) that leads nowhere from the first folder stays as it is, as does an absolute
    /// one.
    std::string operator()(const std::string& name);
    bool changesNothing() const { return from_ == to_; }

private:
    std::filesystem::path from_, to_;
    base::FileFinder files_;
};

/// Has the external references from `top` on down name their files as `change` says.
void renameReferences(INode& top, FolderChange& change);

}  // namespace xref
