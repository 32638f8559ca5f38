#include "tools/velk/trace/PcapngTrace.h"

#include "plc/frames/ByteOrder.h"

namespace velk::trace {
namespace {

constexpr std::uint32_t kSectionHeader = 0x0A0D0D0A;
constexpr std::uint32_t kInterfaceDescription = 1;
constexpr std::uint32_t kEnhancedPacket = 6;

constexpr std::uint32_t kByteOrderMagic = 0x1A2B3C4D;
constexpr std::uint64_t kLengthNotKnown = UINT64_MAX;

// Options.
constexpr std::uint16_t kEndOfOptions = 0;
constexpr std::uint16_t kComment = 1;
constexpr std::uint16_t kPacketFlags = 2;
constexpr std::uint16_t kApplication = 4;
constexpr std::uint16_t kTimeResolution = 9;

constexpr char kMicroseconds = 6; ///< ten to the power of minus six
constexpr std::uint32_t kInbound = 1;
constexpr std::uint32_t kOutbound = 2;

constexpr std::size_t kAlignment = 4;

/** Builds a file, number by number. */
class Builder {
public:
    template <std::unsigned_integral T>
    Builder& number(T value) {
        plc::Bytes bytes;
        plc::appendOrdered(bytes, plc::ByteOrder::kLittle, value);
        return text({reinterpret_cast<char const*>(bytes.data()), bytes.size()});
    }

    Builder& text(std::string_view bytes) {
        content_ += bytes;
        return *this;
    }

    Builder& padded(std::string_view bytes) {
        text(bytes);
        content_.append((kAlignment - content_.size() % kAlignment) % kAlignment, '\0');
        return *this;
    }

    Builder& option(std::uint16_t code, std::string_view value) {
        return number(code).number(static_cast<std::uint16_t>(value.size())).padded(value);
    }

    Builder& endOfOptions() { return option(kEndOfOptions, ""); }

    [[nodiscard]] std::string const& content() const { return content_; }

private:
    std::string content_;
};

std::string block(std::uint32_t type, Builder const& body) {
    constexpr std::size_t kFrame = 12; // type, and the length at both ends
    auto const length = static_cast<std::uint32_t>(body.content().size() + kFrame);
    return Builder().number(type).number(length).text(body.content()).number(length).content();
}

std::string packet(plc::ByteView bytes, std::int64_t at, std::uint32_t direction, std::string_view comment) {
    auto const time = static_cast<std::uint64_t>(at);
    auto const size = static_cast<std::uint32_t>(bytes.size());
    Builder body;
    body.number(std::uint32_t{0}) // the one interface
        .number(static_cast<std::uint32_t>(time >> 32U))
        .number(static_cast<std::uint32_t>(time))
        .number(size)
        .number(size)
        .padded({reinterpret_cast<char const*>(bytes.data()), bytes.size()})
        .option(kPacketFlags, Builder().number(direction).content());
    if (!comment.empty()) {
        body.option(kComment, comment);
    }
    return block(kEnhancedPacket, body.endOfOptions());
}

} // namespace

std::string PcapngTrace::begin(TraceStart const& start) {
    constexpr std::uint32_t kNoLimit = 0;
    Builder section;
    section.number(kByteOrderMagic)
        .number(std::uint16_t{1}) // version 1.0
        .number(std::uint16_t{0})
        .number(kLengthNotKnown)
        .option(kApplication, start.program)
        .endOfOptions();
    Builder interface;
    interface.number(kLinkType)
        .number(std::uint16_t{0})
        .number(kNoLimit)
        .option(kTimeResolution, std::string(1, kMicroseconds))
        .endOfOptions();
    return block(kSectionHeader, section) + block(kInterfaceDescription, interface);
}

std::string PcapngTrace::frame(TracedFrame const& frame) {
    return packet(frame.bytes, frame.at, frame.way == Way::ToPlc ? kOutbound : kInbound, "");
}

std::string PcapngTrace::dropped(plc::ByteView bytes, std::int64_t at) {
    return packet(bytes, at, kInbound, "dropped: these bytes were not expected");
}

} // namespace velk::trace
