#pragma once

namespace _VELK {

/** Gives the processor to the host's other tasks during long work. Null when there is nothing to yield to. */
using YieldHook = void (*)() noexcept;

} // namespace _VELK
