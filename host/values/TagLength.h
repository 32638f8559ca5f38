#pragma once

#include "base/Result.h"

class ITag;

namespace host {

/** Bytes of the largest value, as the PLC sends it: a response of 75,000 holds 7 more beside a single value. */
inline constexpr int kMostValueBytes = 74'993;

/** Why the driver cannot be asked for a tag, as far as its length tells, or success. */
base::Outcome checkLength(ITag const& tag);

} // namespace host
