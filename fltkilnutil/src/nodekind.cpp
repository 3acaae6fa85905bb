#include <fltkilnutil/nodekind.h>

namespace {

std::size_t prefixIndex(FltNodeKind kind) noexcept {
    switch (kind) {
        case FltNodeKind::LightPoint:
            return 1;
        case FltNodeKind::Switch:
            return 2;
        case FltNodeKind::Object:
            return 3;
        case FltNodeKind::Lod:
            return 4;
        case FltNodeKind::Group:
            return 5;
        case FltNodeKind::XRef:
            return 6;
        case FltNodeKind::Dof:
            return 7;
        case FltNodeKind::ClipRegion:
            return 8;
        case FltNodeKind::Bsp:
            return 9;
        default:
            return 0;
    }
}

}  // namespace

const char* fltNamePrefix(FltNodeKind kind) noexcept {
    return kFltNamePrefixes[prefixIndex(kind)];
}

bool fltIsBead(FltNodeKind kind) noexcept {
    switch (kind) {
        case FltNodeKind::Group:
        case FltNodeKind::Object:
        case FltNodeKind::Dof:
        case FltNodeKind::Bsp:
        case FltNodeKind::InstanceDef:
        case FltNodeKind::XRef:
        case FltNodeKind::Lod:
        case FltNodeKind::Switch:
        case FltNodeKind::ClipRegion:
            return true;
        default:
            return false;
    }
}
