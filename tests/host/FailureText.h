#pragma once

#include "base/Result.h"

#include <optional>
#include <string>

namespace hosttest {

/** The text of a failure, or nothing. */
inline std::string textOf(std::optional<base::Failure> const& failure) {
    return failure ? failure->text : std::string();
}

} // namespace hosttest
