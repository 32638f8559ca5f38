#include "tests/fuzz/HostCalls.h"
#include "tests/fuzz/MemoryBudget.h"
#include "tests/support/Framing.h"

#include <climits>

#include <algorithm>
#include <array>

/**
 * A line whose bytes come from the input, and a port that may report them wrongly. Sometimes it sends the expected
 * acknowledge or block, so that more than the first message of an exchange is reached.
 */
namespace {

using namespace velktest;

constexpr std::size_t kMostMemory = 12'000'000;

class FuzzedLine final : public ISerialPort {
public:
    explicit FuzzedLine(FuzzInput& input) : input_(input) {}

    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "FuzzedLine"; }
    int GetImpVersion() const override { return 1; }
    int Open(int /*baud*/, int /*parity*/, int /*dataBits*/, int /*stopBits*/, int /*rs485*/) override { return 1; }
    void Close() override {}

    int Purge(unsigned char* buffer, int /*reserved1*/, int /*reserved2*/) override {
        std::fill_n(buffer, 1460, static_cast<unsigned char>(0xAA));
        return input_.Byte() == 0xFF ? 1 : 0;
    }

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        AllocationPause const pause;
        Bytes message(bytes, bytes + length);
        Require(message.size() >= 6, "a message has a header");
        framing_.routing.assign(message.front() == 0x4F ? 19 : 0, 0);
        message.erase(message.begin(), message.begin() + static_cast<std::ptrdiff_t>(framing_.routing.size()));
        bool const isBlock = message.front() == 0xAA;
        if (isBlock && message[4] + message[5] == 1) {
            framing_.bigEndian = message[5] == 1;
        }
        number_ = framing_.bigEndian ? message[4] * 256U + message[5] : message[5] * 256U + message[4];
        awaitsBlock_ = !isBlock && !lastBlock_;
        awaitsEnd_ = !isBlock && lastBlock_;
        lastBlock_ = false;
        return length;
    }

    int Read(unsigned char* buffer, int maximum, int /*firstByteTimeoutMs*/, int /*interCharTimeoutMs*/, int* count,
             int /*reserved*/) override {
        static constexpr std::array kLies{-1, INT_MIN, INT_MAX, 1461, 1480, 75'001, 1460, 65'536};
        AllocationPause const pause;
        Bytes message;
        bool lies = false;
        bool faulty = false;
        switch (input_.AtEnd() ? 13U : input_.Below(16)) {
        case 0:
        case 1:
        case 2:
        case 3:
        case 4:
        case 5:
        case 6:
        case 7:
            message = Fitting();
            break;
        case 8:
        case 9:
            message = input_.Take(input_.Word() % 1500);
            break;
        case 10:
            message = Fitting() + input_.Take(input_.Byte());
            break;
        case 11:
            message = Fitting();
            message[input_.Byte() % message.size()] = static_cast<unsigned char>(input_.Byte());
            break;
        case 12:
            message = Bytes(2'000, static_cast<unsigned char>(input_.Byte()));
            break;
        case 13:
            break;
        case 14:
            faulty = true;
            break;
        default:
            lies = true;
            break;
        }
        message.resize(std::min(message.size(), static_cast<std::size_t>(maximum)));
        std::copy(message.begin(), message.end(), buffer);
        *count = lies ? input_.Pick(kLies) : static_cast<int>(message.size());
        return faulty ? 0 : static_cast<int>(input_.Byte() % 20) + 1;
    }

private:
    /** The message that the driver expects, with the input's payload. */
    Bytes Fitting() {
        if (awaitsEnd_) {
            return framing_.Ack(0);
        }
        if (!awaitsBlock_) {
            return framing_.Ack(number_);
        }
        unsigned const shape = input_.Byte();
        lastBlock_ = shape % 4 != 3;
        Bytes const status = shape % 8 < 2 ? framing_.Word(1000) : shape % 8 < 5 ? framing_.Word(0) : Bytes();
        return framing_.Block(number_ + 1, lastBlock_, status + input_.Take(shape / 8));
    }

    FuzzInput& input_;
    Framing framing_;
    unsigned number_ = 0;
    bool awaitsBlock_ = false;
    bool awaitsEnd_ = false;
    bool lastBlock_ = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzInput input(data, size);
    MemoryBudget const budget(kMostMemory);
    FuzzedLine line(input);
    FuzzedDriver driver(line);
    HostCalls host(driver, input);
    host.Run();
    return 0;
}
