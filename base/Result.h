#pragma once

#include "base/FailureKind.h"

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace base {

/** Why something did not work. */
struct Failure {
    FailureKind kind = FailureKind::Internal;
    std::string text;                ///< one sentence in plain English without a full stop: to be shown, not searched
    std::optional<int> driverCode{}; ///< the driver's error code (interfaces/ErrorCodes.h), if the driver reported the
                                     ///< failure

    /** The same failure with another text. */
    [[nodiscard]] Failure withText(std::string words) const { return {kind, std::move(words), driverCode}; }
};

/** Either a value or the reason why there is none. */
template <typename Value>
class [[nodiscard]] Result {
public:
    Result(Value value) : content_(std::move(value)) {}
    Result(Failure failure) : content_(std::move(failure)) {}

    [[nodiscard]] bool ok() const { return std::holds_alternative<Value>(content_); }

    /** The value. Only when ok(). */
    Value& value() { return std::get<Value>(content_); }
    [[nodiscard]] Value const& value() const { return std::get<Value>(content_); }

    /** The reason. Only when not ok(). */
    [[nodiscard]] Failure const& failure() const { return std::get<Failure>(content_); }

private:
    std::variant<Value, Failure> content_;
};

/** Success, or the reason why not. */
class [[nodiscard]] Outcome {
public:
    Outcome() = default;
    Outcome(Failure failure) : failure_(std::move(failure)) {}

    [[nodiscard]] bool ok() const { return !failure_.has_value(); }

    /** The reason. Only when not ok(). */
    [[nodiscard]] Failure const& failure() const { return failure_.value(); }

private:
    std::optional<Failure> failure_;
};

} // namespace base
