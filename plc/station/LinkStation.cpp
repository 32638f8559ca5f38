#include "plc/station/LinkStation.h"

#include "plc/frames/Text.h"

#include <algorithm>
#include <utility>

namespace plc {

namespace {

/// The faults of one kind of acknowledge.
struct AckFaults {
    FaultKind missing;
    FaultKind tooShort;
    FaultKind wrongHeader;
    FaultKind wrongCode;
    FaultKind wrongNumber;
};

constexpr AckFaults kBlockAckFaults{FaultKind::kAckMissing, FaultKind::kAckTooShort, FaultKind::kAckWrongHeader,
                                    FaultKind::kAckWrongCode, FaultKind::kAckWrongNumber};
constexpr AckFaults kClosingAckFaults{FaultKind::kClosingMissing, FaultKind::kClosingTooShort,
                                      FaultKind::kClosingWrongHeader, FaultKind::kClosingWrongCode,
                                      FaultKind::kClosingWrongNumber};

} // namespace

LinkStation::LinkStation(LinkSettings const& settings, FrameSink& sink, RequestHandler& handler, FaultPlan& faults,
                         StationReporter reporter)
    : settings_(settings), sink_(sink), handler_(handler), faults_(faults), reporter_(reporter) {}

void LinkStation::onBlock(BlockReceived const& block, Micros now) {
    if (block.number == 1) {
        faults_.setService(serviceOf(block.payload));
    }
    if (swallowed()) {
        return;
    }
    if (block.number == 1) {
        begin();
    } else if (state_ != State::kRequest || block.number != block_ + 1) {
        reporter_.report(Cause::kBlockNumber,
                         state_ == State::kRequest
                             ? textOf("block ", block.number, " came instead of block ", block_ + 1)
                             : textOf("block ", block.number, " came without a request"));
        return;
    }
    takeBlock(block, now);
}

void LinkStation::onAck(AckReceived const& ack, Micros now) {
    if (swallowed()) {
        return;
    }
    if (state_ != State::kTurnaround && state_ != State::kResponse) {
        reporter_.report(Cause::kUnexpectedAck, textOf("an acknowledge of block ", ack.number, " came unexpectedly"));
        return;
    }
    int const expected = state_ == State::kTurnaround ? 0 : block_;
    if (ack.number != expected) {
        reporter_.report(Cause::kAckNumber,
                         textOf("an acknowledge of block ", ack.number, " came instead of one of ", expected));
        return;
    }
    if (state_ == State::kTurnaround) {
        answer(now);
    } else if (sent_ < response_.size()) {
        sendNextBlock(now + settings_.ackDelay);
    } else {
        close(now);
    }
}

void LinkStation::advance(Micros now) {
    if (auto const end = deadline(); end && now >= *end) {
        reporter_.report(Cause::kExchangeTimeout, "the panel fell silent in the middle of an exchange");
        reset();
    }
}

std::optional<Micros> LinkStation::deadline() const {
    return state_ == State::kIdle ? std::nullopt : std::optional(deadline_);
}

bool LinkStation::swallowed() {
    return faults_.strike(FaultKind::kSilent) != nullptr;
}

void LinkStation::begin() {
    if (state_ != State::kIdle) {
        reporter_.report(Cause::kExchangeAbandoned, "a new request began before the exchange was over");
    }
    state_ = State::kRequest;
    block_ = 0;
    request_.clear();
}

void LinkStation::takeBlock(BlockReceived const& block, Micros now) {
    if (request_.size() + block.payload.size() > kLargestPayload) {
        reporter_.report(Cause::kRequestTooLong, textOf("a request is longer than ", kLargestPayload, " bytes"));
        reset();
        return;
    }
    request_.insert(request_.end(), block.payload.begin(), block.payload.end());
    block_ = block.number;
    state_ = block.last ? State::kTurnaround : State::kRequest;
    sendAck(block_, false, now + settings_.ackDelay);
}

void LinkStation::answer(Micros now) {
    std::optional<Bytes> response = handler_.handle(request_);
    if (!response) {
        reset();
        return;
    }
    response_ = std::move(*response);
    if (FaultRule const* const fault = faults_.strike(FaultKind::kResponseTooLong)) {
        response_.resize(std::max<std::size_t>(response_.size(), fault->value.value_or(kLargestPayload + 1)));
    }
    state_ = State::kResponse;
    block_ = 0;
    sent_ = 0;
    sendNextBlock(now + settings_.answerDelay);
}

void LinkStation::sendNextBlock(Micros due) {
    std::size_t const room = settings_.key.blockSize - kBlockHeaderSize;
    std::size_t const from = sent_;
    std::size_t const size = std::min(room, response_.size() - from);
    sent_ += size;
    ++block_;
    sendBlock(ByteView(response_).subspan(from, size), sent_ == response_.size(), due);
}

void LinkStation::sendBlock(ByteView payload, bool last, Micros due) {
    if (faults_.strike(FaultKind::kBlockMissing) != nullptr) {
        watch(due);
        return;
    }
    BlockFields fields{.length = static_cast<std::uint16_t>(payload.size()),
                       .number = block_,
                       .lastFlag = static_cast<std::uint8_t>(last ? 1 : 0),
                       .payload = payload};
    if (FaultRule const* const fault = faults_.strike(FaultKind::kBlockWrongProtocolId)) {
        fields.mark[0] = static_cast<std::uint8_t>(fault->value.value_or(0xAB));
    }
    if (FaultRule const* const fault = faults_.strike(FaultKind::kBlockWrongNumber)) {
        fields.number = static_cast<std::uint16_t>(fault->value.value_or(fields.number + 1U));
    }
    if (FaultRule const* const fault = faults_.strike(FaultKind::kBlockWrongLength)) {
        fields.length = static_cast<std::uint16_t>(fault->value.value_or(fields.length + 1U));
    }
    Bytes frame = encodeBlock(fields, settings_.key.order);
    if (FaultRule const* const fault = faults_.strike(FaultKind::kBlockWrongChecksum)) {
        frame[kChecksumOffset] = static_cast<std::uint8_t>(frame[kChecksumOffset] + fault->value.value_or(1));
    }
    std::optional<std::size_t> cutTo;
    if (FaultRule const* const fault = faults_.strike(FaultKind::kBlockTooShort)) {
        cutTo = fault->value.value_or(static_cast<std::uint32_t>(headerSize() + kBlockHeaderSize - 1));
    }
    sendFrame(std::move(frame), cutTo, due);
}

void LinkStation::sendAck(std::uint16_t number, bool closing, Micros due) {
    AckFaults const& kinds = closing ? kClosingAckFaults : kBlockAckFaults;
    if (faults_.strike(kinds.missing) != nullptr) {
        watch(due);
        return;
    }
    AckFields fields{.number = number};
    if (FaultRule const* const fault = faults_.strike(kinds.wrongHeader)) {
        fields.mark[0] = static_cast<std::uint8_t>(fault->value.value_or(0x56));
    }
    if (FaultRule const* const fault = faults_.strike(kinds.wrongCode)) {
        fields.code = static_cast<std::uint16_t>(fault->value.value_or(kAcknowledgeCode + 1U));
    }
    if (FaultRule const* const fault = faults_.strike(kinds.wrongNumber)) {
        fields.number = static_cast<std::uint16_t>(fault->value.value_or(number + 1U));
    }
    std::optional<std::size_t> cutTo;
    if (FaultRule const* const fault = faults_.strike(kinds.tooShort)) {
        cutTo = fault->value.value_or(static_cast<std::uint32_t>(headerSize() + kAckSize - 1));
    }
    sendFrame(encodeAck(fields, settings_.key.order), cutTo, due);
}

void LinkStation::close(Micros now) {
    sendAck(0, true, now + settings_.ackDelay);
    reporter_.report(Cause::kExchangeDone,
                     textOf("a request of ", request_.size(), " bytes, a response of ", response_.size()));
    reset();
}

/// Adds the routing header, applies the configured faults of the line, and sends the result.
void LinkStation::sendFrame(Bytes frame, std::optional<std::size_t> cutTo, Micros due) {
    if (settings_.framing == Framing::kRouted) {
        RoutingHeader header = settings_.key.header;
        if (FaultRule const* const fault = faults_.strike(FaultKind::kRoutingStatus)) {
            header[kRoutingStatusOffset] = static_cast<std::uint8_t>(fault->value.value_or(1));
        }
        frame.insert(frame.begin(), header.begin(), header.end());
    }
    frame.resize(std::min(frame.size(), cutTo.value_or(frame.size())));
    spoilBytes(frame);
    if (FaultRule const* const fault = faults_.strike(FaultKind::kLate)) {
        due += fault->delay;
    }
    if (FaultRule const* const fault = faults_.strike(FaultKind::kPause)) {
        auto const middle = frame.begin() + static_cast<std::ptrdiff_t>(frame.size() / 2);
        sink_.send(Bytes(frame.begin(), middle), due);
        frame.erase(frame.begin(), middle);
        due += fault->delay;
    }
    watch(sink_.send(std::move(frame), due));
}

void LinkStation::spoilBytes(Bytes& frame) {
    if (FaultRule const* const fault = faults_.strike(FaultKind::kFlippedBits); fault != nullptr && !frame.empty()) {
        for (std::uint32_t i = 0; i < fault->value.value_or(1); ++i) {
            std::size_t const bit = faults_.random(frame.size() * 8);
            frame[bit / 8] = static_cast<std::uint8_t>(frame[bit / 8] ^ 1U << bit % 8);
        }
    }
    if (FaultRule const* const fault = faults_.strike(FaultKind::kDroppedBytes)) {
        for (std::uint32_t i = 0; i < fault->value.value_or(1) && !frame.empty(); ++i) {
            frame.erase(frame.begin() + static_cast<std::ptrdiff_t>(faults_.random(frame.size())));
        }
    }
    if (FaultRule const* const fault = faults_.strike(FaultKind::kGarbage)) {
        Bytes garbage(fault->value.value_or(5));
        std::generate(garbage.begin(), garbage.end(),
                      [this] { return static_cast<std::uint8_t>(faults_.random(256)); });
        frame.insert(frame.begin(), garbage.begin(), garbage.end());
    }
}

std::size_t LinkStation::headerSize() const {
    return settings_.framing == Framing::kRouted ? kRoutingHeaderSize : 0;
}

} // namespace plc
