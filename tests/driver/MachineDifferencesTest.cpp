#include "tests/support/DriverTest.h"

#include <algorithm>
#include <array>
#include <cstddef>

/** What must not depend on the machine: the addresses of values in memory, and whether characters are signed. */
namespace {

using namespace velktest;

class MachineDifferencesTest : public DriverTest {
protected:
    void SetUp() override {
        DriverTest::SetUp();
        Store(1, SymbolFileBytes(7).Variable("A", 0, 16).Variable("GR\xD6SSE", 0, 17).Build());
        ConfigureAndStart(ConfigText().Set("model", "Motorola"));
    }

    /** The exchanges before a list: a login before the first list only. */
    Conversation Connect() {
        Conversation line = Motorola();
        line.LinkCheck();
        if (!loggedIn_) {
            line.Login();
            loggedIn_ = true;
        }
        return line;
    }

    /** Memory in which a value may start at each byte. */
    struct Memory {
        alignas(std::max_align_t) std::array<unsigned char, 64> bytes{};
    };

    std::vector<ITag*> MixedTags() {
        return {Tag("1?A?M?0?byte"), Tag("1?A?M?0?int"), Tag("1?A?M?0?double"), Tag("1?A?M?0?unsignedShort(bcd)"),
                Tag("1?A?M?0?float-2")};
    }

    static constexpr std::size_t kMixedSize = 1 + 4 + 8 + 2 + 8;
    static constexpr char const* kMixedValues = "7F | 78 56 34 12 | 00 00 00 00 00 00 F0 3F | D2 04 | "
                                                "00 00 80 3F 00 00 00 C0";

private:
    bool loggedIn_ = false;
};

TEST_F(MachineDifferencesTest, ValuesMayBeReadToAnyAddress) {
    std::vector<ITag*> const tags = MixedTags();
    std::array<idal_error_t, 5> status{};
    for (std::size_t first = 0; first < alignof(std::max_align_t); ++first) {
        Connect().Exchange("2E 00 | 00 00 00 05 | 00 00 00 00 00 10 00 00 00 01 | 00 00 00 00 00 10 00 00 00 04 | "
                           "00 00 00 00 00 10 00 00 00 08 | 00 00 00 00 00 10 00 00 00 02 | "
                           "00 00 00 00 00 10 00 00 00 08 | 00 00 00 07",
                           "00 00 | 00 00 00 00 | 01 7F | 01 12 34 56 78 | 01 3F F0 00 00 00 00 00 00 | 01 12 34 | "
                           "01 3F 80 00 00 C0 00 00 00");
        Memory memory;
        unsigned char* const begin = memory.bytes.data() + first;
        EXPECT_TRUE(driver->ReadDatagramWithStatus(tags.data(), 5, begin, status.data()))
            << driver->GetLastErrorString();
        EXPECT_EQ(Bytes(begin, begin + kMixedSize), Hex(kMixedValues)) << first;
    }
}

TEST_F(MachineDifferencesTest, ValuesMayBeWrittenFromAnyAddress) {
    std::vector<ITag*> const tags = MixedTags();
    std::array<idal_error_t, 5> status{};
    Bytes const values = Hex(kMixedValues);
    for (std::size_t first = 0; first < alignof(std::max_align_t); ++first) {
        Connect().Exchange("3C 00 | 00 00 00 05 | 00 00 00 00 00 10 00 00 00 01 7F | "
                           "00 00 00 00 00 10 00 00 00 04 12 34 56 78 | "
                           "00 00 00 00 00 10 00 00 00 08 3F F0 00 00 00 00 00 00 | "
                           "00 00 00 00 00 10 00 00 00 02 12 34 | "
                           "00 00 00 00 00 10 00 00 00 08 3F 80 00 00 C0 00 00 00 | 00 00 00 07",
                           "00 00");
        Memory memory;
        unsigned char* const begin = memory.bytes.data() + first;
        std::copy(values.begin(), values.end(), begin);
        EXPECT_TRUE(driver->WriteDatagramWithStatus(tags.data(), 5, begin, status.data()))
            << driver->GetLastErrorString();
    }
}

TEST_F(MachineDifferencesTest, CharactersAboveAsciiAreNoNegativeNumbers) {
    Connect().Exchange("2E 00 | 00 00 00 02 | 00 00 00 00 00 11 00 00 00 02 | 00 00 00 00 00 10 00 00 00 01 | "
                       "00 00 00 07",
                       "00 00 | 00 00 00 00 | 01 E4 80 | 01 99");
    ReadOutcome const outcome = Read({Tag("1?Gr\xD6sse?M?0?string-2"), Tag("1?A?M?0?unsignedByte(bcd)")});
    EXPECT_TRUE(outcome.ok) << driver->GetLastErrorString();
    EXPECT_EQ(outcome.values, Hex("E4 80 63"));
    EXPECT_EQ(outcome.status, (std::vector<idal_error_t>{1, 1}));
}

} // namespace
