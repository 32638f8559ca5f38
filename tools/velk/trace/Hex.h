#pragma once

#include "plc/frames/Bytes.h"

#include <string>

namespace velk::trace {

/** "AA 01 FF". */
std::string hexText(plc::ByteView bytes);

} // namespace velk::trace
