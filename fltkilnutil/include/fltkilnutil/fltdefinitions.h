// Which instance definition an instance reference stands for.
#pragma once

#include <fltkilnutil/nodekind.h>

#include <unordered_map>
#include <unordered_set>

class INode;

/// The instance definitions of a scene, by the references to them: a reference stands for the
/// definition of its number in its own database, the one below the nearest header above it, and
/// where that has none for the first in the scene, in the order of its nodes.
///
/// A scene is read when the first reference in it is asked for, and what was found is kept: make a
/// new one, or call `clear`, when one may have changed.
class FltDefinitions {
public:
    /// The definition that `node` (may be null) stands for; null when there is none, and for a node
    /// that is no instance reference. Throws `std::bad_alloc`.
    INode* of(INode* node);

    void clear() noexcept;

private:
    void read(INode* root);

    std::unordered_map<const INode*, INode*> found_;
    std::unordered_set<const INode*> read_;  // the roots
};

/// What a node shows: itself, all below it, the definitions that references among them stand for,
/// and so on. Attached to one of these, it would contain itself without end.
///
/// Reads the scene when it is made; make a new one when that may have changed.
class FltShownNodes {
public:
    /// `top` may be null, which shows nothing. Throws `std::bad_alloc`.
    explicit FltShownNodes(INode* top);

    /// Whether `node` (may be null) is among them.
    bool contains(INode* node) const;

private:
    std::unordered_set<const INode*> tops_;  ///< `top` and the definitions
};
