// Utility plug-ins: those that live in the utility panel.
#pragma once

#include <kiln/platform.h>

class Interface;

/// The utility panel, as the utility in it sees it.
class IUtil {
public:
    virtual ~IUtil() = default;
    /// Closes the utility: the host calls its `EndEditParams`.
    virtual void CloseUtility() = 0;
};

/// A utility. None of its functions may throw.
class UtilityObj {
public:
    virtual ~UtilityObj() = default;

    /// The user has opened the utility: it adds its rollup pages. Both pointers are valid until
    /// `EndEditParams` returns.
    virtual void BeginEditParams(Interface* ip, IUtil* iu) = 0;
    /// The utility is closed: it removes its pages.
    virtual void EndEditParams(Interface* ip, IUtil* iu) = 0;
    /// The host selection changed while the utility is open.
    virtual void SelectionSetChanged(Interface* ip, IUtil* iu) {
        (void)ip;
        (void)iu;
    }
    /// A text given when the utility was started by a script.
    virtual void SetStartupParam(const char* param) { (void)param; }
    /// The host is done with the object. A static one does nothing.
    virtual void DeleteThis() = 0;
};
