#include "plc/station/Services.h"

#include "plc/frames/Text.h"
#include "plc/station/ItemNames.h"

#include <algorithm>
#include <array>
#include <utility>

namespace plc {

namespace {

constexpr std::array<std::uint8_t, 9> kLinkCheck{0x42, 0xE0, 0x20, 0x26, 0x29, 0x00, 0x00, 0x5D, 0x05};

constexpr std::size_t kLoginSize = 14;
constexpr std::uint32_t kLoginFirst = 2;
constexpr std::uint32_t kLoginSecond = 6;
constexpr std::size_t kLoginZeros = 9;

constexpr std::size_t kReadReplyHeader = 6;
constexpr std::size_t kFileNameOffset = 4;

bool isLogin(ByteView request, ByteOrder order) {
    return request.size() == kLoginSize && loadOrdered<std::uint32_t>(request, 1, order) == kLoginFirst &&
           loadOrdered<std::uint32_t>(request, 5, order) == kLoginSecond &&
           std::all_of(request.begin() + kLoginZeros, request.end(), [](std::uint8_t byte) { return byte == 0; });
}

/// The name in a file request, or nothing when the request is malformed.
std::optional<std::string_view> fileName(ByteView request, ByteOrder order) {
    if (request.size() <= kFileNameOffset + 1 || request[1] != 0 || request.back() != 0 ||
        loadOrdered<std::uint16_t>(request, 2, order) != request.size() - kFileNameOffset) {
        return std::nullopt;
    }
    ByteView const bytes = request.subspan(kFileNameOffset, request.size() - kFileNameOffset - 1);
    if (std::find(bytes.begin(), bytes.end(), 0) != bytes.end()) {
        return std::nullopt;
    }
    return std::string_view(reinterpret_cast<char const*>(bytes.data()), bytes.size());
}

/// The memory of an item: its bytes, or the one byte that holds its bit. Nothing when it is outside.
std::optional<std::span<std::uint8_t>> bytesOf(Memory& memory, ListItem const& item) {
    return item.isBit() ? memory.at(item.area, item.offset / 8, 1) : memory.at(item.area, item.offset, item.size);
}

void store(std::span<std::uint8_t> bytes, ListItem const& item) {
    if (!item.isBit()) {
        std::copy(item.value.begin(), item.value.end(), bytes.begin());
        return;
    }
    unsigned const mask = 1U << item.offset % 8;
    bytes[0] = static_cast<std::uint8_t>((bytes[0] & ~mask) | (item.value[0] & mask));
}

std::string describe(ListItem const& item) {
    return textOf("area ", item.area, ", offset ", item.offset, ", ",
                  item.isBit() ? "one bit" : textOf(item.size, " bytes"));
}

/// "2 items read: PLC_PRG.Level, PLC_PRG.Mode".
std::string counted(std::size_t items, std::string_view what, std::string const& names) {
    return textOf(items, items == 1 ? " item " : " items ", what, names.empty() ? "" : ": ", names);
}

bool isFileService(ServiceKind service) {
    return service == ServiceKind::kFileOpen || service == ServiceKind::kFileNext;
}

bool needsLogin(ServiceKind service) {
    return isFileService(service) || service == ServiceKind::kReadList || service == ServiceKind::kWriteList;
}

} // namespace

Services::Services(ServiceSettings const& settings, LoadedProgram& program, FaultPlan& faults, StationReporter reporter)
    : settings_(settings), program_(program), faults_(faults), reporter_(reporter) {}

std::optional<Bytes> Services::handle(ByteView request) {
    ServiceKind const service = serviceOf(request);
    std::optional<Bytes> reply;
    if (FaultRule const* const fault = faults_.strike(FaultKind::kStatusWord)) {
        auto const word = static_cast<std::uint16_t>(fault->value.value_or(status::kRefused));
        reply = isFileService(service) ? fileStatus(word) : statusOnly(word);
    } else if (needsLogin(service) && !loggedIn_) {
        reporter_.report(Cause::kNotLoggedIn, textOf(nameOf(service), " came without a login"));
        reply = isFileService(service) ? fileStatus(status::kNotLoggedIn) : statusOnly(status::kNotLoggedIn);
    } else {
        reply = perform(service, request);
    }
    if (reply) {
        spoilLength(*reply);
    }
    return reply;
}

void Services::restart() {
    loggedIn_ = false;
    file_.close();
}

std::optional<Bytes> Services::perform(ServiceKind service, ByteView request) {
    switch (service) {
    case ServiceKind::kLinkCheck:
        return checkLink(request);
    case ServiceKind::kLogout:
        return logOut(request);
    case ServiceKind::kLogin:
        return logIn(request);
    case ServiceKind::kReadList:
    case ServiceKind::kWriteList:
        return accessList(request);
    case ServiceKind::kFileOpen:
        return openFile(request);
    case ServiceKind::kFileNext:
        return nextPiece(request);
    case ServiceKind::kUnknown:
        break;
    }
    return refuse(Cause::kUnknownService, status::kUnknownService,
                  textOf("there is no service ", request.empty() ? 0 : int{request[0]}));
}

std::optional<Bytes> Services::checkLink(ByteView request) {
    if (!std::equal(request.begin(), request.end(), kLinkCheck.begin(), kLinkCheck.end())) {
        reporter_.report(Cause::kLinkCheckBytes, textOf("a link check of ", request.size(), " bytes is wrong"));
        return std::nullopt;
    }
    reporter_.report(Cause::kLinkChecked, "link checked");
    return statusOnly(status::kDone);
}

Bytes Services::logOut(ByteView request) {
    if (request.size() != 1) {
        return refuse(Cause::kLogoutRequest, status::kWrongRequest,
                      textOf("a logout request has ", request.size(), " bytes"));
    }
    if (!loggedIn_) {
        return refuse(Cause::kNotLoggedIn, status::kNotLoggedIn, "logout came without a login");
    }
    loggedIn_ = false;
    file_.close();
    reporter_.report(Cause::kLoggedOut, "logged out");
    return statusOnly(status::kDone);
}

Bytes Services::logIn(ByteView request) {
    if (!isLogin(request, settings_.order)) {
        return refuse(Cause::kLoginRequest, status::kRefused,
                      textOf("a login request of ", request.size(), " bytes is wrong"));
    }
    loggedIn_ = true;
    reporter_.report(Cause::kLoggedIn, "logged in");
    return statusOnly(status::kLoginAccepted);
}

Bytes Services::accessList(ByteView request) {
    auto const parsed = parseListRequest(request, settings_.order);
    if (auto const* const fault = std::get_if<std::string>(&parsed)) {
        return refuse(Cause::kListRequest, status::kWrongRequest, *fault);
    }
    auto const& list = std::get<ListRequest>(parsed);
    if (list.projectId != program_.program.projectId()) {
        return refuse(Cause::kProjectMismatch, settings_.mismatchWord,
                      textOf("a list carries project identifier ", list.projectId, ", the program has ",
                             program_.program.projectId()));
    }
    return serviceOf(request) == ServiceKind::kWriteList ? writeList(list) : readList(list);
}

Bytes Services::readList(ListRequest const& list) {
    if (!fitsReply(list)) {
        return refuse(Cause::kReplyTooLong, status::kReplyTooLong,
                      textOf("the values of ", list.items.size(), " items do not fit into a response"));
    }
    Bytes reply = statusOnly(status::kDone);
    reply.resize(kReadReplyHeader);
    auto const faults = faults_.strikeAll(FaultKind::kBadQuality);
    for (std::size_t i = 0; i < list.items.size(); ++i) {
        std::size_t const quality = reply.size();
        appendItem(reply, list.items[i]);
        for (FaultRule const* const fault : faults) {
            if (concerns(*fault, list.items[i], i)) {
                reply[quality] = static_cast<std::uint8_t>(fault->value.value_or(0));
            }
        }
    }
    reporter_.report(Cause::kListRead, counted(list.items.size(), "read", namesOf(list.items, program_.program)));
    return reply;
}

bool Services::fitsReply(ListRequest const& list) const {
    std::uint64_t size = kReadReplyHeader;
    for (ListItem const& item : list.items) {
        size += 1 + item.valueSize();
    }
    return size <= kLargestPayload;
}

/// A list is written as a whole or not at all.
Bytes Services::writeList(ListRequest const& list) {
    for (ListItem const& item : list.items) {
        if (!bytesOf(program_.memory, item)) {
            return refuse(Cause::kNoSuchMemory, status::kNoSuchMemory, textOf("no memory to write: ", describe(item)));
        }
    }
    for (ListItem const& item : list.items) {
        store(*bytesOf(program_.memory, item), item);
    }
    reporter_.report(Cause::kListWritten,
                     counted(list.items.size(), "written", valuesOf(list.items, program_, settings_.order)));
    return statusOnly(status::kDone);
}

void Services::appendItem(Bytes& reply, ListItem const& item) const {
    auto const bytes = bytesOf(program_.memory, item);
    if (!bytes) {
        reporter_.report(Cause::kNoSuchMemory, textOf("no memory to read: ", describe(item)));
        reply.resize(reply.size() + 1 + static_cast<std::size_t>(item.valueSize()));
        return;
    }
    reply.push_back(kGoodQuality);
    reply.insert(reply.end(), bytes->begin(), bytes->end());
}

bool Services::concerns(FaultRule const& rule, ListItem const& item, std::size_t position) const {
    if (rule.variable.empty()) {
        return rule.item.value_or(position) == position;
    }
    auto const place = program_.program.find(rule.variable);
    if (!place || place->area != item.area || (place->kind == TypeKind::kBit) != item.isBit()) {
        return false;
    }
    return item.offset >= place->offset &&
           std::uint64_t{item.offset} + item.valueSize() <= std::uint64_t{place->offset} + place->size;
}

Bytes Services::openFile(ByteView request) {
    file_.close();
    auto const name = fileName(request, settings_.order);
    if (!name) {
        reporter_.report(Cause::kFileRequest, textOf("a file request of ", request.size(), " bytes is wrong"));
        return fileStatus(status::kWrongRequest);
    }
    if (*name != kSymbolFileName) {
        reporter_.report(Cause::kNoSuchFile, textOf("there is no file ", *name));
        return fileStatus(status::kNoSuchFile);
    }
    file_.open(program_.symbolFile);
    return filePiece(Cause::kFileOpened);
}

Bytes Services::nextPiece(ByteView request) {
    if (request.size() != 1) {
        reporter_.report(Cause::kFileRequest, textOf("a request for the next piece has ", request.size(), " bytes"));
        return fileStatus(status::kWrongRequest);
    }
    if (!file_.isOpen()) {
        reporter_.report(Cause::kNoOpenFile, "a next piece is wanted while no file is open");
        return fileStatus(status::kNoOpenFile);
    }
    return filePiece(Cause::kFilePieceRead);
}

Bytes Services::filePiece(Cause cause) {
    bool const endless = faults_.strike(FaultKind::kFileEndless) != nullptr;
    FilePiece const piece = file_.next(settings_.filePieceSize, endless);
    auto count = static_cast<std::uint16_t>(piece.data.size());
    if (FaultRule const* const fault = faults_.strike(FaultKind::kFileDataCount)) {
        count = static_cast<std::uint16_t>(count + fault->value.value_or(1));
    }
    Bytes reply = statusOnly(status::kDone);
    appendOrdered(reply, settings_.order, static_cast<std::uint16_t>(piece.more ? 1 : 0));
    appendOrdered(reply, settings_.order, count);
    reply.insert(reply.end(), piece.data.begin(), piece.data.end());
    reporter_.report(cause, textOf(piece.data.size(), " bytes of the file", piece.more ? "" : ", its last"));
    return reply;
}

void Services::spoilLength(Bytes& reply) {
    if (FaultRule const* const fault = faults_.strike(FaultKind::kReplyTooShort)) {
        reply.resize(reply.size() - std::min<std::size_t>(reply.size(), fault->value.value_or(1)));
    }
    if (FaultRule const* const fault = faults_.strike(FaultKind::kReplyTooLong)) {
        reply.resize(reply.size() + fault->value.value_or(1));
    }
}

Bytes Services::statusOnly(std::uint16_t word) const {
    Bytes reply;
    appendOrdered(reply, settings_.order, word);
    return reply;
}

/// A file reply without data: status, no further piece, no bytes.
Bytes Services::fileStatus(std::uint16_t word) const {
    Bytes reply = statusOnly(word);
    reply.resize(6);
    return reply;
}

Bytes Services::refuse(Cause cause, std::uint16_t word, std::string text) const {
    reporter_.report(cause, std::move(text));
    return statusOnly(word);
}

} // namespace plc
