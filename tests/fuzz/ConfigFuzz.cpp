#include "tests/fuzz/FuzzedDriver.h"
#include "tests/fuzz/MemoryBudget.h"
#include "tests/support/ConfigText.h"

#include <cstring>
#include <vector>

/**
 * Configuration strings and tag addresses as a host passes them.
 *
 * The first byte says whether a good configuration comes first, the second how many of the following zero-terminated
 * texts are further configurations. The rest are tag addresses.
 */
namespace {

using namespace velktest;

constexpr std::size_t kMostMemoryForAByte = 1'000; ///< eight characters can declare a node, which takes about 300 bytes
constexpr std::size_t kOtherMemory = 1'000'000;
constexpr int kMostConverted = 100'000;

class DeadPort final : public ISerialPort {
public:
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "DeadPort"; }
    int GetImpVersion() const override { return 1; }
    int Open(int /*baud*/, int parity, int dataBits, int /*stopBits*/, int rs485) override {
        Require(parity >= 0 && parity <= 3 && dataBits == 8 && (rs485 == 0 || rs485 == 1), "the line is set up right");
        return 1;
    }
    void Close() override {}
    int Purge(unsigned char* /*buffer*/, int /*reserved1*/, int /*reserved2*/) override { return 0; }
    int Write(unsigned char const* /*bytes*/, int length, int /*reserved*/) override {
        Require(length >= 17 && length <= 1460 + 19, "a first block goes out");
        return length;
    }
    int Read(unsigned char* /*buffer*/, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
             int /*reserved*/) override {
        Require(maximum == 1460 && interCharTimeoutMs == 20, "a frame is asked for");
        Require(firstByteTimeoutMs >= 100 && firstByteTimeoutMs <= 20'000, "the time-out is in its range");
        *count = 0;
        return 1;
    }
};

/** Converts in one direction and, if that succeeds, back: the buffers are exactly as long as the tag says. */
void Convert(ITag const& tag) {
    ExactBuffer const fromPlc(static_cast<std::size_t>(tag.PackedLen()), 0x12);
    ExactBuffer value(static_cast<std::size_t>(tag.GetVarLength()));
    ExactBuffer toPlc(static_cast<std::size_t>(tag.PackedLen()));
    if (tag.ConvertVariable(fromPlc.Data(), value.Data(), false)) {
        tag.ConvertVariable(value.Data(), toPlc.Data(), true);
    }
}

void Exchange(FuzzedDriver const& driver, ITag* tag) {
    ExactBuffer value(static_cast<std::size_t>(tag->GetVarLength()), 0);
    idal_error_t status = 77;
    if (driver->ReadDatagramWithStatus(&tag, 1, value.Data(), &status)) {
        // There is no PLC, so only calls that need no answer can succeed.
        Require(std::strstr(tag->GetVarName(), "PROJ_ID") != nullptr, "nothing is read from a dead line");
    }
    driver->WriteDatagramWithStatus(&tag, 1, value.Data(), &status);
    driver->Read(tag, value.Data());
    driver->Write(tag, value.Data());
}

void UseTag(FuzzedDriver const& driver, std::string const& address) {
    ITag* tag = driver->CreateTag(address.c_str());
    if (tag == nullptr) {
        Require(std::strncmp(driver->GetLastErrorString(), "Tag URI error: ", 15) == 0, "a refusal says why");
        return;
    }
    Require(tag->GetVarName() == address, "a tag keeps its address");
    Require(tag->GetBitIndex() >= 0 && tag->GetBitIndex() <= 7, "a bit is in a byte");
    Require(tag->GetVarLength() >= 0 && tag->PackedLen() >= 0, "a length is not negative");
    tag->GetByteOffset();
    driver->IsBefore(tag, tag);
    driver->IsAdjacent(tag, tag);
    driver->CanAddToDatagram(&tag, 1, tag);
    driver->CanAddToWriteDatagram(&tag, 1, tag);
    if (tag->GetVarLength() <= kMostConverted) {
        Convert(*tag);
        Exchange(driver, tag);
    }
    ITag const* const copy = tag->Clone();
    driver->FreeTag(tag);
    Require(copy != nullptr && copy->GetVarName() == address, "a copy lives on");
    delete copy;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzInput input(data, size);
    MemoryBudget const budget(size * kMostMemoryForAByte + kOtherMemory);
    DeadPort port;
    FuzzedDriver const driver(port);
    bool const good = input.Flag();
    bool configured = good;
    if (good) {
        Require(driver->Config(ConfigText().Node(2, "model", "Motorola").Build().c_str()), "a good one is taken");
    }
    for (unsigned more = input.Below(3); more != 0; --more) {
        configured = driver->Config(input.Text('\0').c_str());
    }
    if (configured) { // after a failure a host does not start
        Require(driver->Start(), "the driver starts");
    }
    while (!input.AtEnd()) {
        UseTag(driver, input.Text('\0'));
    }
    return 0;
}
