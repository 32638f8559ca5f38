#include "plc/program/VariableBehaviours.h"

#include "plc/frames/Text.h"
#include "plc/program/ValueCodec.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <string_view>
#include <utility>

namespace plc {

namespace {

/// Whole numbers up to here are exact as double.
constexpr double kExact = 9'007'199'254'740'992.0;
/// Far enough below the largest double that no sum of two overflows.
constexpr double kMostLreal = 1e300;
constexpr double kGeneratorMost = 4294967295.0;

struct Range {
    double low;
    double high;
};

template <typename T>
constexpr Range rangeOfWhole() {
    return {static_cast<double>(std::numeric_limits<T>::min()), static_cast<double>(std::numeric_limits<T>::max())};
}

/// The range of a numeric type; nothing for other types.
std::optional<Range> rangeOf(TypeKind kind) {
    switch (kind) {
    case TypeKind::kBool:
    case TypeKind::kBit:
        return Range{0, 1};
    case TypeKind::kSint:
        return rangeOfWhole<std::int8_t>();
    case TypeKind::kByte:
    case TypeKind::kUsint:
        return rangeOfWhole<std::uint8_t>();
    case TypeKind::kInt:
        return rangeOfWhole<std::int16_t>();
    case TypeKind::kUint:
    case TypeKind::kWord:
        return rangeOfWhole<std::uint16_t>();
    case TypeKind::kDint:
        return rangeOfWhole<std::int32_t>();
    case TypeKind::kUdint:
    case TypeKind::kDword:
    case TypeKind::kTime:
        return rangeOfWhole<std::uint32_t>();
    case TypeKind::kLint:
        return Range{-kExact, kExact};
    case TypeKind::kUlint:
        return Range{0, kExact};
    case TypeKind::kReal:
        return Range{std::numeric_limits<float>::lowest(), std::numeric_limits<float>::max()};
    case TypeKind::kLreal:
        return Range{-kMostLreal, kMostLreal};
    case TypeKind::kString:
    case TypeKind::kArray:
    case TypeKind::kStructure:
        break;
    }
    return std::nullopt;
}

bool isReal(TypeKind kind) {
    return kind == TypeKind::kReal || kind == TypeKind::kLreal;
}

bool isTruth(TypeKind kind) {
    return kind == TypeKind::kBool || kind == TypeKind::kBit;
}

/// The number as a value of the type.
Value fitted(double number, TypeKind kind) {
    Range const range = *rangeOf(kind);
    double const bounded = std::clamp(number, range.low, range.high);
    if (isReal(kind)) {
        return bounded;
    }
    auto const whole = static_cast<std::int64_t>(std::llround(bounded));
    return isTruth(kind) ? Value(whole != 0) : Value(whole);
}

double numberOf(Value const& value) {
    return std::visit(
        [](auto const& content) -> double {
            if constexpr (std::is_arithmetic_v<std::decay_t<decltype(content)>>) {
                return static_cast<double>(content);
            } else {
                return 0;
            }
        },
        value.content());
}

[[noreturn]] void refuse(BehaviourDescription const& description, std::string_view text) {
    throw DescriptionError(textOf("behaviour of ", description.variable, ": ", text), description.line);
}

void require(bool right, BehaviourDescription const& description, std::string_view text) {
    if (!right) {
        refuse(description, text);
    }
}

Place numberPlace(BehaviourDescription const& description, std::string const& name, Program const& program) {
    auto const place = program.find(name);
    if (!place) {
        refuse(description, textOf("there is no variable ", name));
    }
    require(!place->listedOnly && rangeOf(place->kind).has_value(), description,
            textOf(name, " is not a number or BOOL with memory"));
    return *place;
}

void checkNumbers(BehaviourDescription const& description) {
    for (double const number : {description.low.value_or(0), description.high.value_or(0), description.step,
                                description.phase, description.factor, description.offset}) {
        require(std::isfinite(number), description, "a number must be finite");
    }
    require(description.every > Micros::zero(), description, "the time between two ticks must be above 0");
    require(description.period > Micros::zero(), description, "the period must be above 0");
    require(description.lag >= Micros::zero(), description, "the lag must not be negative");
}

/// The bounds of a variable's values.
Range boundsOf(BehaviourDescription const& description, TypeKind kind) {
    bool const bounded = description.kind == BehaviourKind::kRamp || description.kind == BehaviourKind::kSine ||
                         description.kind == BehaviourKind::kRandomWalk ||
                         (description.kind == BehaviourKind::kCounter && isReal(kind));
    require(!bounded || (description.low && description.high), description, "low and high are missing");
    Range const whole = *rangeOf(kind);
    Range const bounds{description.low.value_or(whole.low), description.high.value_or(whole.high)};
    require(bounds.low < bounds.high, description, "low must be below high");
    require(bounds.low >= whole.low && bounds.high <= whole.high, description,
            "low or high is beyond the type's range");
    return bounds;
}

/// The number within the bounds; a value beyond a bound is reflected at it.
double reflected(double number, double low, double high) {
    if (number > high) {
        number = 2 * high - number;
    }
    if (number < low) {
        number = 2 * low - number;
    }
    return std::clamp(number, low, high);
}

double counted(double number, double step, double low, double high) {
    double const next = number + step;
    return next > high ? low : next < low ? high : next;
}

} // namespace

VariableBehaviours::VariableBehaviours(std::vector<BehaviourDescription> const& descriptions, Program const& program,
                                       ByteOrder order)
    : order_(order) {
    for (BehaviourDescription const& description : descriptions) {
        movers_.push_back(makeMover(description, program));
    }
}

void VariableBehaviours::advance(Memory& memory, Micros now) {
    if (!start_) {
        start(memory, now);
    }
    for (Mover& mover : movers_) {
        if (mover.next <= now) {
            tick(mover, memory);
            mover.next += mover.description.every;
        }
    }
}

std::optional<Micros> VariableBehaviours::deadline() const {
    if (!start_ || movers_.empty()) {
        return std::nullopt;
    }
    return std::min_element(movers_.begin(), movers_.end(),
                            [](Mover const& left, Mover const& right) { return left.next < right.next; })
        ->next;
}

VariableBehaviours::Mover VariableBehaviours::makeMover(BehaviourDescription const& description,
                                                        Program const& program) const {
    checkNumbers(description);
    Place const place = numberPlace(description, description.variable, program);
    Range const bounds = boundsOf(description, place.kind);
    Mover mover{.description = description,
                .place = place,
                .source = place,
                .low = bounds.low,
                .high = bounds.high,
                .generator = std::mt19937(description.seed)};
    if (description.kind == BehaviourKind::kFollow) {
        mover.source = numberPlace(description, description.source, program);
    }
    return mover;
}

void VariableBehaviours::start(Memory& memory, Micros now) {
    start_ = now;
    for (Mover& mover : movers_) {
        mover.initial = readValue(memory, mover.place, order_);
        mover.next = now;
        BehaviourKind const kind = mover.description.kind;
        bool const atOnce = kind == BehaviourKind::kRamp || kind == BehaviourKind::kSine ||
                            (kind == BehaviourKind::kFollow && mover.description.lag == Micros::zero());
        if (atOnce) {
            tick(mover, memory);
        }
        mover.next += mover.description.every;
    }
}

void VariableBehaviours::tick(Mover& mover, Memory& memory) const {
    BehaviourDescription const& description = mover.description;
    adopt(mover, memory);
    switch (description.kind) {
    case BehaviourKind::kConstant:
        writeValue(memory, mover.place, mover.initial, order_);
        return;
    case BehaviourKind::kCounter:
        return put(mover, memory, counted(mover.exact, description.step, mover.low, mover.high));
    case BehaviourKind::kRamp:
        return put(mover, memory, mover.low + (mover.high - mover.low) * phaseOf(mover));
    case BehaviourKind::kSine: {
        double const swing = std::sin(2 * std::numbers::pi * phaseOf(mover));
        return put(mover, memory, (mover.low + mover.high) / 2 + (mover.high - mover.low) / 2 * swing);
    }
    case BehaviourKind::kRandomWalk: {
        // Uses the generator's numbers directly: those of a distribution differ between libraries.
        double const part = static_cast<double>(mover.generator()) / kGeneratorMost;
        double const next = mover.exact + description.step * (2 * part - 1);
        return put(mover, memory, reflected(next, mover.low, mover.high));
    }
    case BehaviourKind::kFollow:
        return put(mover, memory, target(mover, memory));
    }
}

/// Continues from the value in memory if it was written by another side.
void VariableBehaviours::adopt(Mover& mover, Memory const& memory) const {
    Value const current = readValue(memory, mover.place, order_);
    if (mover.put != current) {
        double const number = numberOf(current);
        mover.exact = std::isfinite(number) ? number : mover.low;
    }
}

void VariableBehaviours::put(Mover& mover, Memory& memory, double value) const {
    mover.exact = value;
    writeValue(memory, mover.place, fitted(value, mover.place.kind), order_);
    mover.put = readValue(memory, mover.place, order_);
}

double VariableBehaviours::target(Mover const& mover, Memory const& memory) const {
    BehaviourDescription const& description = mover.description;
    double const source = numberOf(readValue(memory, mover.source, order_));
    double const goal = source * description.factor + description.offset;
    double const safeGoal = std::isfinite(goal) ? std::clamp(goal, mover.low, mover.high) : mover.low;
    if (description.lag == Micros::zero()) {
        return safeGoal;
    }
    double const share =
        1 - std::exp(-static_cast<double>(description.every.count()) / static_cast<double>(description.lag.count()));
    return mover.exact + (safeGoal - mover.exact) * share;
}

/// The part of the period that has passed at the mover's tick, 0 to 1.
double VariableBehaviours::phaseOf(Mover const& mover) const {
    auto const over = static_cast<double>((mover.next - *start_).count());
    double const periods = over / static_cast<double>(mover.description.period.count()) + mover.description.phase;
    return periods - std::floor(periods);
}

} // namespace plc
