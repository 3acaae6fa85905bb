#include <kiln/texmap.h>

#include "changes.h"

void Texmap::SetName(const char* name) {
    name_ = name;
    kiln::noteSceneChanged();
}

void BitmapTex::SetMapName(const char* file) {
    file_ = file;
    kiln::noteSceneChanged();
}
