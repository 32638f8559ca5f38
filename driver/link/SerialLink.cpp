#include "driver/link/SerialLink.h"

#include "driver/config/CommonParams.h"
#include "driver/errors/ErrorSink.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/link/LinkExchange.h"
#include "interfaces/ErrorCodes.h"
#include "interfaces/HostServices.h"
#include "protlib/safety/NoThrow.h"

#include <array>
#include <utility>

namespace _VELK {

namespace {

constexpr int kMaxPurges = 1'000;

/** The host's number of a parity; nothing for an unknown parity. "space" is deliberately unknown. */
std::optional<int> parityNumber(std::string const& parity) {
    constexpr std::array<char const*, 4> kParities{"none", "even", "odd", "mark"};
    for (std::size_t number = 0; number < kParities.size(); ++number) {
        if (parity == kParities[number]) {
            return static_cast<int>(number);
        }
    }
    return std::nullopt;
}

} // namespace

SerialLink::SerialLink(ISerialFactory* factory, CommonParams const& params, ErrorSink& errors)
    : factory_(factory), params_(params), errors_(errors) {}

SerialLink::~SerialLink() {
    ProtUtilsN::contain([this] { releasePort(); });
}

bool SerialLink::takeSettings() {
    portName_ = params_.uart;
    baudRate_ = params_.baudrate;
    stopBits_ = params_.stopbits;
    dataBits_ = 8;
    std::optional<int> const parity = parityNumber(params_.parity);
    if (!parity) {
        return errors_.fail(kErrorRequest, "Parser: parameter 'parity' has invalid value");
    }
    parity_ = *parity;
    rs485_ = params_.mode == "RS-485" ? 1 : 0;
    return true;
}

bool SerialLink::open() {
    if (open_) {
        return true;
    }
    releasePort(); // a port whose opening was interrupted by an exception
    port_ = factory_ != nullptr ? factory_->CreatePort(portName_.c_str()) : nullptr;
    if (port_ != nullptr) {
        open_ = port_->Open(baudRate_, parity_, dataBits_, stopBits_, rs485_) != 0;
        if (open_) {
            return true;
        }
        releasePort();
    }
    return errors_.fail(kErrorRequest, "Can't open serial port");
}

void SerialLink::close() {
    open_ = false;
    releasePort();
}

void SerialLink::releasePort() {
    if (ISerialPort* const port = std::exchange(port_, nullptr); port != nullptr) {
        factory_->ReleasePort(port);
    }
}

bool SerialLink::requireOpen() const {
    return open_ || errors_.fail(kErrorState, kNotStarted);
}

void SerialLink::drain() {
    int left = kMaxPurges;
    while (left > 0 && port_->Purge(buffers_.rxFrame.data(), 0, 0) != 0) {
        --left;
    }
}

unsigned int SerialLink::exchange(int requestLength, int* responseLength, NodeParams const* node, bool bigEndian) {
    if (!requireOpen()) {
        return 0;
    }
    if (node == nullptr) {
        errors_.fail(kErrorRequest, kInvalidArgument);
        return 0;
    }
    LinkExchange exchange(*port_, buffers_, *node, byteOrderOf(bigEndian), errors_);
    return exchange.run(params_.protType, requestLength, responseLength);
}

std::optional<std::span<unsigned char const>> SerialLink::exchange(int requestLength, NodeParams const& node) {
    int responseLength = 0;
    if (exchange(requestLength, &responseLength, &node, node.isBigEndian()) == 0) {
        return std::nullopt;
    }
    return std::span(buffers_.rxData).first(static_cast<std::size_t>(responseLength));
}

} // namespace _VELK
