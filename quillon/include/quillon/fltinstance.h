// The instance records.
#pragma once

#include <quillon/fltrecordof.h>

/// What definition and reference share: the instance number.
class FltInstance : public FltControlRec {
public:
    std::int16_t instanceNumber = 0;
};

/// Use of an instance defined elsewhere.
class FltInstanceRef : public FltRecordOf<FltInstanceRef, FltInstance, kFltInstanceRef> {};

/// Start of an instance's definition.
class FltInstanceDef : public FltRecordOf<FltInstanceDef, FltInstance, kFltInstanceDef> {};
