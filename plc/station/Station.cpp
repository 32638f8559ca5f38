#include "plc/station/Station.h"

#include "plc/frames/Text.h"
#include "plc/program/ValueCodec.h"

#include <utility>

namespace plc {

namespace {

Place placeOf(Program const& program, std::string_view variable) {
    auto const place = program.find(variable);
    if (!place) {
        throw std::invalid_argument(textOf("there is no variable ", variable));
    }
    return *place;
}

LinkSettings linkSettings(StationDescription const& description, Framing framing) {
    return {.framing = framing,
            .key = frameKey(description),
            .ackDelay = description.ackDelay,
            .answerDelay = description.answerDelay,
            .exchangeTimeout = description.exchangeTimeout};
}

ServiceSettings serviceSettings(StationDescription const& description) {
    return {.order = description.byteOrder,
            .filePieceSize = description.filePieceSize,
            .mismatchWord = description.mismatchWord};
}

} // namespace

Station::Station(StationDescription const& description, Framing framing, FrameSink& sink, StationReporter reporter)
    : name_(description.name), order_(description.byteOrder), reporter_(reporter),
      program_(loadProgram(description.program, description.byteOrder)),
      faults_(description.faultSeed, description.faults, reporter),
      services_(serviceSettings(description), program_, faults_, reporter),
      link_(linkSettings(description, framing), sink, services_, faults_, reporter) {}

Station::~Station() = default;

void Station::setValue(std::string_view variable, Value const& value) {
    writeValue(program_.memory, placeOf(program_.program, variable), value, order_);
}

Value Station::getValue(std::string_view variable) const {
    return readValue(program_.memory, placeOf(program_.program, variable), order_);
}

void Station::replaceProgram(ProgramDescription const& description) {
    program_ = loadProgram(description, order_);
    services_.closeFile();
    reporter_.report(Cause::kProgramChanged, textOf("the program has the identifier ", description.projectId));
}

void Station::restart() {
    services_.restart();
    link_.reset();
    reporter_.report(Cause::kRestarted, "restarted");
}

void Station::setBehaviour(std::unique_ptr<Behaviour> behaviour, Micros interval) {
    if (interval <= Micros::zero()) {
        throw std::invalid_argument("a behaviour needs an interval above 0");
    }
    behaviour_ = std::move(behaviour);
    interval_ = interval;
    nextTick_.reset();
}

void Station::advance(Micros now) {
    program_.behaviours.advance(program_.memory, now);
    link_.advance(now);
    if (behaviour_ == nullptr) {
        return;
    }
    if (!nextTick_) {
        nextTick_ = now + interval_;
    } else if (now >= *nextTick_) {
        nextTick_ = *nextTick_ + interval_;
        behaviour_->onTick(*this, now);
    }
}

std::optional<Micros> Station::deadline() const {
    auto const tick = behaviour_ == nullptr ? std::nullopt : nextTick_;
    std::optional<Micros> next;
    for (auto const& one : {link_.deadline(), tick, program_.behaviours.deadline()}) {
        next = next && one ? std::min(next, one) : next ? next : one;
    }
    return next;
}

} // namespace plc
