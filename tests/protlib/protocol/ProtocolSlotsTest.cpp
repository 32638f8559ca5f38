#include "protlib/protocol/ProtocolBase.h"
#include "tests/protlib/TestTag.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

namespace {

/** Overrides every operation and records which one was called; the base's own body never runs. */
class SlotDriver : public ProtocolBase {
public:
    ~SlotDriver() override { called = "destructor"; }
    IInterface* ConvertTo(char const* /*name*/) override { return note("ConvertTo", this); }
    char const* GetImpName() const override { return note("GetImpName", "3"); }
    int GetImpVersion() const override { return note("GetImpVersion", 4); }
    bool Config(char const* /*configuration*/) override { return note("Config", true); }
    ITag* CreateTag(char const* /*address*/) override { return note("CreateTag", static_cast<ITag*>(nullptr)); }
    void FreeTag(ITag* /*tag*/) override { called = "FreeTag"; }
    bool CanBeOptimized(ITag const* /*a*/, ITag const* /*b*/, bool /*write*/) const override {
        return note("CanBeOptimized", true);
    }
    bool Start() override { return note("Start", true); }
    bool Stop() override { return note("Stop", true); }
    bool Read(ITag const* /*tag*/, unsigned char* /*value*/) override { return note("Read", true); }
    bool Write(ITag const* /*tag*/, unsigned char const* /*value*/) override { return note("Write", true); }
    bool ReadBlock(ITag const* /*tag*/, unsigned char* /*bytes*/, int /*length*/) override {
        return note("ReadBlock", true);
    }
    bool WriteBlock(ITag const* /*tag*/, unsigned char const* /*bytes*/, int /*length*/) override {
        return note("WriteBlock", true);
    }
    int MaxDatagramItems(ITag const* /*tag*/) const override { return note("MaxDatagramItems", 15); }
    int MaxDatagramLength(ITag const* /*tag*/) const override { return note("MaxDatagramLength", 16); }
    bool CanCoexistInDatagram(ITag const* /*a*/, ITag const* /*b*/) const override {
        return note("CanCoexistInDatagram", true);
    }
    bool ReadDatagram(ITag const* const* /*tags*/, int /*count*/, unsigned char* /*values*/) override {
        return note("ReadDatagram", true);
    }
    char const* GetName() const override { return note("GetName", "19"); }
    char const* GetNextInstanceName() const override { return note("GetNextInstanceName", "20"); }
    int GetLastError() const override { return note("GetLastError", 21); }
    char const* GetLastErrorString() const override { return note("GetLastErrorString", "22"); }
    int GetProtocolVersion() const override { return note("GetProtocolVersion", 23); }
    int GetProtocolType() const override { return note("GetProtocolType", 24); }
    char const* GetProtocolName() const override { return note("GetProtocolName", "25"); }
    int GetInfo(char* /*text*/, int /*size*/) const override { return note("GetInfo", 26); }
    char const* GetXml() const override { return note("GetXml", "27"); }
    bool IsConverted() const override { return note("IsConverted", true); }
    char const* GetIdent() const override { return note("GetIdent", "29"); }
    void SetIdent(char const* /*ident*/) override { called = "SetIdent"; }
    bool DoCommand(char const* /*command*/, char* /*reply*/, int /*size*/) override { return note("DoCommand", true); }
    int Extend(int /*what*/, void* /*argument*/) override { return note("Extend", 32); }
    bool CanAddToDatagram(ITag const* const* /*tags*/, int /*count*/, ITag const* /*tag*/) override {
        return note("CanAddToDatagram", true);
    }
    bool ReadDatagramWithStatus(ITag const* const* /*tags*/, int /*count*/, unsigned char* /*values*/,
                                idal_error_t* /*status*/) override {
        return note("ReadDatagramWithStatus", true);
    }
    bool MultipleReadSupported() const override { return note("MultipleReadSupported", true); }
    bool MultipleRead(IMultiRead* /*request*/) override { return note("MultipleRead", true); }
    bool MultipleWriteSupported() const override { return note("MultipleWriteSupported", true); }
    bool MultipleWrite(IMultiWrite* /*request*/) override { return note("MultipleWrite", true); }
    int GetNodeID(ITag const* /*tag*/) const override { return note("GetNodeID", 39); }
    bool CanReadBitBlock(ITag const* /*tag*/) const override { return note("CanReadBitBlock", true); }
    bool ReadBitBlock(ITag const* /*tag*/, unsigned char* /*bytes*/, int /*bits*/) override {
        return note("ReadBitBlock", true);
    }
    void* GetInterface(char const* /*name*/) override { return note("GetInterface", static_cast<void*>(nullptr)); }
    int MaxUnusedGap(ITag const* /*tag*/) const override { return note("MaxUnusedGap", 43); }
    bool IsBefore(ITag const* /*a*/, ITag const* /*b*/) const override { return note("IsBefore", true); }
    bool IsAdjacent(ITag const* /*a*/, ITag const* /*b*/) const override { return note("IsAdjacent", true); }
    bool NeedsReadBeforeWrite(ITag const* /*tag*/) const override { return note("NeedsReadBeforeWrite", true); }
    bool CanWriteDatagrams(ITag const* /*tag*/) const override { return note("CanWriteDatagrams", true); }
    bool CanAddToWriteDatagram(ITag const* const* /*tags*/, int /*count*/, ITag const* /*tag*/) const override {
        return note("CanAddToWriteDatagram", true);
    }
    bool WriteDatagramWithStatus(ITag const* const* /*tags*/, int /*count*/, unsigned char const* /*values*/,
                                 idal_error_t* /*status*/) override {
        return note("WriteDatagramWithStatus", true);
    }
    bool CanWriteBitBlock(ITag const* /*tag*/) const override { return note("CanWriteBitBlock", true); }
    bool WriteBitBlock(ITag const* /*tag*/, unsigned char const* /*bytes*/, int /*bits*/) override {
        return note("WriteBitBlock", true);
    }
    TagBase* CreateTagBase(char const* /*address*/) override {
        return note("CreateTagBase", static_cast<TagBase*>(nullptr));
    }
    int GetMaxTm(ITag const* /*tag*/) const override { return note("GetMaxTm", 53); }

    static inline std::string called;

private:
    template <typename Answer>
    static Answer note(char const* operation, Answer answer) {
        called = operation;
        return answer;
    }
};

struct ProtocolSlots : testing::Test {
    using Tag = ITag const*;
    using Tags = ITag const* const*;

    /** Calls a slot and returns the name of its operation. */
    template <typename Result, typename... Arguments>
    std::string at(std::size_t slot, Arguments... arguments) {
        SlotDriver::called = "nothing";
        if constexpr (std::is_void_v<Result>) {
            callSlot<void>(&driver, slot, arguments...);
        } else {
            answer = static_cast<long>(0) + asNumber(callSlot<Result>(&driver, slot, arguments...));
        }
        return SlotDriver::called;
    }

    SlotDriver driver;
    TestTag tag;
    Tag oneTag = &tag;
    unsigned char byte = 0;
    idal_error_t status = 0;
    long answer = 0; ///< result of the last called slot that returns a number

private:
    static long asNumber(int value) { return value; }
    static long asNumber(void const* /*value*/) { return 0; }
};

TEST_F(ProtocolSlots, InterfaceAndDriverInstance) {
    char text[] = "text";
    EXPECT_EQ((at<void*, char const*>(2, "x")), "ConvertTo");
    EXPECT_EQ(at<void*>(3), "GetImpName");
    EXPECT_EQ(at<int>(4), "GetImpVersion");
    EXPECT_EQ(answer, 4);
    EXPECT_EQ((at<bool, char const*>(5, "x")), "Config");
    EXPECT_EQ((at<void*, char const*>(6, "x")), "CreateTag");
    EXPECT_EQ((at<void, ITag*>(7, nullptr)), "FreeTag");
    EXPECT_EQ((at<bool, Tag, Tag, bool>(8, &tag, &tag, true)), "CanBeOptimized");
    EXPECT_EQ(at<bool>(9), "Start");
    EXPECT_EQ(at<bool>(10), "Stop");
    EXPECT_EQ((at<bool, Tag, unsigned char*>(11, &tag, &byte)), "Read");
    EXPECT_EQ((at<bool, Tag, unsigned char const*>(12, &tag, &byte)), "Write");
    EXPECT_EQ((at<bool, Tag, unsigned char*, int>(13, &tag, &byte, 1)), "ReadBlock");
    EXPECT_EQ((at<bool, Tag, unsigned char const*, int>(14, &tag, &byte, 1)), "WriteBlock");
    EXPECT_EQ((at<int, Tag>(15, &tag)), "MaxDatagramItems");
    EXPECT_EQ(answer, 15);
    EXPECT_EQ((at<int, Tag>(16, &tag)), "MaxDatagramLength");
    EXPECT_EQ(answer, 16);
    EXPECT_EQ((at<bool, Tag, Tag>(17, &tag, &tag)), "CanCoexistInDatagram");
    EXPECT_EQ((at<bool, Tags, int, unsigned char*>(18, &oneTag, 1, &byte)), "ReadDatagram");
    EXPECT_EQ(at<void*>(19), "GetName");
    EXPECT_EQ(at<void*>(20), "GetNextInstanceName");
    EXPECT_EQ(at<int>(21), "GetLastError");
    EXPECT_EQ(answer, 21);
    EXPECT_EQ(at<void*>(22), "GetLastErrorString");
    EXPECT_EQ(at<int>(23), "GetProtocolVersion");
    EXPECT_EQ(answer, 23);
    EXPECT_EQ(at<int>(24), "GetProtocolType");
    EXPECT_EQ(answer, 24);
    EXPECT_EQ(at<void*>(25), "GetProtocolName");
    EXPECT_EQ((at<int, char*, int>(26, text, 4)), "GetInfo");
    EXPECT_EQ(answer, 26);
    EXPECT_EQ(at<void*>(27), "GetXml");
    EXPECT_EQ(at<bool>(28), "IsConverted");
    EXPECT_EQ(at<void*>(29), "GetIdent");
    EXPECT_EQ((at<void, char const*>(30, "x")), "SetIdent");
    EXPECT_EQ((at<bool, char const*, char*, int>(31, "x", text, 4)), "DoCommand");
    EXPECT_EQ((at<int, int, void*>(32, 1, nullptr)), "Extend");
    EXPECT_EQ(answer, 32);
}

TEST_F(ProtocolSlots, DatagramsWithStatus) {
    EXPECT_EQ((at<bool, Tags, int, Tag>(33, &oneTag, 1, &tag)), "CanAddToDatagram");
    EXPECT_EQ((at<bool, Tags, int, unsigned char*, idal_error_t*>(34, &oneTag, 1, &byte, &status)),
              "ReadDatagramWithStatus");
    EXPECT_EQ(at<bool>(35), "MultipleReadSupported");
    EXPECT_EQ((at<bool, IMultiRead*>(36, nullptr)), "MultipleRead");
    EXPECT_EQ(at<bool>(37), "MultipleWriteSupported");
    EXPECT_EQ((at<bool, IMultiWrite*>(38, nullptr)), "MultipleWrite");
}

TEST_F(ProtocolSlots, PlanningAndWrittenDatagrams) {
    EXPECT_EQ((at<int, Tag>(39, &tag)), "GetNodeID");
    EXPECT_EQ(answer, 39);
    EXPECT_EQ((at<bool, Tag>(40, &tag)), "CanReadBitBlock");
    EXPECT_EQ((at<bool, Tag, unsigned char*, int>(41, &tag, &byte, 8)), "ReadBitBlock");
    EXPECT_EQ((at<void*, char const*>(42, "x")), "GetInterface");
    EXPECT_EQ((at<int, Tag>(43, &tag)), "MaxUnusedGap");
    EXPECT_EQ(answer, 43);
    EXPECT_EQ((at<bool, Tag, Tag>(44, &tag, &tag)), "IsBefore");
    EXPECT_EQ((at<bool, Tag, Tag>(45, &tag, &tag)), "IsAdjacent");
    EXPECT_EQ((at<bool, Tag>(46, &tag)), "NeedsReadBeforeWrite");
    EXPECT_EQ((at<bool, Tag>(47, &tag)), "CanWriteDatagrams");
    EXPECT_EQ((at<bool, Tags, int, Tag>(48, &oneTag, 1, &tag)), "CanAddToWriteDatagram");
    EXPECT_EQ((at<bool, Tags, int, unsigned char const*, idal_error_t*>(49, &oneTag, 1, &byte, &status)),
              "WriteDatagramWithStatus");
    EXPECT_EQ((at<bool, Tag>(50, &tag)), "CanWriteBitBlock");
    EXPECT_EQ((at<bool, Tag, unsigned char const*, int>(51, &tag, &byte, 8)), "WriteBitBlock");
    EXPECT_EQ((at<void*, char const*>(52, "x")), "CreateTagBase");
    EXPECT_EQ((at<int, Tag>(53, &tag)), "GetMaxTm");
    EXPECT_EQ(answer, 53);
}

TEST_F(ProtocolSlots, FirstTwoDestroyAndDelete) {
    alignas(SlotDriver) unsigned char storage[sizeof(SlotDriver)];
    auto* const inPlace = new (storage) SlotDriver;
    SlotDriver::called.clear();
    callSlot<void>(inPlace, 0);
    EXPECT_EQ(SlotDriver::called, "destructor");
    auto* const onHeap = new SlotDriver;
    SlotDriver::called.clear();
    callSlot<void>(onHeap, 1);
    EXPECT_EQ(SlotDriver::called, "destructor");
}

TEST_F(ProtocolSlots, AllInterfacesOfTheChainHaveTheAddressOfTheObject) {
    void const* const object = &driver;
    EXPECT_EQ(static_cast<void const*>(static_cast<ProtocolBase*>(&driver)), object);
    EXPECT_EQ(static_cast<void const*>(static_cast<IProtocol3*>(&driver)), object);
    EXPECT_EQ(static_cast<void const*>(static_cast<IProtocol2*>(&driver)), object);
    EXPECT_EQ(static_cast<void const*>(static_cast<IProtocol*>(&driver)), object);
    EXPECT_EQ(static_cast<void const*>(static_cast<IInterface*>(&driver)), object);
}

} // namespace
