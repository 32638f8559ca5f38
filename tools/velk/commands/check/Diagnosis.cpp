#include "tools/velk/commands/check/Diagnosis.h"

#include "tools/velk/line/SymbolTable.h"
#include "tools/velk/trace/Hex.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

namespace velk {
namespace {

using base::FailureKind;
using Causes = std::array<std::string, 3>;

bool isFrame(trace::Frame const& frame) {
    return frame.kind != trace::FrameKind::Unknown;
}

/** The reply begins with the bytes that were sent. */
bool isEcho(LastWords const& lastWords) {
    if (lastWords.sent.empty() || lastWords.came.empty()) {
        return false;
    }
    plc::Bytes const& first = lastWords.came.front();
    return first.size() >= lastWords.sent.size() &&
           std::equal(lastWords.sent.begin(), lastWords.sent.end(), first.begin());
}

/** What framing and byte order alone show; nothing when they are as expected. */
std::optional<Symptom> frameSymptom(trace::Frame const& frame, CheckedSettings const& settings) {
    if (settings.couplers && frame.routing && frame.routing->status != 0) {
        return Symptom::Routing;
    }
    if (!isFrame(frame)) {
        return Symptom::Garbage;
    }
    if (frame.routing.has_value() != settings.routed) {
        return Symptom::OtherFraming;
    }
    if (frame.orderIsCertain && (frame.order == plc::ByteOrder::kBig) != settings.bigEndian) {
        return Symptom::OtherByteOrder;
    }
    return frame.faults.empty() ? std::nullopt : std::optional(Symptom::Damaged);
}

/** From the frames after the one that was sent last. */
std::optional<Symptom> lastWordsSymptom(LastWords const& lastWords, CheckedSettings const& settings) {
    if (isEcho(lastWords)) {
        return Symptom::Echo;
    }
    for (trace::Frame const& frame : lastWords.meant) {
        if (std::optional<Symptom> const found = frameSymptom(frame, settings)) {
            return found;
        }
    }
    return std::nullopt;
}

Symptom fileSymptom(LastWords const& lastWords, FailureKind kind) {
    if (kind == FailureKind::Storage) {
        return Symptom::BadSymbolFile;
    }
    if (lastWords.timedOut) {
        return Symptom::FellSilent;
    }
    bool const broken = kind == FailureKind::SymbolFileBroken || kind == FailureKind::StoredSymbolsBroken;
    return broken ? Symptom::BadSymbolFile : Symptom::NoSymbolFile;
}

Causes portCauses(Symptom symptom) {
    switch (symptom) {
    case Symptom::PortMissing:
        return {"the adapter is not plugged in, or got another name: velk ports lists the existing ports",
                "the name differs from the system's name for the port",
                "the adapter needs a driver that this machine does not have"};
    case Symptom::PortNoHardware:
        return {"this machine has no such port, only its name: velk ports lists the existing ports",
                "the port is switched off in the machine's firmware",
                "the adapter has another name, such as /dev/ttyUSB0"};
    case Symptom::NotAPort:
        return {"the name is that of a file, a folder or another device: velk ports lists the existing ports",
                "a part of the path is missing, such as the last one of /dev/serial/by-id/...",
                "the link of that name no longer leads to the port"};
    case Symptom::PortRefused:
        return {"you are not in the group that owns the port: velk ports names it",
                "you joined the group, but have not logged in again since", "the device was given to another user"};
    case Symptom::PortBusy:
        return {"another program uses the port: close it, or use another port", "another velk still uses it",
                "a service of the system, such as a modem manager or a login, has taken it"};
    default:
        return {"the adapter was pulled out, or lost its contact", "the adapter does not know this speed or mode",
                "another program disturbed the port"};
    }
}

Causes silenceCauses(CheckedSettings const& settings) {
    std::string const speed =
        fmt::format("the line speed or the parity is not {} bit/s, {}: velk check --scan tries the usual ones",
                    settings.baud, settings.parity);
    std::string const framing =
        settings.routed ? "no coupler routes the frames: framing or byte order is wrong, or the routing levels, "
                          "couplers, channels, addresses or the block size are not those of the route to the PLC"
                        : "the framing or the byte order is wrong: velk check --scan tries them all";
    return {"the wiring: a straight cable where a crossed one is needed, the wrong connector of the PLC, A and B "
            "exchanged on RS-485, or a PLC that is off",
            speed, framing};
}

Causes garbageCauses(CheckedSettings const& settings) {
    return {fmt::format("the line speed is not {} bit/s", settings.baud),
            fmt::format("the parity is not {}, or the stop bits differ", settings.parity),
            "another device or protocol uses this line, or an RS-485 line without its termination"};
}

Causes linkCauses(Symptom symptom, CheckedSettings const& settings) {
    switch (symptom) {
    case Symptom::Echo:
        return {"the adapter hears itself: switch off its RS-485 echo",
                "the transmit and the receive wire are bridged, or a test plug is in the connector",
                "no other device is on the line: velk receives its own bytes"};
    case Symptom::OtherFraming:
        return {fmt::format("the framing must be {}", settings.routed ? "bare: there is no coupler" : "routed"),
                "the cable is in another connector than intended: that of the PLC instead of the coupler's, or the "
                "other way round",
                "another panel talks to the PLC on the same line"};
    case Symptom::OtherByteOrder:
        return {fmt::format("the byte order must be {}", settings.bigEndian ? "little" : "big"),
                "the cable leads to a different PLC", "another panel talks to another PLC on the same line"};
    case Symptom::Routing:
        return {"the coupler number, the channel or the address of a level is not that of the route to the PLC",
                "the number of routing levels is wrong", "the PLC behind the coupler is off or not connected"};
    case Symptom::Damaged:
        return {"there is noise on the line: a long or unshielded cable, no common ground, no termination",
                "the parity or the stop bits differ: some bytes arrive correctly by chance",
                "two panels talk on the same line at once"};
    default:
        return {"the connection is unreliable: a loose contact, a long or unshielded cable",
                fmt::format("the time-out of {} ms is too short for this PLC or for the route through couplers",
                            settings.timeoutMs),
                fmt::format("the block size of {} bytes is not that of the PLC", settings.blockSize)};
    }
}

Causes loginCauses() {
    return {"another panel or the programming tool is logged in and keeps the PLC for itself",
            "the PLC is starting or stopped, or its program does not run yet",
            "the route through couplers, or the cable, leads to a different device"};
}

Causes fileCauses(Symptom symptom, CheckedSettings const& settings) {
    if (symptom == Symptom::BadSymbolFile) {
        return {"the folder for symbol files cannot be written: see --storage",
                "the program was replaced while its file was fetched: try again",
                "the PLC's symbol file was made by a tool that this driver does not know"};
    }
    return {"the PLC has no symbol file: the project was loaded without its symbol configuration",
            settings.routed ? std::string("the settings of the PLC forbid reading its files")
                            : fmt::format("the block size of {} bytes is not that of the PLC: it matters first where "
                                          "much is sent",
                                          settings.blockSize),
            "the folder for symbol files cannot be written: see --storage"};
}

Causes qualityCauses() {
    return {"the PLC marks the value as bad: an input module is missing, faulty or not yet running",
            "the variable is in the symbol file, but the PLC no longer has memory for it",
            "the program was replaced a moment ago: try again"};
}

Causes readCauses() {
    return {"the program was replaced a moment ago: try again",
            "the variable is in the symbol file, but the PLC no longer has memory for it",
            "values and frames have different byte orders"};
}

} // namespace

CheckStep failedStep(LineProgress const& progress, bool portOpen) {
    if (!portOpen) {
        return CheckStep::Port;
    }
    for (CheckStep const step : kCheckSteps) {
        if (step != CheckStep::Port && !progress.reached(step)) {
            return step;
        }
    }
    return CheckStep::Read;
}

Symptom portSymptom(FailureKind kind) {
    switch (kind) {
    case FailureKind::PortMissing:
        return Symptom::PortMissing;
    case FailureKind::PortNoHardware:
        return Symptom::PortNoHardware;
    case FailureKind::NotAPort:
        return Symptom::NotAPort;
    case FailureKind::PortDenied:
        return Symptom::PortRefused;
    case FailureKind::PortBusy:
        return Symptom::PortBusy;
    default:
        return Symptom::PortFault;
    }
}

Symptom symptomOf(CheckStep failed, LastWords const& lastWords, FailureKind kind, CheckedSettings const& settings) {
    if (failed == CheckStep::Port || base::isOfPort(kind)) {
        return portSymptom(kind);
    }
    if (failed == CheckStep::Bytes) {
        return Symptom::Silence;
    }
    if (std::optional<Symptom> const seen = lastWordsSymptom(lastWords, settings)) {
        return *seen;
    }
    if (failed == CheckStep::SymbolFile) {
        return fileSymptom(lastWords, kind);
    }
    if (lastWords.timedOut) {
        return Symptom::FellSilent;
    }
    if (failed == CheckStep::Read) {
        return kind == FailureKind::BadQuality ? Symptom::BadQuality : Symptom::BadValue;
    }
    return lastWords.status ? Symptom::Refused : Symptom::Unclear;
}

std::array<std::string, 3> likelyCauses(CheckStep failed, Symptom symptom, CheckedSettings const& settings) {
    switch (symptom) {
    case Symptom::PortMissing:
    case Symptom::PortNoHardware:
    case Symptom::NotAPort:
    case Symptom::PortRefused:
    case Symptom::PortBusy:
    case Symptom::PortFault:
        return portCauses(symptom);
    case Symptom::Silence:
        return silenceCauses(settings);
    case Symptom::Garbage:
        return garbageCauses(settings);
    case Symptom::Refused:
        return failed == CheckStep::Login ? loginCauses() : readCauses();
    case Symptom::NoSymbolFile:
    case Symptom::BadSymbolFile:
        return fileCauses(symptom, settings);
    case Symptom::BadQuality:
        return qualityCauses();
    case Symptom::BadValue:
        return readCauses();
    default:
        return linkCauses(symptom, settings);
    }
}

std::vector<std::string> lastWordsText(LastWords const& lastWords, CheckedSettings const& settings) {
    auto const shown = [](plc::Bytes const& bytes) {
        constexpr std::size_t kMostBytes = 64; // shown of a frame
        std::string text = trace::hexText(plc::ByteView(bytes).first(std::min(bytes.size(), kMostBytes)));
        return bytes.size() > kMostBytes ? fmt::format("{} ... ({} bytes)", text, bytes.size()) : text;
    };
    std::vector<std::string> lines;
    lines.push_back("sent  " + (lastWords.sent.empty() ? "nothing" : shown(lastWords.sent)));
    for (std::size_t i = 0; i < lastWords.came.size(); ++i) {
        lines.push_back("got   " + shown(lastWords.came[i]));
        std::string_view words = lastWords.words[i];
        for (std::size_t end = 0; end != std::string_view::npos; words.remove_prefix(std::min(end + 1, words.size()))) {
            end = words.find('\n');
            lines.push_back("      " + std::string(words.substr(0, end)));
        }
    }
    if (lastWords.timedOut) {
        lines.push_back(
            fmt::format("got   nothing{} within {} ms", lastWords.came.empty() ? "" : " more", settings.timeoutMs));
    }
    return lines;
}

} // namespace velk
