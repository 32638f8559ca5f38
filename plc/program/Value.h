#pragma once

#include <concepts>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

namespace plc {

/// A value of a variable as given in a test or a description; the variable's type decides its form in memory.
class Value {
public:
    using Content = std::variant<bool, std::int64_t, std::uint64_t, double, std::string>;

    Value(bool value) : content_(value) {}
    template <std::signed_integral T>
    Value(T value) : content_(static_cast<std::int64_t>(value)) {}
    template <std::unsigned_integral T>
    Value(T value) : content_(static_cast<std::uint64_t>(value)) {}
    template <std::floating_point T>
    Value(T value) : content_(static_cast<double>(value)) {}
    Value(char const* value) : content_(std::string(value)) {}
    Value(std::string_view value) : content_(std::string(value)) {}
    Value(std::string value) : content_(std::move(value)) {}

    [[nodiscard]] Content const& content() const { return content_; }
    friend bool operator==(Value const&, Value const&) = default;

private:
    Content content_;
};

} // namespace plc
