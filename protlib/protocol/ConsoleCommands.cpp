#include "interfaces/ITag.h"
#include "protlib/protocol/ProtocolBase.h"
#include "protlib/safety/BoundedText.h"
#include "protlib/safety/NoThrow.h"
#include "protlib/safety/ScratchBuffer.h"
#include "protlib/text/HexText.h"
#include "protlib/text/TextUtils.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr std::size_t kValueOnStack = 64;

/** A value is cut short so that this many bytes stay free for the line feed and the zero after it. */
constexpr int kReservedBehindDigits = 4;

constexpr std::string_view kHelp = "help - displays this message\n"
                                   "info - displays information about the protocol version\n"
                                   "xml  - displays the protocol xml description\n"
                                   "read uri - reads data pointed by uri string\n"
                                   "write uri hexData - writes data pointed by uri string\n"
                                   "lasterror - displays the last protocol error\n"
                                   "getmaxtm - displays the max time for executing a single read/write access\n";

/** One line of the console: its words, and where the reply goes. */
struct ConsoleLine {
    std::vector<std::string> words;
    char* reply;
    int size;
};

void replyWith(ConsoleLine const& line, std::string_view text) {
    BoundedText reply(line.reply, line.size);
    reply.append(text);
    reply.terminate();
}

/** Copies a text of unknown length; reads no more of it than fits the reply. */
void replyWithName(ConsoleLine const& line, char const* text) {
    std::string_view known;
    if (text != nullptr) {
        auto const room = static_cast<std::size_t>(std::max(line.size, 0));
        auto const* const end = static_cast<char const*>(std::memchr(text, '\0', room));
        known = {text, end == nullptr ? room : static_cast<std::size_t>(end - text)};
    }
    replyWith(line, known);
}

void replyWithLastError(ProtocolBase const& protocol, ConsoleLine const& line) {
    replyWithName(line, protocol.GetLastErrorString());
}

/** A tag that exists for one command only. */
class CommandTag {
public:
    CommandTag(ProtocolBase& protocol, std::string const& address)
        : protocol_(protocol), tag_(protocol.CreateTag(address.c_str())) {}
    CommandTag(CommandTag const&) = delete;
    CommandTag& operator=(CommandTag const&) = delete;
    ~CommandTag() {
        if (tag_ != nullptr) {
            protocol_.FreeTag(tag_);
        }
    }

    [[nodiscard]] ITag const* get() const { return tag_; }

private:
    ProtocolBase& protocol_;
    ITag* tag_;
};

/** The bytes of one value that is read or written. */
using ValueBuffer = ProtUtilsN::ScratchBuffer<kValueOnStack>;

bool isAvailable(ValueBuffer const& value, ProtocolBase& protocol) {
    if (!value.available()) {
        protocol.SetError(kErrorPort, ProtUtilsN::kOutOfMemoryText);
    }
    return value.available();
}

void replyWithDigits(ConsoleLine const& line, std::span<unsigned char const> bytes) {
    BoundedText reply(line.reply, line.size);
    for (auto const byte : bytes) {
        if (reply.remaining() <= kReservedBehindDigits) {
            break;
        }
        auto const digits = HexTextN::EncodeHex(byte);
        reply.append({digits.data(), digits.size()});
    }
    reply.append("\n");
    reply.terminate();
}

void help(ProtocolBase& /*protocol*/, ConsoleLine const& line) {
    replyWith(line, kHelp);
}

void info(ProtocolBase& protocol, ConsoleLine const& line) {
    auto const length = protocol.GetInfo(line.reply, line.size);
    if (line.reply != nullptr && length >= 0 && length < line.size) {
        line.reply[length] = '\0';
    }
}

void xml(ProtocolBase& protocol, ConsoleLine const& line) {
    replyWithName(line, protocol.GetXml());
}

void lastError(ProtocolBase& protocol, ConsoleLine const& line) {
    replyWithLastError(protocol, line);
}

void read(ProtocolBase& protocol, ConsoleLine const& line) {
    if (line.words.size() != 2) {
        replyWith(line, "error: missing parameter (URI string)\n");
        return;
    }
    CommandTag const tag(protocol, line.words[1]);
    if (tag.get() == nullptr) {
        replyWithLastError(protocol, line);
        return;
    }
    ValueBuffer value(tag.get()->GetVarLength());
    if (!isAvailable(value, protocol) || !protocol.Read(tag.get(), value.bytes().data())) {
        replyWithLastError(protocol, line);
        return;
    }
    replyWithDigits(line, value.bytes());
}

void write(ProtocolBase& protocol, ConsoleLine const& line) {
    if (line.words.size() != 3) {
        replyWith(line, "error: missing parameters (URI string + data)\n");
        return;
    }
    CommandTag const tag(protocol, line.words[1]);
    if (tag.get() == nullptr) {
        replyWithLastError(protocol, line);
        return;
    }
    auto const& digits = line.words[2];
    if (static_cast<std::int64_t>(digits.size()) != std::int64_t{2} * tag.get()->GetVarLength()) {
        replyWith(line, "error: incorrect length of data to write\n");
        return;
    }
    ValueBuffer value(tag.get()->GetVarLength());
    if (value.available() && !HexTextN::DecodeHex(digits, value.bytes())) {
        replyWith(line, "error: incorrect hex data\n");
        return;
    }
    if (!isAvailable(value, protocol) || !protocol.Write(tag.get(), value.bytes().data())) {
        replyWithLastError(protocol, line);
        return;
    }
    replyWith(line, "written ok\n");
}

void getMaxTm(ProtocolBase& protocol, ConsoleLine const& line) {
    BoundedText reply(line.reply, line.size);
    reply.append("maxtm = ");
    reply.appendNumber(protocol.GetMaxTm(nullptr));
    reply.append(" ms\n");
    reply.terminate();
}

void deleteTags(ProtocolBase& protocol, ConsoleLine const& /*line*/) {
    protocol.DeleteTags();
}

struct ConsoleCommand {
    std::string_view word;
    void (*run)(ProtocolBase& protocol, ConsoleLine const& line);
};

// The help does not mention "deletetags" on purpose.
constexpr std::array<ConsoleCommand, 8> kCommands{{{"help", help},
                                                   {"info", info},
                                                   {"xml", xml},
                                                   {"lasterror", lastError},
                                                   {"read", read},
                                                   {"write", write},
                                                   {"getmaxtm", getMaxTm},
                                                   {"deletetags", deleteTags}}};

} // namespace

bool ProtocolBase::DoCommand(char const* command, char* reply, int size) {
    if (command == nullptr) {
        return false;
    }
    auto const runLine = [&] {
        ConsoleLine line{{}, reply, size};
        ProtUtilsN::ParseSubstrings(command, line.words, ' ');
        auto const known = std::find_if(kCommands.begin(), kCommands.end(),
                                        [&](auto const& candidate) { return candidate.word == line.words[0]; });
        if (known == kCommands.end()) {
            return false;
        }
        known->run(*this, line);
        return true;
    };
    return ProtUtilsN::noThrow(runLine, false);
}
