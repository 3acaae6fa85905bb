// Nodes of the scene by what is asked of them.
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class INode;
class Interface;

namespace checks {

/// A query that cannot be read.
class QueryError : public std::runtime_error {
public:
    QueryError(const std::string& what, std::size_t place) : runtime_error(what), at(place) {}

    std::size_t at;  ///< where, in bytes from the start
};

/// A condition on OpenFlight nodes:
///
///     kind = lod and FltLodMax > 5000
///     (name = "tower*" or comment = *beacon*) and not texture = brick*
///
/// What stands left of a comparison is `name`, `kind` (as the scripts' verb `kind` names it),
/// `comment`, `texture` or `material` (in use by a face: index or name, of textures with or without
/// folders), or the key of an attribute, of which nodes without it have no value. Comparisons are
/// =,
/// !=, <, <=, > and >=; the last four are for numbers. Texts may have the wildcards * and ? and be
/// quoted, and their case does not matter, as far as it is ASCII's. A value alone is to be part of
/// the name.
class Query {
public:
    /// Throws `QueryError`.
    explicit Query(std::string_view text);
    ~Query();
    Query(const Query&) = delete;
    Query& operator=(const Query&) = delete;

    /// The nodes that fit, in the order of the scene. Throws `std::bad_alloc`.
    std::vector<INode*> find(Interface& host) const;

    struct Condition;

private:
    std::unique_ptr<Condition> condition_;
};

/// The name of the node's kind, as scripts and queries have it: "LOD".
std::string kindNameOf(INode& node);

}  // namespace checks
