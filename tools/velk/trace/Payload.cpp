#include "tools/velk/trace/Payload.h"

#include "plc/station/ListRequest.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace velk::trace {
namespace {

using plc::ByteOrder;
using plc::ByteView;
using plc::ServiceKind;

constexpr std::size_t kStatusSize = 2;
constexpr std::size_t kLoginSize = 14;
constexpr std::size_t kReplyHeader = 6; ///< before the values of a read, and before the bytes of a file
constexpr std::size_t kFileNameOffset = 4;

constexpr std::uint16_t kDone = 0;
constexpr std::uint16_t kLoginAccepted = 1000;
constexpr std::uint16_t kOtherProject = 0x48;
constexpr std::uint16_t kOtherProjectToo = 0x33;
constexpr std::uint8_t kGoodQuality = 1;

bool isListService(ServiceKind service) {
    return service == ServiceKind::kReadList || service == ServiceKind::kWriteList;
}

bool isFile(ServiceKind service) {
    return service == ServiceKind::kFileOpen || service == ServiceKind::kFileNext;
}

void decodeList(Request& request, ByteView payload) {
    auto const parsed = plc::parseListRequest(payload, request.order);
    if (auto const* const fault = std::get_if<std::string>(&parsed)) {
        request.faults.push_back(*fault);
        return;
    }
    auto const& list = std::get<plc::ListRequest>(parsed);
    request.project = list.projectId;
    for (plc::ListItem const& item : list.items) {
        request.items.push_back({.area = item.area,
                                 .offset = item.offset,
                                 .size = item.size,
                                 .value = plc::Bytes(item.value.begin(), item.value.end()),
                                 .quality = std::nullopt});
    }
}

void decodeFileName(Request& request, ByteView payload) {
    if (payload.size() < kFileNameOffset) {
        request.faults.push_back(fmt::format("a file request of {} bytes is too short", payload.size()));
        return;
    }
    auto const length = plc::loadOrdered<std::uint16_t>(payload, 2, request.order);
    ByteView const bytes = payload.subspan(kFileNameOffset);
    request.fileName = std::string(bytes.begin(), std::find(bytes.begin(), bytes.end(), 0));
    if (length != bytes.size() || request.fileName->size() + 1 != bytes.size()) {
        request.faults.push_back(
            fmt::format("the name's length field says {} bytes, {} received", length, bytes.size()));
    }
}

void expectSize(Request& request, std::size_t wanted) {
    if (request.size != wanted) {
        request.faults.push_back(
            fmt::format("it has {} instead of {}", counted(request.size, "byte", "bytes"), wanted));
    }
}

/** Bytes of an item's value. A single item that counts bits may be an array of them: it takes all remaining bytes. */
std::size_t valueSize(Request const& request, Item const& item, std::size_t left) {
    if (item.size != 0) {
        return item.size;
    }
    return request.items.size() == 1 ? std::max<std::size_t>(left, 1) : 1;
}

void decodeValues(Response& response, Request const& request, ByteView values) {
    for (Item const& asked : request.items) {
        if (values.empty()) {
            response.faults.push_back(
                fmt::format("it ends after {} of {} items", response.items.size(), request.items.size()));
            return;
        }
        std::size_t const size = valueSize(request, asked, values.size() - 1);
        Item item = asked;
        item.quality = values[0];
        values = values.subspan(1);
        if (values.size() < size) {
            response.faults.push_back(fmt::format("the value of item {} has {} of {}", response.items.size() + 1,
                                                  values.size(), counted(size, "byte", "bytes")));
            return;
        }
        item.value.assign(values.begin(), values.begin() + static_cast<std::ptrdiff_t>(size));
        values = values.subspan(size);
        if (item.quality != kGoodQuality) {
            response.faults.push_back(
                fmt::format("item {} has the quality {}, not 1", response.items.size() + 1, *item.quality));
        }
        response.items.push_back(std::move(item));
    }
    if (!values.empty()) {
        response.faults.push_back(fmt::format("{} bytes follow the last item", values.size()));
    }
}

void decodeReadReply(Response& response, Request const& request, ByteView payload) {
    if (payload.size() < kReplyHeader) {
        response.faults.push_back(
            fmt::format("it has {} instead of at least {}", counted(payload.size(), "byte", "bytes"), kReplyHeader));
        return;
    }
    if (!request.faults.empty()) {
        return; // without its request the sizes of the values are unknown
    }
    decodeValues(response, request, payload.subspan(kReplyHeader));
}

void decodeFilePiece(Response& response, ByteView payload, ByteOrder order) {
    if (payload.size() < kReplyHeader) {
        response.faults.push_back(
            fmt::format("it has {} instead of at least {}", counted(payload.size(), "byte", "bytes"), kReplyHeader));
        return;
    }
    FilePiece const piece{.more = plc::loadOrdered<std::uint16_t>(payload, 2, order) != 0,
                          .count = plc::loadOrdered<std::uint16_t>(payload, 4, order),
                          .carried = payload.size() - kReplyHeader};
    if (piece.count > piece.carried) {
        response.faults.push_back(fmt::format("it says {} bytes of the file, {} received", piece.count, piece.carried));
    }
    response.piece = piece;
}

} // namespace

Request decodeRequest(ByteView payload, ByteOrder order) {
    Request request{.service = plc::serviceOf(payload), .order = order, .size = payload.size()};
    switch (request.service) {
    case ServiceKind::kLogin:
        expectSize(request, kLoginSize);
        break;
    case ServiceKind::kLogout:
    case ServiceKind::kFileNext:
        expectSize(request, 1);
        break;
    case ServiceKind::kReadList:
    case ServiceKind::kWriteList:
        decodeList(request, payload);
        break;
    case ServiceKind::kFileOpen:
        decodeFileName(request, payload);
        break;
    case ServiceKind::kLinkCheck:
        break;
    case ServiceKind::kUnknown:
        request.faults.push_back(payload.empty() ? std::string("it is empty")
                                                 : fmt::format("there is no service {:02X}", payload[0]));
        break;
    }
    return request;
}

Response decodeResponse(ByteView payload, ByteOrder order, Request const& request) {
    Response response{.service = request.service, .size = payload.size()};
    if (payload.size() < kStatusSize) {
        if (response.service == ServiceKind::kLinkCheck) {
            return response; // whatever is answered, the link works
        }
        response.faults.push_back("it has " + counted(payload.size(), "byte", "bytes") + " and no status word");
        return response;
    }
    response.status = plc::loadOrdered<std::uint16_t>(payload, 0, order);
    if (!isSuccess(response.service, *response.status)) {
        return response; // nothing but the word counts
    }
    if (response.service == ServiceKind::kReadList) {
        decodeReadReply(response, request, payload);
    } else if (isFile(response.service)) {
        decodeFilePiece(response, payload, order);
    }
    return response;
}

std::string_view serviceText(ServiceKind service) {
    switch (service) {
    case ServiceKind::kLogin:
        return "login";
    case ServiceKind::kLogout:
        return "logout";
    case ServiceKind::kReadList:
        return "read variables";
    case ServiceKind::kFileOpen:
        return "open file";
    case ServiceKind::kFileNext:
        return "next piece of the file";
    case ServiceKind::kWriteList:
        return "write variables";
    case ServiceKind::kLinkCheck:
        return "link check";
    case ServiceKind::kUnknown:
        break;
    }
    return "unknown service";
}

bool isSuccess(ServiceKind service, std::uint16_t status) {
    // The answer to a link check is as good as any other.
    return service == ServiceKind::kLinkCheck || status == (service == ServiceKind::kLogin ? kLoginAccepted : kDone);
}

std::string_view statusText(ServiceKind service, std::uint16_t status) {
    if (isListService(service) && (status == kOtherProject || status == kOtherProjectToo)) {
        return "the PLC runs another project";
    }
    if (!isSuccess(service, status)) {
        return "refused";
    }
    return service == ServiceKind::kLogin ? "login accepted" : "done";
}

std::string itemText(Item const& item) {
    if (item.size == 0) {
        return fmt::format("area {}, bit {}.{}", item.area, item.offset / 8, item.offset % 8);
    }
    return fmt::format("area {}, offset {}, {} byte{}", item.area, item.offset, item.size, item.size == 1 ? "" : "s");
}

} // namespace velk::trace
