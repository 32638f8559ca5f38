#include "host/ports/PseudoTerminal.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace host {

bool isPseudoTerminal(int descriptor) {
    constexpr unsigned kFirstSlaveMajor = 136; // the kernel's device numbers for pseudo-terminal slaves
    constexpr unsigned kLastSlaveMajor = 143;
    struct stat status {};
    if (fstat(descriptor, &status) != 0 || !S_ISCHR(status.st_mode)) {
        return false;
    }
    unsigned const number = major(status.st_rdev);
    return number >= kFirstSlaveMajor && number <= kLastSlaveMajor;
}

} // namespace host
