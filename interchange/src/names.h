// What files call their nodes, and what they say about them.
#pragma once

#include <interchange/fileindex.h>

#include <string>

namespace interchange {

/// What a node's record calls the node, as UTF-8; empty when it says nothing, or has no place for
/// it.
std::string nameInRecord(FileBytes record);

/// Whether a header of that name says nothing about which database it is.
bool isNoDatabaseName(const std::string& name);

/// The longest comment that one record can hold, with room for its header and padding.
inline constexpr std::size_t kLongestComment = 65'500;

/// Joins the comment records of a node, one per line.
class CommentText {
public:
    /// Takes the body of a comment record.
    void add(FileBytes body);
    /// The text as UTF-8, at most `kLongestComment` bytes.
    const std::string& result();

private:
    std::string text_;
    bool any_ = false;
};

}  // namespace interchange
