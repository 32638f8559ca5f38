#pragma once

#include "base/TomlSection.h"
#include "plc/program/BehaviourDescription.h"

#include <string>

namespace plc {

/// Reads what a table says of the behaviour of a variable. Keys that have no meaning for it are not asked for.
[[nodiscard]] BehaviourDescription readBehaviour(base::TomlSection& table, std::string variable);

} // namespace plc
