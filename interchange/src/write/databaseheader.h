// The header of a file that is being written.
#pragma once

#include "losses.h"
#include "nodereader.h"
#include "recordmerge.h"

#include <quillon/fltheader.h>
#include <quillon/fltstream.h>

#include <vector>

namespace interchange {

/// The header of a plan's database, with what was read beside our fields. Also the form in which
/// the stream writes it.
class DatabaseHeader final : public FltHeaderForm {
public:
    /// For a file of `revision`, one that can be written; 0 for that of the database, or the
    /// nearest that can.
    DatabaseHeader(const Plan& plan, std::uint32_t revision);

    /// What the file begins with, and its revision.
    const FltHeader& header() const noexcept { return header_; }
    /// For what a file of that revision cannot say of the database.
    Losses losses() const { return {header_.revision(), sourceRevision_}; }

    /// In the length that it was read with, and padded when that is another one. What comes to
    /// differ while the file is written, in counters that a short header does not have, stays out.
    FileBytes layOutHeader(const FltHeader& header) override;

private:
    FltRecordView read_;
    std::uint32_t readRevision_;
    FltHeader header_;
    std::uint32_t sourceRevision_;
    RecordMerger merger_;
    std::vector<std::uint8_t> bytes_;
};

}  // namespace interchange
