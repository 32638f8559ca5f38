#pragma once

#include "driver/link/LinkBuffers.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>

class ISerialFactory;
class ISerialPort;

namespace _VELK {

class ErrorSink;
struct CommonParams;
struct NodeParams;

/**
 * The serial line: the host's port, its settings, and the buffers of the one exchange that is in flight at a time.
 *
 * Remembers nothing between exchanges: block numbers start at 1 in each.
 */
class SerialLink {
public:
    /**
     * @param factory creates the port; null when the host has none
     * @param params parameters of the line; their framing at the start of an exchange applies
     */
    SerialLink(ISerialFactory* factory, CommonParams const& params, ErrorSink& errors);
    SerialLink(SerialLink const&) = delete;
    SerialLink& operator=(SerialLink const&) = delete;
    SerialLink(SerialLink&&) = delete;
    SerialLink& operator=(SerialLink&&) = delete;
    ~SerialLink();

    /** Takes the settings for the next open() from the parameters. False when the parity is unknown. */
    bool takeSettings();

    bool open(); ///< true at once when the port is open already
    void close();
    [[nodiscard]] bool isOpen() const { return open_; }

    /** Returns isOpen(); when false, sets the last error. */
    bool requireOpen() const;

    /**
     * Empties the open port's receive side. Limited, so that a port that never runs empty does not block the host for
     * ever.
     */
    void drain();

    /** The buffer for a request before its exchange. */
    std::span<unsigned char, kDataLength> txData() { return buffers_.txData; }
    [[nodiscard]] std::span<unsigned char const, kDataLength> rxData() const { return buffers_.rxData; }

    /**
     * Exchanges the first @p requestLength bytes of txData() for a response in rxData(). One attempt.
     *
     * @param responseLength written on success only
     * @return the port's result of the last read of the response, which is not 0; 0 on failure
     */
    unsigned int exchange(int requestLength, int* responseLength, NodeParams const* node, bool bigEndian);

    /** The same in the node's own byte order; returns the response, which is valid until the next exchange. */
    std::optional<std::span<unsigned char const>> exchange(int requestLength, NodeParams const& node);

private:
    void releasePort();

    ISerialFactory* factory_;
    CommonParams const& params_;
    ErrorSink& errors_;
    ISerialPort* port_ = nullptr; // not null while open
    bool open_ = false;

    std::string portName_;
    int baudRate_ = 0;
    int dataBits_ = 8;
    int stopBits_ = 0;
    int parity_ = 0;
    int rs485_ = 0;

    LinkBuffers buffers_;
};

} // namespace _VELK
