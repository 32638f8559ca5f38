#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace base {

/** Code of a failure that the host found itself; the module's own codes are 1, 0, -1, -3, -4, -6 and -9. */
inline constexpr int kHostFailure = -100;

/** Why something did not work: a code, and one sentence in plain English without a full stop. */
struct Failure {
    int code = kHostFailure;
    std::string text;
};

/** A failure that the host found itself. */
inline Failure hostFailure(std::string text) {
    return {kHostFailure, std::move(text)};
}

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
