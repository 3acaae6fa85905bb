// The whole SDK.
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
#include <kiln/platform.h>
#include <kiln/sceneio.h>
#include <kiln/tab.h>
#include <kiln/texmap.h>
#include <kiln/timevalue.h>
#include <kiln/utility.h>
