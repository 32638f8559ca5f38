#include "tools/demo/PlcOnTerminal.h"

#include <utility>

namespace demo {

PlcOnTerminal::PlcOnTerminal(plc::LineDescription description)
    : line_(std::move(description)), server_(line_, terminal_.master()),
      thread_([this](std::stop_token const& stop) { server_.run(stop); }) {}

} // namespace demo
