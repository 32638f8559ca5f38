#include "tools/velk/line/UploadLine.h"

#include "tools/velk/context/Choices.h"
#include "tools/velk/terminal/Terminal.h"
#include "tools/velk/text/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace velk {
namespace {

constexpr double kBytesPerKilobyte = 1000;

std::string bar(double part) {
    constexpr int kWidth = 20;
    int const filled = static_cast<int>(part * kWidth);
    return "[" + std::string(static_cast<std::size_t>(filled), '#') +
           std::string(static_cast<std::size_t>(kWidth - filled), '.') + "]";
}

/** The bar with the remaining time, estimated from the earlier file; the new one may be longer. */
std::string estimate(tools::Upload const& upload, std::uint64_t expectedBytes) {
    double const part = std::min(1.0, static_cast<double>(upload.bytes) / static_cast<double>(expectedBytes));
    double const left = static_cast<double>(expectedBytes) - static_cast<double>(upload.bytes);
    std::string const time =
        upload.rate() > 0 && left > 0 ? fmt::format(", about {:.0f} s left", left / upload.rate()) : std::string();
    return fmt::format(" {} {:.0f} %{}", bar(part), part * 100, time);
}

} // namespace

std::size_t routingHeaderLength(host::DriverConfig const& config) {
    constexpr std::size_t kRoutingHeader = 19;
    return framingWord(config.protType) == "routed" ? kRoutingHeader : 0;
}

std::string uploadText(tools::Upload const& upload, std::optional<std::uint64_t> expectedBytes) {
    bool const known = expectedBytes && *expectedBytes > 0 && !upload.done;
    return fmt::format("{} the symbol file: {}, {}, {:.1f} kB/s{}", upload.done ? "fetched" : "fetching",
                       counted(upload.bytes, "byte", "bytes"), counted(upload.pieces, "piece", "pieces"),
                       upload.rate() / kBytesPerKilobyte, known ? estimate(upload, *expectedBytes) : std::string());
}

UploadLine::UploadLine(Settings const& settings, Terminal& terminal, UploadStyle style)
    : terminal_(terminal), style_(std::move(style)),
      progress_(routingHeaderLength(settings.config), [this](tools::Upload const& upload) { show(upload); }) {}

void UploadLine::show(tools::Upload const& upload) {
    std::string const text = uploadText(upload, expected_);
    if (!upload.done) {
        terminal_.status(style_.label + text);
    } else if (style_.vanishes) {
        terminal_.status("");
    } else {
        terminal_.note(text);
    }
}

} // namespace velk
