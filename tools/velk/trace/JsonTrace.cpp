#include "tools/velk/trace/JsonTrace.h"

#include "tools/velk/text/Text.h"
#include "tools/velk/trace/Hex.h"
#include "tools/velk/trace/TraceTime.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace velk::trace {
namespace {

using Json = nlohmann::ordered_json;

Json event(char const* name, std::int64_t at) {
    return {{"event", name}, {"time", isoTime(at)}};
}

std::string line(Json const& json) {
    return json.dump() + "\n";
}

char const* kindName(FrameKind kind) {
    switch (kind) {
    case FrameKind::Block:
        return "block";
    case FrameKind::Acknowledge:
        return "acknowledge";
    case FrameKind::Turnaround:
        return "turnaround";
    case FrameKind::Closing:
        return "closing";
    case FrameKind::Unknown:
        break;
    }
    return "unknown";
}

std::string dotted(std::array<std::uint8_t, 4> const& address) {
    return fmt::format("{}.{}.{}.{}", address[0], address[1], address[2], address[3]);
}

Json routingJson(Routing const& routing) {
    Json ways = Json::array();
    for (std::size_t level = 0; level < routing.hop.size(); ++level) {
        ways.push_back({{"hop", routing.hop[level]}, {"address", dotted(routing.address[level])}});
    }
    return {{"block_size", routing.blockSize}, {"levels", routing.levels}, {"way", ways}, {"status", routing.status}};
}

Json texts(std::vector<std::string> const& lines) {
    Json array = Json::array();
    for (std::string const& one : lines) {
        array.push_back(toUtf8(one));
    }
    return array;
}

Json itemsJson(std::vector<Item> const& items) {
    Json array = Json::array();
    for (Item const& item : items) {
        Json json{{"area", item.area}, {"offset", item.offset}, {"size", item.size}};
        if (item.quality) {
            json["quality"] = *item.quality;
        }
        if (!item.value.empty()) {
            json["value"] = hexText(item.value);
        }
        array.push_back(std::move(json));
    }
    return array;
}

bool isList(plc::ServiceKind service) {
    return service == plc::ServiceKind::kReadList || service == plc::ServiceKind::kWriteList;
}

Json requestJson(Request const& request) {
    Json json{{"service", plc::nameOf(request.service)}, {"size", request.size}};
    if (request.fileName) {
        json["file"] = toUtf8(*request.fileName);
    }
    if (isList(request.service)) {
        json["items"] = itemsJson(request.items);
    }
    if (request.project) {
        json["project"] = *request.project;
    }
    json["faults"] = texts(request.faults);
    return json;
}

Json responseJson(Response const& response) {
    Json json{{"service", plc::nameOf(response.service)}, {"size", response.size}};
    if (response.status) {
        json["status"] = *response.status;
        json["meaning"] = statusText(response.service, *response.status);
    }
    if (response.service == plc::ServiceKind::kReadList) {
        json["items"] = itemsJson(response.items);
    }
    if (response.piece) {
        json["file"] = {{"count", response.piece->count}, {"more", response.piece->more}};
    }
    json["faults"] = texts(response.faults);
    return json;
}

void putFields(Json& json, Frame const& frame) {
    if (frame.kind == FrameKind::Unknown) {
        return;
    }
    json["byte_order"] = frame.order == plc::ByteOrder::kLittle ? "little" : "big";
    json["number"] = frame.number;
    if (frame.kind != FrameKind::Block) {
        json["code"] = frame.code;
        return;
    }
    json["last"] = frame.last;
    json["length"] = frame.length;
    json["checksum"] = {{"value", frame.checksum}, {"right", frame.checksum == frame.rightChecksum}};
}

} // namespace

std::string JsonTrace::begin(TraceStart const& start) {
    Json json = event("begin", start.at);
    json["program"] = start.program;
    return line(json);
}

std::string JsonTrace::frame(TracedFrame const& frame) {
    Frame const& decoded = frame.step.frame;
    Json json = event("frame", frame.at);
    json["lasts_us"] = frame.lasts;
    json["direction"] = frame.way == Way::ToPlc ? "to_plc" : "from_plc";
    json["kind"] = kindName(decoded.kind);
    putFields(json, decoded);
    if (decoded.routing) {
        json["routing"] = routingJson(*decoded.routing);
    }
    json["bytes"] = hexText(frame.bytes);
    json["faults"] = texts(decoded.faults);
    if (frame.step.request) {
        json["request"] = requestJson(*frame.step.request);
    }
    if (frame.step.response) {
        json["response"] = responseJson(*frame.step.response);
    }
    return line(json);
}

std::string JsonTrace::timeout(std::int64_t at) {
    return line(event("timeout", at));
}

std::string JsonTrace::dropped(plc::ByteView bytes, std::int64_t at) {
    Json json = event("dropped", at);
    json["bytes"] = hexText(bytes);
    return line(json);
}

std::string JsonTrace::fault(std::string_view reason, std::int64_t at) {
    Json json = event("fault", at);
    json["reason"] = toUtf8(reason);
    return line(json);
}

} // namespace velk::trace
