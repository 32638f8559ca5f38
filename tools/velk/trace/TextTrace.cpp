#include "tools/velk/trace/TextTrace.h"

#include "tools/velk/text/Text.h"
#include "tools/velk/trace/Hex.h"
#include "tools/velk/trace/TraceTime.h"

#include <fmt/format.h>

namespace velk::trace {
namespace {

constexpr std::size_t kBytesOnALine = 16;
constexpr std::size_t kLinesOfBytes = 4; ///< of a longer frame only the first ones are shown
constexpr std::string_view kIndent = "                    ";

std::string indented(std::string_view text) {
    return fmt::format("{}{}\n", kIndent, text);
}

std::string byteLines(plc::ByteView bytes) {
    std::string lines;
    std::size_t const most = kBytesOnALine * kLinesOfBytes;
    plc::ByteView shown = bytes.first(std::min(bytes.size(), most));
    while (!shown.empty()) {
        plc::ByteView const line = shown.first(std::min(shown.size(), kBytesOnALine));
        lines += indented(hexText(line));
        shown = shown.subspan(line.size());
    }
    return bytes.size() > most ? lines + indented(fmt::format("... {} more bytes", bytes.size() - most)) : lines;
}

std::string addressText(std::array<std::uint8_t, 4> const& address) {
    return fmt::format("{}.{}.{}.{}", address[0], address[1], address[2], address[3]);
}

std::string routingText(Routing const& routing) {
    std::string text = fmt::format("routed: block size {}, {} level{}", routing.blockSize, routing.levels,
                                   routing.levels == 1 ? "" : "s");
    for (std::size_t level = 0; level < std::min<std::size_t>(routing.levels, routing.hop.size()); ++level) {
        text += fmt::format(", hop {} to {}", routing.hop[level], addressText(routing.address[level]));
    }
    return text;
}

std::string bytesText(std::size_t count) {
    return fmt::format("{} byte{}", count, count == 1 ? "" : "s");
}

/** A value of a few bytes, the first of a longer one. */
std::string valueText(plc::Bytes const& value) {
    constexpr std::size_t kMost = 16;
    plc::ByteView const shown = plc::ByteView(value).first(std::min(value.size(), kMost));
    return hexText(shown) + (value.size() > kMost ? fmt::format(" ... ({} bytes)", value.size()) : std::string());
}

std::string itemLines(std::vector<Item> const& items) {
    std::string lines;
    for (std::size_t i = 0; i < items.size(); ++i) {
        Item const& item = items[i];
        std::string line = fmt::format("  {}: {}", i + 1, itemText(item));
        line += item.value.empty() ? std::string() : fmt::format(" = {}", valueText(item.value));
        line += item.quality ? fmt::format(", quality {}", *item.quality) : std::string();
        lines += indented(line);
    }
    return lines;
}

std::string faultLines(std::vector<std::string> const& faults) {
    std::string lines;
    for (std::string const& fault : faults) {
        lines += indented(fmt::format("!! {}", displayable(fault)));
    }
    return lines;
}

std::string requestLines(Request const& request) {
    std::string line = fmt::format("request: {}, {}", serviceText(request.service), bytesText(request.size));
    if (request.fileName) {
        line += fmt::format(", \"{}\"", displayable(*request.fileName));
    }
    if (request.project) {
        line += fmt::format(", {} item{}, project {:08X}", request.items.size(), request.items.size() == 1 ? "" : "s",
                            *request.project);
    }
    return indented(line) + itemLines(request.items) + faultLines(request.faults);
}

std::string responseLines(Response const& response) {
    return indented(responseText(response)) + itemLines(response.items) + faultLines(response.faults);
}

std::string blockText(Frame const& frame) {
    std::string const checksum = frame.checksum == frame.rightChecksum ? "right" : "wrong";
    return fmt::format("block {}{}, {}, checksum {:02X} {}, {}", frame.number, frame.last ? ", the last" : "",
                       bytesText(frame.payload.size()), frame.checksum, checksum, orderText(frame.order));
}

} // namespace

std::string responseText(Response const& response) {
    std::string line = fmt::format("response: {}, {}", serviceText(response.service), bytesText(response.size));
    if (response.status) {
        line += fmt::format(", status {} ({})", *response.status, statusText(response.service, *response.status));
    }
    if (response.piece) {
        line += fmt::format(", {} of the file, {}", bytesText(response.piece->count),
                            response.piece->more ? "more to come" : "its end");
    }
    return line;
}

std::string frameText(Frame const& frame) {
    switch (frame.kind) {
    case FrameKind::Block:
        return blockText(frame);
    case FrameKind::Acknowledge:
        return fmt::format("acknowledge of block {}, {}", frame.number, orderText(frame.order));
    case FrameKind::Turnaround:
        return fmt::format("turnaround: the panel waits for the response, {}", orderText(frame.order));
    case FrameKind::Closing:
        return fmt::format("closing acknowledge: the exchange is over, {}", orderText(frame.order));
    case FrameKind::Unknown:
        break;
    }
    return "no frame";
}

std::string TextTrace::begin(TraceStart const& start) {
    start_ = start.at;
    return fmt::format("# {}, trace of {}, in seconds from there on; -> to the PLC, <- from the PLC\n", start.program,
                       isoTime(start.at));
}

std::string TextTrace::frame(TracedFrame const& frame) {
    std::string text = headed(frame.at, frame.way == Way::ToPlc ? "->" : "<-", frameText(frame.step.frame));
    text += byteLines(frame.bytes);
    if (frame.step.frame.routing) {
        text += indented(routingText(*frame.step.frame.routing));
    }
    text += faultLines(frame.step.frame.faults);
    text += frame.step.request ? requestLines(*frame.step.request) : std::string();
    text += frame.step.response ? responseLines(*frame.step.response) : std::string();
    return text;
}

std::string TextTrace::timeout(std::int64_t at) {
    return headed(at, "!!", "nothing received within the time-out");
}

std::string TextTrace::dropped(plc::ByteView bytes, std::int64_t at) {
    return headed(at, "!!", fmt::format("{} dropped: not expected", bytesText(bytes.size()))) + byteLines(bytes);
}

std::string TextTrace::fault(std::string_view reason, std::int64_t at) {
    return headed(at, "!!", reason.empty() ? "the port died" : displayable(reason));
}

std::string TextTrace::headed(std::int64_t at, std::string_view mark, std::string_view text) const {
    return fmt::format("{:>16} {} {}\n", secondsText(at - start_), mark, text);
}

} // namespace velk::trace
