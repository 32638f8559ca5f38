#pragma once

#include "interfaces/HostServices.h"

#include <cstdint>
#include <span>

namespace host {

class Clock;
class PortObserver;
struct PortReport;

/**
 * Reports all traffic of another port to an observer, without changing it.
 *
 * The other port's Purge() must return the number of bytes that it put into its buffer, as SerialPort's does.
 */
class ObservedPort final : public ISerialPort {
public:
    /**
     * All arguments must outlive this object.
     *
     * @param report the other port's, for exact times of received bytes and for the reason of a fault; null when it has
     *        none: then the times are those of the call and the return of Read()
     */
    ObservedPort(ISerialPort& port, PortObserver& observer, Clock& clock, PortReport const* report = nullptr);

    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override;
    [[nodiscard]] int GetImpVersion() const override;
    int Open(int baud, int parity, int dataBits, int stopBits, int rs485) override;
    void Close() override;
    int Purge(unsigned char* buffer, int reserved1, int reserved2) override;
    int Write(unsigned char const* bytes, int length, int reserved) override;
    int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
             int reserved) override;

private:
    template <typename Report>
    void tell(Report&& report) noexcept;
    void tellReceived(std::span<unsigned char const> bytes, std::int64_t began, std::int64_t ended) noexcept;
    void tellFault(std::int64_t at) noexcept;

    ISerialPort& port_;
    PortObserver& observer_;
    Clock& clock_;
    PortReport const* report_;
};

} // namespace host
