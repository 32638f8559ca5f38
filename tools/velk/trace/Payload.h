#pragma once

#include "plc/frames/ByteOrder.h"
#include "plc/frames/Bytes.h"
#include "plc/station/ServiceKind.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace velk::trace {

/** A variable of a list. */
struct Item {
    std::uint16_t area = 0;
    std::uint32_t offset = 0;              ///< in bytes; in bits for a single bit
    std::uint32_t size = 0;                ///< in bytes; 0 means a single bit
    plc::Bytes value{};                    ///< as it is in the PLC; of a read only in its response
    std::optional<std::uint8_t> quality{}; ///< responses of reads; 1 is good
};

/** The piece of a file that a response carries. */
struct FilePiece {
    bool more = false;
    std::uint16_t count = 0; ///< bytes of the file, as the response says
    std::size_t carried = 0; ///< bytes of the file that it really carries
};

/** What the panel asks of the PLC. */
struct Request {
    plc::ServiceKind service = plc::ServiceKind::kUnknown;
    plc::ByteOrder order = plc::ByteOrder::kLittle;
    std::size_t size = 0; ///< bytes of the payload
    std::vector<Item> items{};
    std::optional<std::uint32_t> project{}; ///< lists: the project identifier
    std::optional<std::string> fileName{};
    std::vector<std::string> faults{}; ///< what is wrong with the payload, each in a few words
};

/** The PLC's response. */
struct Response {
    plc::ServiceKind service = plc::ServiceKind::kUnknown; ///< of the request
    std::size_t size = 0;
    std::optional<std::uint16_t> status{};
    std::vector<Item> items{}; ///< reads: those of the request with their values
    std::optional<FilePiece> piece{};
    std::vector<std::string> faults{};
};

/** The payload of a whole request. Any bytes are accepted. */
Request decodeRequest(plc::ByteView payload, plc::ByteOrder order);

/** The payload of the whole response to @p request. Any bytes are accepted. */
Response decodeResponse(plc::ByteView payload, plc::ByteOrder order, Request const& request);

/** "reads a list", "link check" and so on, for people. */
std::string_view serviceText(plc::ServiceKind service);

/** The meaning of a status word in the response of a service. */
std::string_view statusText(plc::ServiceKind service, std::uint16_t status);

/** Whether the service was carried out. */
bool isSuccess(plc::ServiceKind service, std::uint16_t status);

/** "area 0, offset 12, 4 bytes". */
std::string itemText(Item const& item);

} // namespace velk::trace
