#pragma once

namespace _VELK {

/**
 * Gives the processor to the host's other tasks during long work. Null when there are none.
 *
 * What the host throws passes through, and so does the unwinding of a thread that it cancels.
 */
using YieldHook = void (*)();

} // namespace _VELK
