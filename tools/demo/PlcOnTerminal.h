#pragma once

#include "plc/line/Line.h"
#include "plc/ports/FdServer.h"
#include "plc/ports/PseudoTerminal.h"

#include <string>
#include <thread>

namespace demo {

/** The simulated PLC on a pseudo-terminal, served by a separate thread until destroyed. */
class PlcOnTerminal {
public:
    explicit PlcOnTerminal(plc::LineDescription description);

    /** The serial port that a panel opens. */
    [[nodiscard]] std::string const& port() const { return terminal_.slaveName(); }

    /** Calls @p work with the line while the PLC waits. */
    template <typename Work>
    auto locked(Work&& work) {
        return server_.locked(std::forward<Work>(work));
    }

private:
    plc::Line line_;
    plc::PseudoTerminal terminal_;
    plc::FdServer server_;
    std::jthread thread_;
};

} // namespace demo
