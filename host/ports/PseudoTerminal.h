#pragma once

namespace host {

/** True when the terminal is the slave side of a pseudo-terminal: a program on the other side, and no line. */
bool isPseudoTerminal(int descriptor);

} // namespace host
