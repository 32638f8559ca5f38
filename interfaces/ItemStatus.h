#pragma once

#include <cstdint>

/** Status of one item of a datagram. A value that is not named here is a failure of that item. */
using idal_error_t = std::int32_t;

inline constexpr idal_error_t kItemNotProcessed = 0;     ///< the call failed before the item was processed
inline constexpr idal_error_t kItemGood = 1;             ///< the value came from the PLC
inline constexpr idal_error_t kItemNotInSymbolFile = -1; ///< the PLC program has no such variable
