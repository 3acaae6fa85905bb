#include <kiln/texmap.h>

#include "changes.h"
#include "scenehistory.h"

void Texmap::SetName(const char* name) {
    kiln::changeMember(*this, name_, CStr(name), name_.str().capacity());
    kiln::noteSceneChanged();
}

void BitmapTex::SetMapName(const char* file) {
    kiln::changeMember(*this, file_, CStr(file), file_.str().capacity());
    kiln::noteSceneChanged();
}
