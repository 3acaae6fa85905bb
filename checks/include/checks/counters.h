// The counters of a header that hand out IDs.
#pragma once

#include <quillon/fltheader.h>

#include <string_view>

namespace checks {

/// The counter of the kind whose IDs begin with `prefix`, as a finding of `COUNTER_BEHIND` names it
/// in its first value: switches, whose IDs begin as faces' do, are "f (switch)". Null for others.
std::int16_t FltHeader::*counterOf(std::string_view prefix) noexcept;

}  // namespace checks
