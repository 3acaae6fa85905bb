// The whole SDK.
//
// Exceptions. A function of the host that makes or keeps something may throw `std::bad_alloc`, when
// there is no memory, or `std::length_error`, for more than 2^31 - 1 elements, and has then changed
// nothing; it throws nothing else, and what is marked `noexcept` nothing at all. A
// plug-in's functions must not throw into the host, except where one says that it may: modules
// carry a C++ runtime of their own. The host is on its guard all the same: a plug-in that throws
// has failed at what it was called for, and no more.
#pragma once

#include <kiln/accelerators.h>
#include <kiln/animatable.h>
#include <kiln/classdesc.h>
#include <kiln/cstr.h>
#include <kiln/fp.h>
#include <kiln/geometry.h>
#include <kiln/ids.h>
#include <kiln/inode.h>
#include <kiln/interface.h>
#include <kiln/memory.h>
#include <kiln/mesh.h>
#include <kiln/namemaker.h>
#include <kiln/nodelook.h>
#include <kiln/notify.h>
#include <kiln/object.h>
#include <kiln/ownedptr.h>
#include <kiln/platform.h>
#include <kiln/sceneio.h>
#include <kiln/scenewatch.h>
#include <kiln/subtree.h>
#include <kiln/tab.h>
#include <kiln/texmap.h>
#include <kiln/timevalue.h>
#include <kiln/undo.h>
#include <kiln/utility.h>
