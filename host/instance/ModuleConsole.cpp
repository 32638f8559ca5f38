#include "host/instance/ModuleConsole.h"

#include "interfaces/IProtocol.h"

#include <utility>
#include <vector>

namespace host {

namespace {

constexpr std::size_t kReplySize = 65'536;

/**
 * The reply of a command that uses the PLC ends with an end of line, unless the reply is the driver's last error, or
 * nothing.
 */
ConsoleReply::Kind kindOf(std::string const& line, std::string const& reply) {
    if (!asksPlc(line)) {
        return ConsoleReply::Kind::Answer;
    }
    if (!reply.ends_with('\n')) {
        return ConsoleReply::Kind::DriverFailed;
    }
    return reply.starts_with("error: ") ? ConsoleReply::Kind::Complaint : ConsoleReply::Kind::Answer;
}

} // namespace

bool asksPlc(std::string const& line) {
    std::string const word = line.substr(0, line.find(' '));
    return word == "read" || word == "write";
}

ConsoleReply runConsoleLine(IProtocol& module, std::string const& line) {
    std::vector<char> buffer(kReplySize + 1); // a reply that fills the buffer is not zero-terminated
    if (!module.DoCommand(line.c_str(), buffer.data(), static_cast<int>(kReplySize))) {
        return {ConsoleReply::Kind::UnknownCommand, {}};
    }
    std::string text = buffer.data();
    ConsoleReply::Kind const kind = kindOf(line, text);
    if (!text.empty() && !text.ends_with('\n')) {
        text += '\n';
    }
    return {kind, std::move(text)};
}

} // namespace host
