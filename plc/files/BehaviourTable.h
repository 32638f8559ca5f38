#pragma once

#include "base/TomlSection.h"
#include "plc/program/BehaviourDescription.h"

#include <string>

namespace plc {

/// Reads a table that describes the behaviour of a variable. Keys without a meaning for it stay unread, so that the
/// caller can refuse them.
[[nodiscard]] BehaviourDescription readBehaviour(base::TomlSection& table, std::string variable);

} // namespace plc
