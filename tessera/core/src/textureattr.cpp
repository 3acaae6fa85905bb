#include "textureattr.h"

#include <kiln/kiln.h>

namespace tessera {

namespace {

constexpr Class_ID kTextureAttrClassId(0x6A3C1F07, 0x2E9D0005);

/// The index of the first mark, -1 for none.
int findMark(const ICustAttribContainer& attributes) {
    for (int i = 0; i < attributes.GetNumCustAttribs(); ++i)
        if (attributes.GetCustAttrib(i)->ClassID() == kTextureAttrClassId) return i;
    return -1;
}

bool isBitmap(const Texmap* texmap) {
    return texmap && texmap->ClassID() == BMTEX_CLASS_ID;
}

}  // namespace

bool addTextureAttr(Texmap* texmap) {
    if (!isBitmap(texmap)) return false;
    ICustAttribContainer* attributes = texmap->GetCustAttribContainer();
    if (!attributes) attributes = texmap->AllocCustAttribContainer();
    if (!attributes) return false;
    if (findMark(*attributes) >= 0) return true;
    OwnedPtr<CustAttrib> mark(
        static_cast<CustAttrib*>(CreateInstance(CUST_ATTRIB_CLASS_ID, kTextureAttrClassId)));
    if (!mark || !attributes->InsertCustAttrib(0, mark.get())) return false;
    static_cast<void>(mark.release());  // the container's now
    return true;
}

bool removeTextureAttr(Texmap* texmap) {
    if (!isBitmap(texmap)) return false;
    ICustAttribContainer* const attributes = texmap->GetCustAttribContainer();
    if (!attributes) return false;
    const int mark = findMark(*attributes);
    return mark >= 0 && attributes->RemoveCustAttrib(mark);
}

}  // namespace tessera
