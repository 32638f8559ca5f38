#include "tests/fuzz/FuzzedDriver.h"
#include "tests/fuzz/MemoryBudget.h"
#include "tests/support/ConfigText.h"
#include "tests/support/Framing.h"
#include "tests/support/SymbolFileBytes.h"

#include <cstring>
#include <utility>

/**
 * Lines of the diagnostic console, with a PLC that answers. Of each line the first byte is the size of the reply, the
 * rest, up to a line feed, the command.
 */
namespace {

using namespace velktest;

constexpr std::size_t kMostMemory = 80'000'000; ///< values of up to 16 MiB are tried, in a few copies

/** Answers each request in one block, as far as one block can hold it: every value is 0x81. */
class AnsweringLine final : public ISerialPort {
public:
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "AnsweringLine"; }
    int GetImpVersion() const override { return 1; }
    int Open(int /*baud*/, int /*parity*/, int /*dataBits*/, int /*stopBits*/, int /*rs485*/) override { return 1; }
    void Close() override {}
    int Purge(unsigned char* /*buffer*/, int /*reserved1*/, int /*reserved2*/) override { return 0; }

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        Require(length >= 6, "a message has a header");
        if (bytes[0] == 0xAA) {
            if (bytes[4] == 1 && bytes[5] == 0) {
                request_.clear();
            }
            request_.insert(request_.end(), bytes + 8, bytes + length);
            pending_ = framing_.Ack(bytes[4] + bytes[5] * 256U);
            answered_ = false;
        } else {
            pending_ = answered_ ? framing_.Ack(0) : framing_.Block(1, true, Answer());
            answered_ = true;
        }
        return length;
    }

    int Read(unsigned char* buffer, int maximum, int /*firstByteTimeoutMs*/, int /*interCharTimeoutMs*/, int* count,
             int /*reserved*/) override {
        Bytes message = std::exchange(pending_, {});
        message.resize(std::min(message.size(), static_cast<std::size_t>(maximum)));
        std::copy(message.begin(), message.end(), buffer);
        *count = static_cast<int>(message.size());
        return 1;
    }

private:
    Bytes Answer() const {
        switch (request_[0]) {
        case 0x01:
            return Hex("E8 03");
        case 0x2E:
            return Hex("00 00 00 00 00 00 01") + Bytes(std::max(request_[12] + request_[13] * 256U, 1U), 0x81);
        default:
            return Hex("00 00");
        }
    }

    Framing framing_;
    Bytes request_;
    Bytes pending_;
    bool answered_ = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzInput input(data, size);
    MemoryBudget const budget(kMostMemory);
    AnsweringLine line;
    FuzzedDriver const driver(line);
    FuzzedDriver::Store(1, SymbolFileBytes(7).Variable("A", 0, 16).Variable("FLAG", 0, 13).Build());
    Require(driver->Config(ConfigText().Build().c_str()) && driver->Start(), "the driver starts");
    while (!input.AtEnd()) {
        ExactBuffer reply(input.Byte());
        std::string const command = input.Text('\n');
        driver->DoCommand(command.c_str(), reinterpret_cast<char*>(reply.Data()), static_cast<int>(reply.Size()));
    }
    return 0;
}
