#pragma once

#include "interfaces/HostServices.h"
#include "tests/host/FakeClock.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <deque>
#include <optional>
#include <vector>

namespace hosttest {

/** A serial port without hardware: returns what a test put in, one frame per read; an empty optional is a fault. */
class MemoryPort final : public ISerialPort {
public:
    using Bytes = std::vector<unsigned char>;

    explicit MemoryPort(FakeClock& clock) : clock_(clock) {}

    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "MemoryPort"; }
    int GetImpVersion() const override { return 1; }

    int Open(int baud, int parity, int dataBits, int stopBits, int rs485) override {
        opened = {baud, parity, dataBits, stopBits, rs485};
        return openResult;
    }
    void Close() override { ++closed; }

    int Purge(unsigned char* buffer, int /*reserved1*/, int /*reserved2*/) override {
        std::copy(stray.begin(), stray.end(), buffer);
        int const removed = static_cast<int>(stray.size());
        stray.clear();
        return removed;
    }

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        clock_.now += 1000;
        written.emplace_back(bytes, bytes + length);
        return writeWorks ? length : 0;
    }

    int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int /*interCharTimeoutMs*/, int* count,
             int /*reserved*/) override {
        clock_.now += 5000;
        *count = 0;
        if (frames.empty()) {
            clock_.now += std::int64_t{firstByteTimeoutMs} * 1000;
            return 1;
        }
        auto const frame = frames.front();
        frames.pop_front();
        if (!frame) {
            return 0;
        }
        *count = std::min(maximum, static_cast<int>(frame->size()));
        std::copy_n(frame->begin(), *count, buffer);
        return 1;
    }

    std::deque<std::optional<Bytes>> frames;
    std::vector<Bytes> written;
    Bytes stray;
    std::vector<int> opened;
    int openResult = 1;
    int closed = 0;
    bool writeWorks = true;

private:
    FakeClock& clock_;
};

} // namespace hosttest
