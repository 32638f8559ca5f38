#pragma once

#include "tools/velk/context/ExitCode.h"

#include <stdexcept>
#include <string>

namespace velk {

/** A command cannot go on. Caught where commands are started, which prints the text and returns the code. */
class CommandError : public std::runtime_error {
public:
    CommandError(ExitCode code, std::string const& text) : std::runtime_error(text), code_(code) {}
    [[nodiscard]] ExitCode code() const { return code_; }

private:
    ExitCode code_;
};

} // namespace velk
