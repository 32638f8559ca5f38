#include "protlib/config/ConfigParser.h"
#include "protlib/safety/ScratchBuffer.h"
#include "tests/protlib/TestDriver.h"
#include "tests/support/AllocationGate.h"

#include <gtest/gtest.h>

#include <array>
#include <string>
#include <vector>

namespace {

using velktest::AllocationGate;

// --- what needs the heap ---

TEST(CreateTagAllocation, RegisteringATagUsesNoHeap) {
    // So there is no separate list that freeing a tag would have to search.
    TestDriver driver;
    driver.addresses.reserve(8);
    driver.deletions.reserve(8);
    for (int i = 0; i < 3; ++i) {
        driver.offer(TestTag());
    }
    AllocationGate const gate;
    for (int i = 0; i < 3; ++i) {
        EXPECT_NE(driver.CreateTag("x"), nullptr);
    }
    EXPECT_EQ(AllocationGate::Seen(), 0U);
}

std::size_t allocationsOfARead(int length) {
    TestDriver driver;
    TestTag const tag(ICU_STRING, ICU_BYTE, length);
    std::vector<unsigned char> value(static_cast<std::size_t>(length));
    AllocationGate const gate;
    EXPECT_TRUE(driver.Read(&tag, value.data()));
    return AllocationGate::Seen();
}

TEST(ReadAllocation, SixtyFourBytesUseNoHeap) {
    for (int const length : {0, 1, 63, 64}) {
        EXPECT_EQ(allocationsOfARead(length), 0U) << length;
    }
}

TEST(ReadAllocation, SixtyFiveBytesAreAllocatedOnce) {
    for (int const length : {65, 66, 256}) {
        EXPECT_EQ(allocationsOfARead(length), 1U) << length;
    }
}

TEST(ReadAllocation, LengthOfTheImageCountsNotThatOfTheHostValue) {
    // 256 bits are 32 bytes in the PLC, and the conversion's own buffer stays on the stack up to 256.
    TestDriver driver;
    TestTag const tag(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 256);
    std::array<unsigned char, 256> value{};
    AllocationGate const gate;
    EXPECT_TRUE(driver.Read(&tag, value.data()));
    EXPECT_EQ(AllocationGate::Seen(), 0U);
}

std::size_t allocationsOfAConversion(int length, bool towardsPlc) {
    TestTag const tag(ICU_STRING, ICU_BYTE, length, {"swapnibble", "swapnibble"});
    std::vector<unsigned char> const source(static_cast<std::size_t>(length));
    std::vector<unsigned char> destination(static_cast<std::size_t>(length));
    AllocationGate const gate;
    EXPECT_TRUE(tag.ConvertVariable(source.data(), destination.data(), towardsPlc));
    return AllocationGate::Seen();
}

TEST(ConvertAllocation, TwoHundredFiftySixBytesUseNoHeap) {
    for (int const length : {0, 1, 64, 65, 255, 256}) {
        EXPECT_EQ(allocationsOfAConversion(length, false), 0U) << length;
        EXPECT_EQ(allocationsOfAConversion(length, true), 0U) << length;
    }
}

TEST(ConvertAllocation, TwoHundredFiftySevenBytesAreAllocatedOnce) {
    for (int const length : {257, 1000}) {
        EXPECT_EQ(allocationsOfAConversion(length, false), 1U) << length;
        EXPECT_EQ(allocationsOfAConversion(length, true), 1U) << length;
    }
}

// --- when memory runs out ---

TEST(MemoryShortage, ConvertFailsAndKeepsTheDestination) {
    TestTag const tag(ICU_STRING, ICU_BYTE, 257);
    std::vector<unsigned char> const source(257, 0x11);
    std::vector<unsigned char> destination(257, 0x77);
    {
        AllocationGate const gate(1, true);
        EXPECT_FALSE(tag.ConvertVariable(source.data(), destination.data(), false));
        EXPECT_TRUE(AllocationGate::Refused());
    }
    EXPECT_EQ(destination, std::vector<unsigned char>(257, 0x77));
}

TEST(MemoryShortage, ReadFailsWithoutThrowing) {
    TestDriver driver;
    TestTag const tag(ICU_STRING, ICU_BYTE, 65);
    std::vector<unsigned char> value(65, 0x77);
    {
        AllocationGate const gate(1, true);
        EXPECT_FALSE(driver.Read(&tag, value.data()));
        EXPECT_TRUE(AllocationGate::Refused());
    }
    EXPECT_EQ(driver.GetLastError(), 0);
    EXPECT_STREQ(driver.GetLastErrorString(), "Out of memory");
    EXPECT_EQ(driver.blockReads, 0);
    EXPECT_EQ(value, std::vector<unsigned char>(65, 0x77));
}

TEST(MemoryShortage, CreateTagDoesNotThrowAndLosesNoTag) {
    for (std::size_t refused = 1; refused <= 3; ++refused) {
        TestDriver driver;
        driver.addresses.reserve(8);
        driver.deletions.reserve(8);
        driver.offer(TestTag());
        ITag* tag = nullptr;
        bool wasRefused = false;
        {
            AllocationGate const gate(refused, true);
            tag = driver.CreateTag("x");
            wasRefused = AllocationGate::Refused();
        }
        EXPECT_EQ(tag == nullptr, wasRefused && driver.created.empty()) << refused;
        // The present owner of the tag destroys it once.
        driver.DeleteTags();
        EXPECT_EQ(driver.deletions.size(), 1U) << refused;
    }
}

TEST(MemoryShortage, ErrorCodeIsKeptEvenWhenItsTextCannotBe) {
    TestDriver driver;
    std::string const text(1000, 'e');
    {
        AllocationGate const gate(1, true);
        driver.SetError(-6, text.c_str());
        EXPECT_TRUE(AllocationGate::Refused());
    }
    EXPECT_EQ(driver.GetLastError(), -6);
    EXPECT_STREQ(driver.GetLastErrorString(), "");
}

TEST(MemoryShortage, TagErrorsDoNotThrow) {
    TestDriver driver;
    TestTag tag;
    tag.name = std::string(500, 'n');
    std::string const text(500, 't');
    {
        AllocationGate const gate(1, true);
        tag.SetError(text.c_str());
        EXPECT_TRUE(AllocationGate::Refused());
    }
    {
        AllocationGate const gate(1, true);
        driver.SetTagError(&tag);
        EXPECT_TRUE(AllocationGate::Refused());
    }
    EXPECT_EQ(driver.GetLastError(), -1);
}

TEST(MemoryShortage, IdentDoesNotThrow) {
    TestDriver driver;
    std::string const ident(500, 'i');
    {
        AllocationGate const gate(1, true);
        driver.SetIdent(ident.c_str());
        EXPECT_TRUE(AllocationGate::Refused());
    }
    EXPECT_STREQ(driver.GetIdent(), "MINI");
}

TEST(MemoryShortage, NoCommandThrowsOrLosesItsTag) {
    for (char const* const command : {"help", "info", "xml", "lasterror", "getmaxtm", "deletetags", "read", "write",
                                      "unknown-command-of-some-length", "read 1?PLC_PRG/Counter?M?0?string-100",
                                      "write 1?PLC_PRG/Counter?M?0?string-2 0A0B"}) {
        for (std::size_t refused = 1; refused <= 30; ++refused) {
            TestDriver driver;
            driver.addresses.reserve(8);
            driver.written.reserve(200);
            bool const isWrite = std::string(command).starts_with("write");
            driver.deletions.reserve(8);
            driver.offer(TestTag(ICU_STRING, ICU_BYTE, isWrite ? 2 : 100));
            std::array<char, 300> reply{};
            bool wasRefused = false;
            {
                AllocationGate const gate(refused, true);
                driver.DoCommand(command, reply.data(), static_cast<int>(reply.size()));
                wasRefused = AllocationGate::Refused();
            }
            bool const taken = driver.created.empty();
            EXPECT_EQ(driver.deletions.size(), taken ? 1U : 0U) << command << ' ' << refused;
            for (TestTag* const left : driver.created) {
                delete left;
            }
            driver.created.clear();
            if (!wasRefused) {
                break;
            }
            EXPECT_LT(refused, 30U) << command;
        }
    }
}

TEST(MemoryShortage, CommandWhoseValueFindsNoBufferSaysSo) {
    constexpr int kLength = int{ProtUtilsN::kLongestScratch} + 1;
    for (std::string const& command :
         {std::string("read x"), "write x " + std::string(2 * std::size_t{kLength}, '0')}) {
        TestDriver driver;
        driver.offer(TestTag(ICU_STRING, ICU_BYTE, kLength));
        std::array<char, 300> reply{};
        EXPECT_TRUE(driver.DoCommand(command.c_str(), reply.data(), static_cast<int>(reply.size())));
        EXPECT_STREQ(reply.data(), "Out of memory");
        EXPECT_EQ(driver.GetLastError(), 0);
    }
}

TEST(MemoryShortage, BannerIsWrittenWithoutTheHeap) {
    TestDriver const driver;
    std::array<char, 300> text{};
    AllocationGate const gate(1, true);
    EXPECT_GT(driver.GetInfo(text.data(), static_cast<int>(text.size())), 0);
}

} // namespace
