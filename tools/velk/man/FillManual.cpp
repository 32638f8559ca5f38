// Fills the templates of the manual pages when the program is built: fill-manual TEMPLATE OUTPUT

#include "base/Signals.h"
#include "host/services/Clock.h"
#include "tools/velk/cli/CommandLine.h"
#include "tools/velk/cli/CommandTree.h"
#include "tools/velk/cli/Manual.h"
#include "tools/velk/terminal/Terminal.h"

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

namespace {

std::string readFile(char const* name) {
    std::ifstream file(name, std::ios::binary);
    if (!file) {
        throw std::runtime_error(std::string(name) + " cannot be read");
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writeFile(char const* name, std::string const& text) {
    std::ofstream file(name, std::ios::binary);
    if (!(file << text) || !file.flush()) {
        throw std::runtime_error(std::string(name) + " cannot be written");
    }
}

} // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fputs("usage: fill-manual TEMPLATE OUTPUT\n", stderr);
        return 2;
    }
    try {
        velk::Terminal terminal{velk::StreamKinds{}};
        base::Signals interrupt;
        host::SteadyClock clock;
        velk::Context context{.terminal = terminal, .interrupt = interrupt, .clock = clock};
        velk::CommandInfo const tree = velk::describeCommand(*velk::makeCommandTree(context));
        writeFile(arguments[2], velk::fillManual(readFile(arguments[1]), tree, VELK_VERSION));
        return 0;
    } catch (std::exception const& problem) {
        std::fprintf(stderr, "fill-manual: %s\n", problem.what());
        return 1;
    }
}
