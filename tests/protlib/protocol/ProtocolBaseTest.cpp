#include "protlib/protocol/ProtocolBase.h"

#include "tests/protlib/TestDriver.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

namespace {

using velktest::Bytes;
using velktest::Counting;
using velktest::Hex;

using Names = std::vector<std::string>;

// --- construction and errors ---

TEST(ProtocolBase, LastErrorOfANewProtocolIsOneWithoutAText) {
    TestDriver const driver;
    EXPECT_EQ(driver.GetLastError(), 1);
    EXPECT_STREQ(driver.GetLastErrorString(), "");
}

TEST(ProtocolBase, NextErrorReplacesTheLastOne) {
    TestDriver driver;
    driver.SetError(-4, "Timeout on Acknowledge");
    EXPECT_EQ(driver.GetLastError(), -4);
    EXPECT_STREQ(driver.GetLastErrorString(), "Timeout on Acknowledge");
    driver.SetError(-6, "x");
    EXPECT_EQ(driver.GetLastError(), -6);
    EXPECT_STREQ(driver.GetLastErrorString(), "x");
}

TEST(ProtocolBase, ErrorTextIsCopied) {
    TestDriver driver;
    std::string text = "first";
    driver.SetError(-1, text.c_str());
    text = "other";
    EXPECT_STREQ(driver.GetLastErrorString(), "first");
}

TEST(ProtocolBase, ErrorTextMayBeItsOwnSuccessor) {
    TestDriver driver;
    driver.SetError(-1, std::string(300, 'e').c_str());
    driver.SetError(-3, driver.GetLastErrorString());
    EXPECT_EQ(driver.GetLastErrorString(), std::string(300, 'e'));
}

TEST(ProtocolBase, NothingClearsTheErrorOnSuccess) {
    TestDriver driver;
    driver.SetError(-6, "refused");
    driver.image = {1};
    TestTag const tag;
    unsigned char value = 0;
    EXPECT_TRUE(driver.Read(&tag, &value));
    EXPECT_TRUE(driver.Start());
    EXPECT_EQ(driver.GetLastError(), -6);
    EXPECT_STREQ(driver.GetLastErrorString(), "refused");
}

TEST(ProtocolBase, TagErrorNamesTheAddressAndTheTagsText) {
    TestDriver driver;
    TestTag tag;
    tag.name = "1?x?M";
    tag.SetError("there must be 5 tag specification fields");
    driver.SetTagError(&tag);
    EXPECT_EQ(driver.GetLastError(), -1);
    EXPECT_STREQ(driver.GetLastErrorString(), "Tag URI error: 1?x?M - there must be 5 tag specification fields");
}

TEST(ProtocolBase, TagErrorWithoutAnyTextsIsOnlyTheFrame) {
    TestDriver driver;
    TestTag tag;
    tag.name = "";
    driver.SetTagError(&tag);
    EXPECT_STREQ(driver.GetLastErrorString(), "Tag URI error:  - ");
}

// --- identity ---

TEST(ProtocolBase, ConvertsToItsFourNames) {
    TestDriver driver;
    for (char const* const name : {"ProtocolBase", "IProtocol3", "IProtocol2", "IProtocol"}) {
        EXPECT_EQ(static_cast<void*>(driver.ConvertTo(name)), static_cast<void*>(&driver)) << name;
    }
}

TEST(ProtocolBase, ConvertsToNothingElse) {
    TestDriver driver;
    for (char const* const name : {"IInterface", "Protocol_VELK", "iprotocol", "IProtocol ", " IProtocol", "IProtocol4",
                                   "", "protocolbase", "IProtoco", "IProtocolFactory"}) {
        EXPECT_EQ(driver.ConvertTo(name), nullptr) << name;
    }
}

TEST(ProtocolBase, IdentIsTheNameUntilItIsSet) {
    TestDriver driver;
    EXPECT_STREQ(driver.GetIdent(), "MINI");
    driver.SetIdent("line 1");
    EXPECT_STREQ(driver.GetIdent(), "line 1");
    driver.SetIdent("line 2");
    EXPECT_STREQ(driver.GetIdent(), "line 2");
    driver.SetIdent("");
    EXPECT_STREQ(driver.GetIdent(), "MINI");
}

TEST(ProtocolBase, IdentIsCopied) {
    TestDriver driver;
    std::string text = "line 1";
    driver.SetIdent(text.c_str());
    text = "changed";
    EXPECT_STREQ(driver.GetIdent(), "line 1");
}

TEST(ProtocolBase, NextInstanceNameIsTheName) {
    TestDriver driver;
    driver.SetIdent("line 1");
    EXPECT_STREQ(driver.GetNextInstanceName(), "MINI");
}

// --- defaults ---

TEST(ProtocolBaseDefault, StartAndStopSucceed) {
    TestDriver driver;
    EXPECT_TRUE(driver.Start());
    EXPECT_TRUE(driver.Stop());
}

TEST(ProtocolBaseDefault, OptimizedWritingIsNotSupported) {
    TestDriver driver;
    TestTag const tag;
    unsigned char const bytes[] = {1};
    EXPECT_FALSE(driver.WriteBlock(&tag, bytes, 1));
    EXPECT_EQ(driver.GetLastError(), -3);
    EXPECT_STREQ(driver.GetLastErrorString(), "Optimized writing not supported");
}

TEST(ProtocolBaseDefault, NoDatagrams) {
    TestDriver driver;
    TestTag const tag;
    ITag const* const tags[] = {&tag};
    Bytes values = Hex("55");
    idal_error_t status = 99;
    EXPECT_EQ(driver.MaxDatagramItems(&tag), 0);
    EXPECT_EQ(driver.MaxDatagramLength(&tag), 0);
    EXPECT_FALSE(driver.CanCoexistInDatagram(&tag, &tag));
    EXPECT_FALSE(driver.ReadDatagram(tags, 1, values.data()));
    EXPECT_FALSE(driver.CanAddToDatagram(tags, 1, &tag));
    EXPECT_FALSE(driver.ReadDatagramWithStatus(tags, 1, values.data(), &status));
    EXPECT_FALSE(driver.CanWriteDatagrams(&tag));
    EXPECT_FALSE(driver.CanAddToWriteDatagram(tags, 1, &tag));
    EXPECT_FALSE(driver.WriteDatagramWithStatus(tags, 1, values.data(), &status));
    EXPECT_EQ(values, Hex("55"));
    EXPECT_EQ(status, 99);
    EXPECT_EQ(driver.GetLastError(), 1);
}

TEST(ProtocolBaseDefault, NoBitBlocks) {
    TestDriver driver;
    TestTag const tag;
    Bytes bytes = Hex("55");
    EXPECT_FALSE(driver.CanReadBitBlock(&tag));
    EXPECT_FALSE(driver.ReadBitBlock(&tag, bytes.data(), 8));
    EXPECT_FALSE(driver.CanWriteBitBlock(&tag));
    EXPECT_FALSE(driver.WriteBitBlock(&tag, bytes.data(), 8));
    EXPECT_EQ(bytes, Hex("55"));
}

TEST(ProtocolBaseDefault, NoMultipleRequests) {
    TestDriver driver;
    EXPECT_FALSE(driver.MultipleReadSupported());
    EXPECT_FALSE(driver.MultipleRead(nullptr));
    EXPECT_FALSE(driver.MultipleWriteSupported());
    EXPECT_FALSE(driver.MultipleWrite(nullptr));
}

TEST(ProtocolBaseDefault, RemainingAnswers) {
    TestDriver driver;
    TestTag const tag;
    EXPECT_EQ(driver.GetXml(), nullptr);
    EXPECT_FALSE(driver.IsConverted());
    EXPECT_EQ(driver.Extend(1, nullptr), 0);
    EXPECT_EQ(driver.Extend(-1, &driver), 0);
    EXPECT_EQ(driver.GetInterface("IProtocol"), nullptr);
    EXPECT_EQ(driver.MaxUnusedGap(&tag), 16777215);
    EXPECT_FALSE(driver.NeedsReadBeforeWrite(&tag));
    EXPECT_EQ(driver.GetLastError(), 1);
}

TEST(ProtocolBaseDefault, TagsAreOrderedByTheirByteOffsetUnsigned) {
    TestDriver const driver;
    TestTag a;
    TestTag b;
    a.byteOffset = 4;
    b.byteOffset = 5;
    EXPECT_TRUE(driver.IsBefore(&a, &b));
    EXPECT_FALSE(driver.IsBefore(&b, &a));
    EXPECT_FALSE(driver.IsBefore(&a, &a));
    b.byteOffset = -1;
    EXPECT_TRUE(driver.IsBefore(&a, &b));
    EXPECT_FALSE(driver.IsBefore(&b, &a));
    a.byteOffset = 2147483647;
    b.byteOffset = -2147483647 - 1;
    EXPECT_TRUE(driver.IsBefore(&a, &b));
}

TEST(ProtocolBaseDefault, BitIndexDoesNotOrderTags) {
    TestDriver const driver;
    TestTag a(ICU_BOOLEAN);
    TestTag b(ICU_BOOLEAN);
    b.bitIndex = 5;
    EXPECT_FALSE(driver.IsBefore(&a, &b));
}

TEST(ProtocolBaseDefault, TagIsAdjacentWhenItBeginsWhereTheOtherEnds) {
    TestDriver const driver;
    TestTag first(ICU_INT, ICU_NONE, 4);
    TestTag second(ICU_INT, ICU_NONE, 4);
    first.byteOffset = 10;
    second.byteOffset = 14;
    EXPECT_TRUE(driver.IsAdjacent(&second, &first));
    EXPECT_FALSE(driver.IsAdjacent(&first, &second));
    second.byteOffset = 15;
    EXPECT_FALSE(driver.IsAdjacent(&second, &first));
    second.byteOffset = 13;
    EXPECT_FALSE(driver.IsAdjacent(&second, &first));
}

TEST(ProtocolBaseDefault, BitTagsAreAdjacentByTheirBits) {
    TestDriver const driver;
    TestTag bits(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 6);
    TestTag bit(ICU_BOOLEAN);
    bits.byteOffset = 2;
    bits.bitIndex = 1;
    bit.byteOffset = 2;
    bit.bitIndex = 7;
    EXPECT_TRUE(driver.IsAdjacent(&bit, &bits));
    bit.bitIndex = 6;
    EXPECT_FALSE(driver.IsAdjacent(&bit, &bits));
    TestTag byte(ICU_UNSIGNED_BYTE);
    bit.bitIndex = 7;
    byte.byteOffset = 3;
    EXPECT_TRUE(driver.IsAdjacent(&byte, &bit));
}

TEST(ProtocolBaseDefault, FarTagsAreNotAdjacentByWrappingAround) {
    TestDriver const driver;
    TestTag a(ICU_INT, ICU_NONE, 4);
    TestTag b(ICU_INT, ICU_NONE, 4);
    a.byteOffset = 268435456; // bit 2^31
    b.byteOffset = 268435452;
    EXPECT_TRUE(driver.IsAdjacent(&a, &b));
    b.byteOffset = 536870912; // bit 2^32
    EXPECT_FALSE(driver.IsAdjacent(&a, &b));
    a.byteOffset = 2147483647;
    EXPECT_FALSE(driver.IsAdjacent(&a, &b));
}

// --- the registry of tags ---

TEST(TagRegistry, CreateTagAnswersTheDriversTag) {
    TestDriver driver;
    TestTag* const offered = driver.offer(TestTag());
    EXPECT_EQ(driver.CreateTag("1?x?M?0?int"), offered);
    EXPECT_EQ(driver.addresses, Names{"1?x?M?0?int"});
    EXPECT_EQ(driver.GetLastError(), 1);
}

TEST(TagRegistry, RefusedAddressGivesNullAndTheDriversError) {
    TestDriver driver;
    EXPECT_EQ(driver.CreateTag("bad"), nullptr);
    EXPECT_EQ(driver.GetLastError(), -1);
    EXPECT_STREQ(driver.GetLastErrorString(), "Tag URI error: refused");
}

TEST(TagRegistry, FreedTagIsDestroyedOnceAndTheOthersStay) {
    TestDriver driver;
    driver.offer(TestTag(), "a");
    TestTag* const b = driver.offer(TestTag(), "b");
    driver.offer(TestTag(), "c");
    for (int i = 0; i < 3; ++i) {
        driver.CreateTag("x");
    }
    driver.FreeTag(b);
    EXPECT_EQ(driver.deletions, Names{"b"});
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"b", "a", "c"}));
}

TEST(TagRegistry, TagRegisteredTwiceIsDestroyedOnce) {
    TestDriver driver;
    driver.offer(TestTag(), "other");
    TestTag* const twice = driver.offer(TestTag(), "twice");
    driver.created.push_back(twice);
    for (int i = 0; i < 3; ++i) {
        driver.CreateTag("x");
    }
    driver.FreeTag(twice);
    EXPECT_EQ(driver.deletions, Names{"twice"});
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"twice", "other"}));
}

TEST(TagRegistry, UnregisteredTagIsDestroyedToo) {
    TestDriver driver;
    driver.offer(TestTag(), "registered");
    driver.CreateTag("x");
    auto* const stranger = new TestTag;
    stranger->name = "stranger";
    stranger->deletions = driver.log;
    driver.FreeTag(stranger);
    EXPECT_EQ(driver.deletions, Names{"stranger"});
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"stranger", "registered"}));
}

TEST(TagRegistry, CopyOfATagIsNotRegistered) {
    TestDriver driver;
    TestTag* const original = driver.offer(TestTag(), "original");
    driver.offer(TestTag(), "other");
    driver.CreateTag("x");
    driver.CreateTag("x");
    ITag* const early = original->Clone();
    ITag* const late = original->Clone();
    static_cast<TestTag*>(early)->name = "early copy";
    static_cast<TestTag*>(late)->name = "late copy";
    driver.FreeTag(early);
    driver.FreeTag(original);
    EXPECT_EQ(driver.deletions, (Names{"early copy", "original"}));
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"early copy", "original", "other"})) << "the late copy is the caller's";
    delete late;
}

TEST(TagRegistry, TagThatIsDestroyedWithoutTheProtocolLeavesTheRegistry) {
    TestDriver driver;
    for (char const* const name : {"a", "b"}) {
        driver.offer(TestTag(), name);
    }
    ITag* const a = driver.CreateTag("x");
    driver.CreateTag("x");
    delete a;
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"a", "b"}));
}

/** Frees some of many tags in a given order; the rest is destroyed in the order of creation. */
void expectRestInOrder(std::vector<std::size_t> const& freed, std::size_t count) {
    TestDriver driver;
    std::vector<ITag*> tags;
    std::vector<bool> isFreed(count, false);
    Names expected;
    for (std::size_t i = 0; i < count; ++i) {
        driver.offer(TestTag(), std::to_string(i));
        tags.push_back(driver.CreateTag("x"));
    }
    for (auto const index : freed) {
        driver.FreeTag(tags[index]);
        isFreed[index] = true;
        expected.push_back(std::to_string(index));
    }
    ASSERT_EQ(driver.deletions, expected);
    for (std::size_t i = 0; i < count; ++i) {
        if (!isFreed[i]) {
            expected.push_back(std::to_string(i));
        }
    }
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, expected);
}

TEST(TagRegistry, OrderOfTheRestStaysInWhateverOrderTagsAreFreed) {
    constexpr std::size_t kCount = 32'000;
    std::vector<std::size_t> indices(kCount);
    std::iota(indices.begin(), indices.end(), 0U);
    std::vector<std::size_t> const half(indices.begin(), indices.begin() + kCount / 2);
    expectRestInOrder(half, kCount);
    expectRestInOrder({half.rbegin(), half.rend()}, kCount);
    expectRestInOrder({indices.rbegin(), indices.rend()}, kCount);
    std::shuffle(indices.begin(), indices.end(), std::mt19937(97531));
    expectRestInOrder({indices.begin(), indices.begin() + kCount / 2}, kCount);
    expectRestInOrder(indices, kCount);
}

TEST(TagRegistry, FreeingNullKeepsEveryTag) {
    TestDriver driver;
    driver.offer(TestTag(), "a");
    driver.CreateTag("x");
    driver.FreeTag(nullptr);
    EXPECT_EQ(driver.deletions, Names{});
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, Names{"a"});
}

TEST(TagRegistry, DeleteTagsDestroysInTheOrderOfCreationAndEmptiesTheRegistry) {
    TestDriver driver;
    for (char const* const name : {"a", "b", "c"}) {
        driver.offer(TestTag(), name);
    }
    for (int i = 0; i < 3; ++i) {
        driver.CreateTag("x");
    }
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"a", "b", "c"}));
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions.size(), 3U);
    driver.offer(TestTag(), "d");
    EXPECT_NE(driver.CreateTag("x"), nullptr);
    driver.DeleteTags();
    EXPECT_EQ(driver.deletions, (Names{"a", "b", "c", "d"}));
}

TEST(TagRegistry, DestructionOfTheProtocolDestroysItsTags) {
    auto driver = std::make_unique<TestDriver>();
    auto const log = driver->log;
    for (char const* const name : {"a", "b"}) {
        driver->offer(TestTag(), name);
    }
    driver->CreateTag("x");
    driver->CreateTag("x");
    driver.reset();
    EXPECT_EQ(*log, (Names{"a", "b"}));
}

// --- reading one tag ---

TEST(ReadTag, AsksForThePackedBytesAndConvertsThem) {
    TestDriver driver;
    driver.image = Hex("34 12");
    TestTag const tag(ICU_UNSIGNED_SHORT, ICU_NONE, 2, {"swap2", "bcd"});
    Bytes value = Hex("77 77 77");
    EXPECT_TRUE(driver.Read(&tag, value.data()));
    EXPECT_EQ(value, Hex("04 D2 77"));
    EXPECT_EQ(driver.blockReads, 1);
    EXPECT_EQ(driver.lastTag, &tag);
    EXPECT_EQ(driver.lastLength, 2);
    EXPECT_TRUE(driver.bufferWasZero);
}

TEST(ReadTag, BitTagIsReadAsTheBytesThatItTouches) {
    TestDriver driver;
    driver.image = Hex("C0 01");
    TestTag tag(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 4);
    tag.bitIndex = 6;
    Bytes value(4, 0x77);
    EXPECT_TRUE(driver.Read(&tag, value.data()));
    EXPECT_EQ(driver.lastLength, 2);
    EXPECT_EQ(value, Hex("01 01 01 00"));
}

TEST(ReadTag, EmptyTagIsReadWithLengthZero) {
    TestDriver driver;
    TestTag const tag(ICU_STRING, ICU_BYTE, 0);
    Bytes value = Hex("77");
    EXPECT_TRUE(driver.Read(&tag, value.data()));
    EXPECT_EQ(driver.lastLength, 0);
    EXPECT_EQ(value, Hex("77"));
}

TEST(ReadTag, BufferIsZeroedForEveryLength) {
    for (int const length : {1, 63, 64, 65, 66, 300}) {
        TestDriver driver;
        driver.image = Counting(static_cast<std::size_t>(length), 9);
        TestTag const tag(ICU_STRING, ICU_BYTE, length);
        Bytes value(static_cast<std::size_t>(length) + 1, 0x77);
        EXPECT_TRUE(driver.Read(&tag, value.data())) << length;
        EXPECT_TRUE(driver.bufferWasZero) << length;
        EXPECT_EQ(driver.lastLength, length);
        EXPECT_EQ(value.back(), 0x77) << length;
        value.pop_back();
        EXPECT_EQ(value, driver.image) << length;
    }
}

TEST(ReadTag, FailedBlockReadKeepsTheDriversErrorAndTheValue) {
    for (int const length : {4, 100}) {
        TestDriver driver;
        driver.readSucceeds = false;
        driver.image = Counting(100);
        TestTag const tag(ICU_STRING, ICU_BYTE, length);
        Bytes value(100, 0x77);
        EXPECT_FALSE(driver.Read(&tag, value.data()));
        EXPECT_EQ(driver.GetLastError(), -4);
        EXPECT_STREQ(driver.GetLastErrorString(), "Timeout on data receiving");
        EXPECT_EQ(value, Bytes(100, 0x77));
    }
}

TEST(ReadTag, FailedConversionIsAReadConversionError) {
    for (int const length : {1, 101}) {
        TestDriver driver;
        driver.image = {0x1A};
        TestTag const tag(ICU_UNSIGNED_BYTE_ARRAY, ICU_UNSIGNED_BYTE, length, {"bcd"});
        Bytes value(101, 0x77);
        EXPECT_FALSE(driver.Read(&tag, value.data()));
        EXPECT_EQ(driver.GetLastError(), -9);
        EXPECT_STREQ(driver.GetLastErrorString(), "read conversion error");
        EXPECT_EQ(value, Bytes(101, 0x77));
        EXPECT_STREQ(tag.GetErrorText(), "Conversion error at: bcd");
    }
}

/** A driver that can read bits. */
class BitDriver : public TestDriver {
public:
    bool CanReadBitBlock(ITag const* tag) const override {
        lastTag = tag;
        return true;
    }
    bool ReadBitBlock(ITag const* /*tag*/, unsigned char* bytes, int bits) override {
        lastBits = bits;
        bytes[0] = 0xFF;
        if (!readSucceeds) {
            SetError(-6, "bits refused");
        }
        return readSucceeds;
    }
    int lastBits = -1;
};

TEST(ReadTag, DriverThatReadsBitsIsAskedForTheNumberOfBitsOfABitTag) {
    BitDriver driver;
    TestTag const boolean(ICU_BOOLEAN);
    TestTag booleans(ICU_BOOLEAN_ARRAY, ICU_BOOLEAN, 12);
    booleans.bitIndex = 3;
    Bytes value(12, 0x77);
    EXPECT_TRUE(driver.Read(&boolean, value.data()));
    EXPECT_EQ(driver.lastBits, 1);
    EXPECT_EQ(value[0], 1);
    EXPECT_TRUE(driver.Read(&booleans, value.data()));
    EXPECT_EQ(driver.lastBits, 12);
    EXPECT_EQ(value, Hex("01 01 01 01 01 00 00 00 00 00 00 00"));
    EXPECT_EQ(driver.blockReads, 0);
}

TEST(ReadTag, DriverThatReadsBitsIsAskedForEightBitsAByteOfOtherTags) {
    BitDriver driver;
    TestTag const tag(ICU_INT, ICU_NONE, 4);
    Bytes value(4, 0x77);
    EXPECT_TRUE(driver.Read(&tag, value.data()));
    EXPECT_EQ(driver.lastBits, 32);
    EXPECT_EQ(value, Hex("FF 00 00 00"));
    EXPECT_EQ(driver.blockReads, 0);
}

TEST(ReadTag, FailedBitReadKeepsTheDriversError) {
    BitDriver driver;
    driver.readSucceeds = false;
    TestTag const tag(ICU_BOOLEAN);
    Bytes value = Hex("77");
    EXPECT_FALSE(driver.Read(&tag, value.data()));
    EXPECT_STREQ(driver.GetLastErrorString(), "bits refused");
    EXPECT_EQ(value, Hex("77"));
}

// --- datagrams ---

/** A tag that records requests for its packed length. */
class SizedTag : public TestTag {
public:
    SizedTag(std::vector<std::string>& log, std::string title, int packedLength)
        : log_(&log), title_(std::move(title)), packed_(packedLength) {}
    int PackedLen() const override {
        log_->push_back("length of " + title_);
        return packed_;
    }

private:
    std::vector<std::string>* log_;
    std::string title_;
    int packed_;
};

/** A driver with datagrams that records its calls. */
class DatagramDriver : public TestDriver {
public:
    bool CanCoexistInDatagram(ITag const* a, ITag const* b) const override {
        log.push_back("coexist");
        askedA = a;
        askedB = b;
        return coexist;
    }
    int MaxDatagramItems(ITag const* tag) const override {
        log.emplace_back("items");
        askedItems = tag;
        return items;
    }
    int MaxDatagramLength(ITag const* tag) const override {
        log.emplace_back("limit");
        askedLimit = tag;
        return limit;
    }
    bool ReadDatagram(ITag const* const* tags, int count, unsigned char* values) override {
        readTags.assign(tags, tags + count);
        readValues = values;
        return readSucceeds;
    }
    mutable Names log;
    mutable ITag const* askedA = nullptr;
    mutable ITag const* askedB = nullptr;
    mutable ITag const* askedItems = nullptr;
    mutable ITag const* askedLimit = nullptr;
    bool coexist = true;
    int items = 90;
    int limit = 1024;
    std::vector<ITag const*> readTags;
    unsigned char* readValues = nullptr;
};

struct DatagramTest : testing::Test {
    DatagramDriver driver;
    SizedTag first{driver.log, "first", 10};
    SizedTag second{driver.log, "second", 20};
    SizedTag candidate{driver.log, "candidate", 30};
    std::array<ITag const*, 2> tags{&first, &second};

    bool canAdd(int count) { return driver.CanAddToDatagram(tags.data(), count, &candidate); }
};

TEST_F(DatagramTest, TagJoinsWhenItFits) {
    EXPECT_TRUE(canAdd(2));
    EXPECT_EQ(driver.askedA, &first);
    EXPECT_EQ(driver.askedB, &candidate);
    EXPECT_EQ(driver.askedItems, &candidate);
    EXPECT_EQ(driver.askedLimit, &candidate);
}

TEST_F(DatagramTest, CoexistenceIsAskedFirstAndEndsTheQuestion) {
    driver.coexist = false;
    EXPECT_FALSE(canAdd(2));
    EXPECT_EQ(driver.log, Names{"coexist"});
}

TEST_F(DatagramTest, NumberOfItemsIsAskedNextAndEndsTheQuestion) {
    driver.items = 2;
    EXPECT_FALSE(canAdd(2));
    EXPECT_EQ(driver.log, (Names{"coexist", "items"}));
}

TEST_F(DatagramTest, LengthIsAskedLast) {
    EXPECT_TRUE(canAdd(2));
    ASSERT_GE(driver.log.size(), 6U);
    EXPECT_EQ(driver.log[0], "coexist");
    EXPECT_EQ(driver.log[1], "items");
    EXPECT_NE(driver.log[2], "coexist");
    EXPECT_NE(driver.log[2], "items");
}

TEST_F(DatagramTest, DatagramMustHoldOneItemMore) {
    driver.items = 3;
    EXPECT_TRUE(canAdd(2));
    driver.items = 2;
    EXPECT_FALSE(canAdd(2));
    driver.items = 0;
    EXPECT_FALSE(canAdd(1));
}

TEST_F(DatagramTest, SumOfThePackedLengthsMayReachTheLimit) {
    driver.limit = 60;
    EXPECT_TRUE(canAdd(2));
    driver.limit = 59;
    EXPECT_FALSE(canAdd(2));
    driver.limit = 40;
    EXPECT_TRUE(canAdd(1));
    driver.limit = 39;
    EXPECT_FALSE(canAdd(1));
}

TEST_F(DatagramTest, EmptyDatagramStillAsksItsFirstTagForCoexistence) {
    EXPECT_TRUE(canAdd(0));
    EXPECT_EQ(driver.askedA, &first);
    driver.coexist = false;
    EXPECT_FALSE(canAdd(0));
    driver.coexist = true;
    driver.limit = 30;
    EXPECT_TRUE(canAdd(0));
    driver.limit = 29;
    EXPECT_FALSE(canAdd(0));
}

TEST_F(DatagramTest, HugeLengthsDoNotWrapBelowTheLimit) {
    SizedTag const huge(driver.log, "huge", 2147483647);
    SizedTag const two(driver.log, "two", 2);
    tags = {&huge, &huge};
    driver.limit = 2147483647;
    EXPECT_FALSE(canAdd(2));
    EXPECT_FALSE(driver.CanAddToDatagram(tags.data(), 2, &two));
    EXPECT_FALSE(driver.CanAddToDatagram(tags.data(), 1, &two));
}

TEST_F(DatagramTest, SuccessfulReadMakesEveryStatusGood) {
    Bytes values(8);
    std::array<idal_error_t, 3> status{0, -1, 99};
    EXPECT_TRUE(driver.ReadDatagramWithStatus(tags.data(), 2, values.data(), status.data()));
    EXPECT_EQ(status, (std::array<idal_error_t, 3>{1, 1, 99}));
    EXPECT_EQ(driver.readTags, (std::vector<ITag const*>{&first, &second}));
    EXPECT_EQ(driver.readValues, values.data());
}

TEST_F(DatagramTest, FailedReadLeavesTheStatuses) {
    driver.readSucceeds = false;
    Bytes values(8);
    std::array<idal_error_t, 2> status{0, 77};
    EXPECT_FALSE(driver.ReadDatagramWithStatus(tags.data(), 2, values.data(), status.data()));
    EXPECT_EQ(status, (std::array<idal_error_t, 2>{0, 77}));
}

TEST_F(DatagramTest, EmptyReadTouchesNoStatus) {
    std::array<idal_error_t, 1> status{77};
    EXPECT_TRUE(driver.ReadDatagramWithStatus(tags.data(), 0, nullptr, status.data()));
    EXPECT_TRUE(driver.ReadDatagramWithStatus(tags.data(), 0, nullptr, nullptr));
    EXPECT_EQ(status[0], 77);
}

} // namespace
