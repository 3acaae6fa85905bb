// What the benchmark program registers.
#pragma once

#include <memory>
#include <vector>

class FltRecord;

/// Encoding and decoding of each class and of the mix, against straight-line code.
void registerRecordBenches();

/// Whole files, opcode names, typing into a gap buffer.
void registerFileBenches();

/// One group, one object, ten faces and one level of detail, with names.
std::vector<std::unique_ptr<FltRecord>> makeMix();
