#include "driver/Protocol_VELK.h"
#include "protlib/safety/BoundedText.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/text/TextUtils.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace {

// Listed in the help only: the driver deliberately supports neither command.
constexpr std::string_view kDriverHelp = "setid n - set the server ID to n\ngetid - get the server ID\n";

bool isHelp(char const* command) {
    std::vector<std::string> words;
    ProtUtilsN::ParseSubstrings(command, words, ' ');
    return words.front() == "help";
}

} // namespace

bool Protocol_VELK::DoCommand(char const* command, char* reply, int size) {
    // Decided first: a host may let the reply overwrite the command.
    bool const addsHelp = command != nullptr && reply != nullptr && size > 0 &&
                          ProtUtilsN::noThrow([&] { return isHelp(command); }, false);
    if (!ProtocolBase::DoCommand(command, reply, size)) {
        return false;
    }
    if (addsHelp) {
        auto const written = static_cast<int>(strnlen(reply, static_cast<std::size_t>(size)));
        BoundedText text(reply + written, size - written);
        text.append(kDriverHelp);
        text.terminate();
    }
    return true;
}
