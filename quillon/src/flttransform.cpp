#include "fltlayout.h"

#include <quillon/flttransform.h>

namespace {

struct MatrixLayout {
    static void fields(auto& codec, auto& record) { codec.field("rows", record.rows); }
};

}  // namespace

template <>
struct quillon::Layout<FltMatrix> : MatrixLayout {};
template class FltRecordOf<FltMatrix, FltMatrixRec, kFltMatrix>;

template <>
struct quillon::Layout<FltGeneralMatrix> : MatrixLayout {};
template class FltRecordOf<FltGeneralMatrix, FltMatrixRec, kFltGeneralMatrix>;

template <>
struct quillon::Layout<FltRotateAboutEdge> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("from", record.from);
        codec.field("to", record.to);
        codec.field("angle", record.angle);
        codec.reserved(4);
    }
};
template class FltRecordOf<FltRotateAboutEdge, FltAncillaryRec, kFltRotateAboutEdge>;

template <>
struct quillon::Layout<FltTranslate> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("from", record.from);
        codec.field("delta", record.delta);
    }
};
template class FltRecordOf<FltTranslate, FltAncillaryRec, kFltTranslate>;

template <>
struct quillon::Layout<FltScale> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("center", record.center);
        codec.field("factors", record.factors);
        codec.reserved(4);
    }
};
template class FltRecordOf<FltScale, FltAncillaryRec, kFltScale>;

template <>
struct quillon::Layout<FltRotateAboutPoint> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("center", record.center);
        codec.field("axis", record.axis);
        codec.field("angle", record.angle);
    }
};
template class FltRecordOf<FltRotateAboutPoint, FltAncillaryRec, kFltRotateAboutPoint>;

template <>
struct quillon::Layout<FltRotateScaleToPoint> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("center", record.center);
        codec.field("reference", record.reference);
        codec.field("target", record.target);
        codec.field("overallScale", record.overallScale);
        codec.field("scaleAlongLine", record.scaleAlongLine);
        codec.field("angle", record.angle);
        codec.reserved(4);
    }
};
template class FltRecordOf<FltRotateScaleToPoint, FltAncillaryRec, kFltRotateScaleAboutPoint>;

template <>
struct quillon::Layout<FltPut> {
    static void fields(auto& codec, auto& record) {
        codec.reserved(4);
        codec.field("fromOrigin", record.fromOrigin);
        codec.field("fromAlign", record.fromAlign);
        codec.field("fromTrack", record.fromTrack);
        codec.field("toOrigin", record.toOrigin);
        codec.field("toAlign", record.toAlign);
        codec.field("toTrack", record.toTrack);
    }
};
template class FltRecordOf<FltPut, FltAncillaryRec, kFltPut>;
