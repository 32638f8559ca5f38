#pragma once

#include "base/FileDescriptor.h"

namespace velk {

/**
 * That the program goes on after it was stopped, as with Ctrl-Z and fg in a shell: SIGCONT.
 *
 * One object at a time; it takes over the signal while it lives.
 */
class Resumption {
public:
    Resumption();
    ~Resumption();
    Resumption(Resumption const&) = delete;
    Resumption& operator=(Resumption const&) = delete;

    /** Readable from the moment at which the program goes on until take(). */
    [[nodiscard]] int descriptor() const { return event_.get(); }

    /** Whether the program was stopped and goes on since the last call. */
    bool take();

private:
    base::FileDescriptor event_;
};

} // namespace velk
