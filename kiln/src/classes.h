// The classes that things of a scene can be made of.
#pragma once

#include <kiln/classdesc.h>
#include <kiln/ownedptr.h>
#include <kiln/texmap.h>

#include <string>
#include <vector>

namespace kiln {

/// A thing of class `id`, or one that stands in for it while the plug-in that has the class is not
/// there: it keeps the class's identity and its saved state, so that nothing is lost when the scene
/// is saved again. Null when `superClass` is none of a scene, or an object would have the class id
/// of one of the host's own objects under another super class: objects are told apart by their
/// class ids alone when they are converted.
OwnedPtr<Animatable> createOrStandIn(SClass_ID superClass, const Class_ID& id);

/// Whether the host itself provides that class, and writes its things out.
bool isBuiltIn(SClass_ID superClass, const Class_ID& id) noexcept;

/// Whether things of that super class are objects that nodes show.
bool isObjectSuperClass(SClass_ID superClass) noexcept;

}  // namespace kiln
