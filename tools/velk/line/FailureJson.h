#pragma once

#include "base/Result.h"

#include <nlohmann/json.hpp>

#include <string_view>

namespace velk {

/** The kind as a word for programs, which stays the same from version to version: "no_answer", "port_busy". */
std::string_view kindWord(base::FailureKind kind);

/** Puts "reason", "kind" and, for a failure of the driver, "driver_code" into an object. */
void putFailure(nlohmann::ordered_json& json, base::Failure const& failure);

} // namespace velk
