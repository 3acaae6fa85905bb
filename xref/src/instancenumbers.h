// The numbers of instances that come into a database.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <vector>

class INode;

namespace xref {

/// The definitions of the database `file` outside of `tops` that the references there stand for,
/// and those that these need; none of them lies within another or within `tops`.
std::vector<INode*> neededDefinitions(INode& file, const std::vector<INode*>& tops);

/// Which instance numbers a database uses.
class InstanceNumbers {
public:
    explicit InstanceNumbers(INode& database);

    /// Gives the definitions and references from `top` on down numbers that the database does not
    /// use yet, the same for the same. Throws `Refusal` when there are too few.
    void renumber(INode& top);

private:
    std::int16_t freeNumber();

    std::set<std::int16_t> used_;
    int next_ = 0;
};

}  // namespace xref
