// The names of nodes that are read.
#pragma once

#include <interchange/fileindex.h>

#include <kiln/kiln.h>

#include <memory>
#include <string>
#include <utility>

namespace interchange {

/// Names the nodes of one file as it does, and those that it does not name in the way of nodes that
/// scripts create.
class NodeNames {
public:
    struct Name {
        std::string text;
        bool isMadeUp = false;  ///< the file does not say it
    };

    /// `databaseName` is for a header that does not say which database it is; empty for none.
    NodeNames(const FileIndex& file, std::string databaseName, Interface& host)
        : file_(file), databaseName_(std::move(databaseName)), host_(host) {}

    Name nameOf(const FileNode& node);

private:
    std::string makeUpName(std::uint16_t kind);

    const FileIndex& file_;
    std::string databaseName_;
    Interface& host_;
    std::unique_ptr<NameMaker> maker_;
};

}  // namespace interchange
