#pragma once

#include "host/ports/LineSettings.h"
#include "host/serial/FrameWriter.h"
#include "interfaces/HostServices.h"

#include <memory>
#include <string>

namespace host {

class Clock;
struct PortReport;

/**
 * A serial port of this machine. For one thread at a time.
 *
 * A port that fails (adapter pulled out, other side of a pseudo-terminal closed) releases its device at once, so that
 * the adapter can come back under the same name, and returns faults until it is opened again. The report says why it
 * could not be opened or failed.
 */
class SerialPort final : public ISerialPort {
public:
    /**
     * @p report and @p clock must outlive the port.
     *
     * @param interruption a descriptor of the caller that becomes readable when all waiting must end: the port then
     *        fails, and every operation returns a fault; -1 for none
     */
    SerialPort(std::string path, PortReport& report, Clock& clock, int interruption = -1);
    ~SerialPort() override;
    SerialPort(SerialPort const&) = delete;
    SerialPort& operator=(SerialPort const&) = delete;

    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override;
    [[nodiscard]] int GetImpVersion() const override;

    /** See ISerialPort; also takes 7 data bits. The kernel switches the direction of an RS-485 line. */
    int Open(int baud, int parity, int dataBits, int stopBits, int rs485) override;
    void Close() override;

    /** Returns the number of bytes that it moved to @p buffer, at most kPurgeRoom; 0 also when the port failed. */
    int Purge(unsigned char* buffer, int reserved1, int reserved2) override;

    /** Returns after the last bit was sent: @p length, or 0 when the port failed or no longer accepts bytes. */
    int Write(unsigned char const* bytes, int length, int reserved) override;

    /**
     * See ISerialPort. Times below 0 count as 0. A fault in the middle of a frame leaves its first bytes in @p buffer.
     */
    int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
             int reserved) override;

    [[nodiscard]] std::string const& path() const { return path_; }

    static constexpr int kPurgeRoom = 1460;

private:
    struct Session;

    base::Result<std::unique_ptr<Session>> openSession(LineSettings const& settings, bool rs485);
    bool open(int baud, int parity, int dataBits, int stopBits, bool rs485);
    int purge(std::span<unsigned char> room);
    int write(std::span<unsigned char const> bytes);
    bool read(std::span<unsigned char> room, int firstByteMs, int interCharMs, int& count);
    void die();

    std::string path_;
    PortReport& report_;
    Clock& clock_;
    int interruption_;
    std::unique_ptr<Session> session_; ///< null while closed
};

} // namespace host
