#pragma once

#include "base/FileDescriptor.h"

#include <string>

namespace plc {

/// A pseudo-terminal in raw mode: the PLC works on the master side, a panel opens the slave by its name.
class PseudoTerminal {
public:
    /// Throws std::system_error.
    PseudoTerminal();

    [[nodiscard]] int master() const { return master_.get(); }
    /// The path of the slave, for example /dev/pts/3.
    [[nodiscard]] std::string const& slaveName() const { return slaveName_; }

private:
    base::FileDescriptor master_;
    std::string slaveName_;
};

/// Makes a terminal pass every byte unchanged: no echo, no line editing, no flow control, 8 data bits. The speed is
/// kept. Throws std::system_error.
void makeRaw(int terminal);

} // namespace plc
