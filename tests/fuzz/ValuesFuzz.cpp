#include "protlib/text/IpAddress.h"
#include "protlib/text/TextUtils.h"
#include "protlib/types/BitPacking.h"
#include "protlib/types/ValueConversions.h"
#include "tests/fuzz/FuzzedDriver.h"
#include "tests/support/ConfigText.h"

#include <array>
#include <limits>

/**
 * Converts values of every type, byte order and list of conversions: a value from the PLC that can be converted for the
 * host is converted back to the same bytes.
 *
 * The input: type, number of elements, area, bit, conversions, and the value as the PLC sends it.
 */
namespace {

using namespace velktest;

struct Type {
    char const* name;
    bool isArray;
    bool isBit;
};

constexpr std::array<Type, 20> kTypes{{
    {"boolean", false, true},        {"byte", false, false},         {"short", false, false},
    {"int", false, false},           {"unsignedByte", false, false}, {"unsignedShort", false, false},
    {"unsignedInt", false, false},   {"float", false, false},        {"double", false, false},
    {"string-", true, false},        {"boolean-", true, true},       {"byte-", true, false},
    {"short-", true, false},         {"int-", true, false},          {"unsignedByte-", true, false},
    {"unsignedShort-", true, false}, {"unsignedInt-", true, false},  {"float-", true, false},
    {"double-", true, false},        {"boolean", false, true},
}};
constexpr std::array kConversions{"swap2", "swap4", "swap8", "swapnibble", "bcd", "neg", "inv", "swap3"};
constexpr std::array kAreas{"M", "I", "Q", "3", "4", "5"};
constexpr std::array kBitAreas{"MB", "IB", "QB"};

class NoPort final : public ISerialPort {
public:
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "NoPort"; }
    int GetImpVersion() const override { return 1; }
    int Open(int /*baud*/, int /*parity*/, int /*dataBits*/, int /*stopBits*/, int /*rs485*/) override { return 0; }
    void Close() override {}
    int Purge(unsigned char* /*buffer*/, int /*reserved1*/, int /*reserved2*/) override { return 0; }
    int Write(unsigned char const* /*bytes*/, int /*length*/, int /*reserved*/) override { return 0; }
    int Read(unsigned char* /*buffer*/, int /*maximum*/, int /*firstByteTimeoutMs*/, int /*interCharTimeoutMs*/,
             int* /*count*/, int /*reserved*/) override {
        return 0;
    }
};

/** Whether the bits of the tag, or all bytes of another tag, are the same. */
bool AreSame(ITag const& tag, bool isBit, ExactBuffer const& one, ExactBuffer const& other) {
    if (!isBit) {
        return one.Copy() == other.Copy();
    }
    for (int i = 0; i < tag.GetVarLength(); ++i) {
        auto const bit = static_cast<unsigned>(tag.GetBitIndex() + i);
        unsigned const difference = static_cast<unsigned>(one.Data()[bit / 8]) ^ other.Data()[bit / 8];
        if ((difference >> bit % 8 & 1U) != 0) {
            return false;
        }
    }
    return true;
}

void ThereAndBack(FuzzedDriver const& driver, FuzzInput& input) {
    Type const& type = kTypes[input.Below(kTypes.size())];
    std::string address = input.Flag() ? "2?A?" : "1?A?";
    bool const bitArea = type.isBit && !type.isArray && input.Flag();
    address += bitArea ? input.Pick(kBitAreas) : input.Pick(kAreas);
    address += "?" + std::to_string(input.Byte());
    if (type.isBit && !bitArea) {
        address += "." + std::to_string(input.Below(8));
    }
    address.append("?").append(type.name);
    if (type.isArray) {
        address += std::to_string(input.Byte());
    }
    if (unsigned conversions = input.Below(4); conversions != 0) {
        address += "(";
        for (; conversions != 0; --conversions) {
            address.append(input.Pick(kConversions)).append(conversions > 1 ? "," : ")");
        }
    }
    ITag* const tag = driver->CreateTag(address.c_str());
    Require(tag != nullptr, "the address is good");
    auto const packedLength = static_cast<std::size_t>(tag->PackedLen());
    Bytes bytes = input.Take(packedLength);
    bytes.resize(packedLength, 0x80);
    ExactBuffer const fromPlc(bytes);
    ExactBuffer value(static_cast<std::size_t>(tag->GetVarLength()));
    if (tag->ConvertVariable(fromPlc.Data(), value.Data(), false)) {
        ExactBuffer toPlc(packedLength, 0);
        bool const back = tag->ConvertVariable(value.Data(), toPlc.Data(), true);
        // Packed decimal of eight bytes or more cannot be converted back.
        bool const oneWay = address.find("bcd") != std::string::npos && !back;
        Require(oneWay || (back && AreSame(*tag, type.isBit, fromPlc, toPlc)), "what came from the PLC goes back");
    } else {
        Require(value.Copy() == Bytes(value.Size(), 0xCC), "what cannot be converted is not delivered");
    }
    // The host's value may be anything, too.
    ExactBuffer toPlc(packedLength, 0);
    ExactBuffer const anything(input.Take(value.Size()) + Bytes(value.Size(), 0xFF));
    tag->ConvertVariable(anything.Data(), toPlc.Data(), true);
    driver->FreeTag(tag);
}

/** Calls the underlying functions with arguments that no tag passes. */
void Underneath(FuzzInput& input) {
    int const number = static_cast<int>(input.Word() << 16U | input.Word());
    std::array<char, 40> digits{};
    auto const type = static_cast<ICU_Type>(input.Below(30));
    Bytes bytes = input.Take(input.Byte());
    ValueConversionsN::Negate(bytes, type, number);
    ValueConversionsN::InvertBytes(bytes, type);
    ValueConversionsN::ReverseGroups(bytes, input.Byte());
    ValueConversionsN::PackedDecimalToBinary(bytes, number % 20);
    ValueConversionsN::BinaryToPackedDecimal(bytes, number % 20);
    ProtUtilsN::GetLenOfBits(number, static_cast<int>(input.Word()));
    unsigned int ip = 0;
    parseIpAddress(input.Text('\n').c_str(), ip);
    std::string const text = itoa(number, digits.data(), 10);
    Require(ProtUtilsN::parseInteger(text.c_str(), 10) == std::abs(std::int64_t{number}),
            "a number is read as it was written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzInput input(data, size);
    NoPort port;
    FuzzedDriver const driver(port);
    Require(driver->Config(ConfigText().Node(2, "model", "Motorola").Build().c_str()), "the configuration is good");
    while (!input.AtEnd()) {
        if (input.Below(4) == 3) {
            Underneath(input);
        } else {
            ThereAndBack(driver, input);
        }
    }
    return 0;
}
