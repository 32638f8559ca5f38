#include "base/Signals.h"
#include "host/services/Clock.h"
#include "tools/velk/cli/CommandLine.h"
#include "tools/velk/context/Context.h"
#include "tools/velk/terminal/Terminal.h"

#include <cstdio>
#include <exception>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

/**
 * No file that is opened later may get the number of a standard stream: it would be used in its place. Writing to a
 * closed stream keeps failing, as it should.
 */
void occupyStandardStreams() {
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        if (::fcntl(stream, F_GETFD) == -1) {
            static_cast<void>(::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY));
        }
    }
}

} // namespace

int main(int count, char** arguments) {
    occupyStandardStreams();
    try {
        velk::Terminal terminal(velk::StreamKinds::ofThisProcess());
        base::Signals interrupt;
        host::SteadyClock clock;
        velk::Context context{.terminal = terminal, .interrupt = interrupt, .clock = clock};
        std::vector<std::string> const words(arguments + (count > 0 ? 1 : 0), arguments + count);
        return static_cast<int>(velk::runCommandLine(words, context));
    } catch (std::exception const& problem) {
        std::fprintf(stderr, "velk: %s\n", problem.what());
        return static_cast<int>(velk::ExitCode::ItemNotGood);
    }
}
