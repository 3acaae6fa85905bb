// The mark that a bitmap texture map is to be exported to OpenFlight files.
#pragma once

#include <kiln/animatable.h>

namespace interchange {

/// Users' scene files name the mark by this id, and "Aviary" makes it by it.
inline constexpr Class_ID kTextureAttrClassId{0x6A3C1F07, 0x2E9D0005};

/// A custom attribute without data of its own: that it is there says everything.
class TextureAttr final : public CustAttrib {
public:
    Class_ID ClassID() const override { return kTextureAttrClassId; }
    const char* GetName() const override { return "OpenFlight texture"; }
};

}  // namespace interchange
