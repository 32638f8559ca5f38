// Two definitions of the C++ runtime's own, for the module that carries that runtime in itself. Given here, the linker
// does not take them from the runtime's library, nor what hangs on them.
#include <cstdlib>
#include <exception>

// The library's handler prints the exception's name, for which it brings a demangler of some 25 KiB. Nothing leaves the
// module as an exception but what the host is told about, so there is no name to print.
namespace __cxxabiv1 {
extern std::terminate_handler __terminate_handler;
std::terminate_handler __terminate_handler = std::abort;
} // namespace __cxxabiv1

// Whether the process has a single thread. "Perhaps not" is always right, and spares the module the one symbol that C
// libraries before 2.32 do not have.
extern "C" char __libc_single_threaded;
char __libc_single_threaded = 0;
