#include "protlib/NoThrow.h"

#include <new>

#if defined(__GLIBCXX__)
#include <cxxabi.h>
#endif

namespace ProtUtilsN {

// The library raises a cancelled thread's unwinding without an object, so the reference below refers to nothing.
__attribute__((no_sanitize("null"))) Outcome outcomeOfCaught() {
    try {
        throw;
    } catch (std::bad_alloc const&) {
        return Outcome::OutOfMemory;
#if defined(__GLIBCXX__)
    } catch (abi::__forced_unwind const&) {
        throw;
#endif
    } catch (...) {
        return Outcome::HostException;
    }
}

} // namespace ProtUtilsN
