#pragma once

namespace host {

/** True when the terminal is the slave side of a pseudo-terminal: there is a program on the other side, not a line. */
bool isPseudoTerminal(int descriptor);

} // namespace host
