#include "fltlayout.h"

#include <quillon/fltbounds.h>

namespace {

void layoutCenter(auto& codec, auto& center) {
    codec.items(
        center, [](auto& each, auto& point) { each.field("center", point); }, 1);
}

}  // namespace

template <>
struct quillon::Layout<FltBoundingBox> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("lowest", record.lowest);
        codec.field("highest", record.highest);
    }
};
template class FltRecordOf<FltBoundingBox, FltAncillaryRec, kFltBoundingBox>;

template <>
struct quillon::Layout<FltBoundingSphere> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("radius", record.radius);
        layoutCenter(codec, record.center);
    }
};
template class FltRecordOf<FltBoundingSphere, FltAncillaryRec, kFltBoundingSphere>;

template <>
struct quillon::Layout<FltBoundingCylinder> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("radius", record.radius);
        codec.field("height", record.height);
        layoutCenter(codec, record.center);
    }
};
template class FltRecordOf<FltBoundingCylinder, FltAncillaryRec, kFltBoundingCylinder>;

template <>
struct quillon::Layout<FltBoundingCenter> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("center", record.center);
    }
};
template class FltRecordOf<FltBoundingCenter, FltAncillaryRec, kFltBoundingCenter>;

template <>
struct quillon::Layout<FltBoundingOrientation> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("yaw", record.yaw);
        codec.field("pitch", record.pitch);
        codec.field("roll", record.roll);
    }
};
template class FltRecordOf<FltBoundingOrientation, FltAncillaryRec, kFltBoundingOrientation>;
