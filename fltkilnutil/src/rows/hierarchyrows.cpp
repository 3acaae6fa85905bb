// The rows of the plain hierarchy records, and the instances, which have none.
#include "attrrow.h"

#include <quillon/fltbsp.h>
#include <quillon/fltgroup.h>
#include <quillon/fltinstance.h>
#include <quillon/fltlod.h>
#include <quillon/fltobject.h>
#include <quillon/fltswitch.h>
#include <quillon/fltxref.h>

#include <utility>

namespace fltkilnutil {

/// A switch keeps the memory of its masks, so that loading the next one allocates nothing.
template <>
void resetAs<FltRecord, FltSwitch>(FltRecord& object) {
    auto& record = static_cast<FltSwitch&>(object);
    auto words = std::move(record.maskWords);
    words.clear();
    record = FltSwitch();
    record.maskWords = std::move(words);
}

namespace {

using Type = FltAttrType;
using Width = FltAttrWidth;

constexpr AttrRow kLodRows[] = {
    {174, "FltLodMin", record<&FltLod::switchInDistance>, Type::Double, Width::Float64, "100000"},
    {175, "FltLodMax", record<&FltLod::switchOutDistance>, Type::Double, Width::Float64, "0"},
    {176, "FltLodTrans", record<&FltLod::transitionRange>, Type::Double, Width::Float64, "0"},
    {177, "FltLodCx", record<&FltLod::centerX>, Type::Double, Width::Float64, ""},
    {178, "FltLodCy", record<&FltLod::centerY>, Type::Double, Width::Float64, ""},
    {179, "FltLodCz", record<&FltLod::centerZ>, Type::Double, Width::Float64, ""},
    {180, "FltLodFrozen", record<&FltLod::flags>, Type::Boolean, Width::Int32, "0", 0x20000000},
    {181, "FltUsePrevious", record<&FltLod::flags>, Type::Boolean, Width::Int32, "0", 0x80000000},
    {182, "FltLodSpecial1", record<&FltLod::specialEffect1>, Type::Integer, Width::Int16, "0"},
    {183, "FltLodSpecial2", record<&FltLod::specialEffect2>, Type::Integer, Width::Int16, "0"},
};

constexpr AttrRow kXRefRows[] = {
    {272, "FltXRefFilename", record<&FltXRef::fileName>, Type::Text, Width::Text, ""},
    {273, "FltXRefOverrideColors", record<&FltXRef::flags>, Type::Boolean, Width::Int32, "1",
     0x80000000},
    {274, "FltXRefOverrideLtSrcs", record<&FltXRef::flags>, Type::Boolean, Width::Int32, "1",
     0x4000000},
    {275, "FltXRefOverrideLnStyle", record<&FltXRef::flags>, Type::Boolean, Width::Int32, "1",
     0x10000000},
    {276, "FltXRefOverrideMaterials", record<&FltXRef::flags>, Type::Boolean, Width::Int32, "1",
     0x40000000},
    {277, "FltXRefOverrideSounds", record<&FltXRef::flags>, Type::Boolean, Width::Int32, "1",
     0x8000000},
    {278, "FltXRefOverrideTextures", record<&FltXRef::flags>, Type::Boolean, Width::Int32, "1",
     0x20000000},
};

constexpr AttrRow kGroupRows[] = {
    {280, "FltGrpRelPriority", record<&FltGroup::relativePriority>, Type::Integer, Width::Int16,
     "0"},
    {281, "FltGrpSpecial1", record<&FltGroup::specialEffect1>, Type::Integer, Width::Int16, "0"},
    {282, "FltGrpSpecial2", record<&FltGroup::specialEffect2>, Type::Integer, Width::Int16, "0"},
    {283, "FltGrpSignificance", record<&FltGroup::significance>, Type::Integer, Width::Int16, "0"},
    {284, "FltGrpLayer", record<&FltGroup::layerCode>, Type::Integer, Width::Int8, "0"},
    {285, "FltGrpFwdAnim", record<&FltGroup::flags>, Type::Boolean, Width::Int32, "0", 0x40000000},
    {286, "FltGrpCycleAnim", record<&FltGroup::flags>, Type::Boolean, Width::Int32, "0",
     0x20000000},
    {287, "FltGrpBBox", record<&FltGroup::flags>, Type::Boolean, Width::Int32, "0", 0x10000000},
    {288, "FltGrpFrzBBox", record<&FltGroup::flags>, Type::Boolean, Width::Int32, "0", 0x8000000},
    {289, "FltGrpDfltParent", record<&FltGroup::flags>, Type::Boolean, Width::Int32, "0",
     0x4000000},
};

constexpr AttrRow kObjectRows[] = {
    {297, "FltObjRelPriority", record<&FltObject::relativePriority>, Type::Integer, Width::Int16,
     "0"},
    {298, "FltObjTransparency", record<&FltObject::transparency>, Type::Integer, Width::Int16, "0"},
    {299, "FltObjSignificance", record<&FltObject::significance>, Type::Integer, Width::Int16, "0"},
    {300, "FltObjNoDay", record<&FltObject::flags>, Type::Boolean, Width::Int32, "0", 0x80000000},
    {301, "FltObjNoDusk", record<&FltObject::flags>, Type::Boolean, Width::Int32, "0", 0x40000000},
    {302, "FltObjNoNight", record<&FltObject::flags>, Type::Boolean, Width::Int32, "0", 0x20000000},
    {303, "FltObjIlluminate", record<&FltObject::flags>, Type::Boolean, Width::Int32, "0",
     0x10000000},
    {304, "FltObjFlatShaded", record<&FltObject::flags>, Type::Boolean, Width::Int32, "0",
     0x8000000},
    {305, "FltObjGroupShadow", record<&FltObject::flags>, Type::Boolean, Width::Int32, "0",
     0x4000000},
    {306, "FltObjSpecial1", record<&FltObject::specialEffect1>, Type::Integer, Width::Int16, "0"},
    {307, "FltObjSpecial2", record<&FltObject::specialEffect2>, Type::Integer, Width::Int16, "0"},
};

constexpr AttrRow kBspRows[] = {
    {364, "FltBspA", record<&FltBsp::planeA>, Type::Double, Width::Float64, "0"},
    {365, "FltBspB", record<&FltBsp::planeB>, Type::Double, Width::Float64, "0"},
    {366, "FltBspC", record<&FltBsp::planeC>, Type::Double, Width::Float64, "1"},
    {367, "FltBspD", record<&FltBsp::planeD>, Type::Double, Width::Float64, "0"},
};

constexpr AttrRow kSwitchRows[] = {
    {369, "FltSwitchCurr", record<&FltSwitch::currentMask>, Type::Integer, Width::Int32, "0"},
    {370, "FltSwitchMaskWidth", record<&FltSwitch::wordsPerMask>, Type::Integer, Width::Int32, "0"},
};

}  // namespace

constinit const GroupRow kLodGroup = groupRow<FltLod>(184, kLodRows);
constinit const GroupRow kXRefGroup = groupRow<FltXRef>(279, kXRefRows);
constinit const GroupRow kGroupGroup = groupRow<FltGroup>(290, kGroupRows);
constinit const GroupRow kObjectGroup = groupRow<FltObject>(308, kObjectRows);
constinit const GroupRow kBspGroup = groupRow<FltBsp>(368, kBspRows);
constinit const GroupRow kSwitchGroup = groupRow<FltSwitch>(371, kSwitchRows);
constinit const GroupRow kInstanceRefGroup = groupRow<FltInstanceRef>(411, {});
constinit const GroupRow kInstanceDefGroup = groupRow<FltInstanceDef>(410, {});

}  // namespace fltkilnutil
