#include "host/Clock.h"
#include "tools/velk/CommandLine.h"
#include "tools/velk/Context.h"
#include "tools/velk/Interrupt.h"
#include "tools/velk/Terminal.h"

#include <cstdio>
#include <exception>
#include <string>
#include <vector>

int main(int count, char** arguments) {
    try {
        velk::Terminal terminal(velk::StreamKinds::ofThisProcess());
        velk::Interrupt interrupt;
        host::SteadyClock clock;
        velk::Context context{.terminal = terminal, .interrupt = interrupt, .clock = clock};
        std::vector<std::string> const words(arguments + (count > 0 ? 1 : 0), arguments + count);
        return static_cast<int>(velk::runCommandLine(words, context));
    } catch (std::exception const& problem) {
        std::fprintf(stderr, "velk: %s\n", problem.what());
        return static_cast<int>(velk::ExitCode::ItemNotGood);
    }
}
