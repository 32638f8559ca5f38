#pragma once

#include "plc/files/TomlTable.h"
#include "plc/program/BehaviourDescription.h"

#include <string>

namespace plc {

/// Reads what a table says of the behaviour of a variable, and complains about every key that has no meaning for it.
[[nodiscard]] BehaviourDescription readBehaviour(TomlTable& table, std::string variable);

} // namespace plc
