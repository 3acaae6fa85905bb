// Unique names for new nodes.
#pragma once

#include <kiln/cstr.h>
#include <kiln/platform.h>

/// Makes names that nobody has. From `Interface::NewNameMaker`; the caller deletes it, which it may
/// do after the host has gone. A maker that was initialised from the scene follows the scene that
/// is shown: also one opened later, and that of a host made anew.
class KILNAPI NameMaker {
public:
    virtual ~NameMaker();

    /// Leaves `name` as it is when it is free. Otherwise takes its trailing digits off and appends
    /// the smallest number from 1 that makes it free, with at least three digits: "g" becomes
    /// "g001". A name is taken when it was added, when a node of the scene has it (for a maker that
    /// was initialised from the scene), or when this maker has made it; a name that it made is free
    /// again once the node that bears it is deleted or renamed, or the scene is emptied.
    /// Takes constant time on average.
    virtual void MakeUniqueName(CStr& name) = 0;
    /// Takes `name` for good.
    virtual void AddName(const char* name) = 0;
    /// Whether `name` is taken.
    virtual bool NameExists(const char* name) const = 0;
};
