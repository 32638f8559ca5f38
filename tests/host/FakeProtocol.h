#pragma once

#include "interfaces/IProtocol.h"
#include "tests/host/FakeTag.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace hosttest {

/** A driver instance without a PLC: its tags hold their values themselves. Records every call that moves values. */
class FakeProtocol final : public IProtocol3 {
public:
    // Set by tests.
    int maxItems = 90;
    int maxLength = 1024;
    bool writesDatagrams = true;
    int spoiledCode = -6;
    std::string spoiledText = "One of the values has bad quality";
    std::set<int> silentNodes;              ///< time out
    std::optional<std::size_t> silentAfter; ///< so many calls, all nodes time out
    bool works = true;                      ///< Config, Start, Stop
    std::string ident;
    std::optional<std::string> consoleReply; ///< nothing: the command is not known

    std::vector<std::string> calls;
    int code = 1;
    std::string text;

    void setError(int newCode, std::string newText) {
        code = newCode;
        text = std::move(newText);
    }

    IInterface* ConvertTo(char const* name) override { return std::string(name) == "IProtocol3" ? this : nullptr; }
    char const* GetImpName() const override { return "FakeProtocol"; }
    int GetImpVersion() const override { return 100; }

    bool Config(char const* configuration) override { return step(std::string("Config ") + configuration); }
    ITag* CreateTag(char const* address) override {
        calls.push_back(std::string("CreateTag ") + address);
        if (!works) {
            setError(-1, std::string("Tag URI error: ") + address);
            return nullptr;
        }
        owned.push_back(std::make_unique<FakeTag>(address, 0, ICU_INT, 4));
        return owned.back().get();
    }
    void FreeTag(ITag* tag) override {
        calls.emplace_back("FreeTag");
        std::erase_if(owned, [tag](auto const& one) { return one.get() == tag; });
    }
    bool CanBeOptimized(ITag const*, ITag const*, bool) const override { return false; }
    bool Start() override { return step("Start"); }
    bool Stop() override { return step("Stop"); }

    bool Read(ITag const* tag, unsigned char* value) override {
        FakeTag const& one = fake(tag);
        calls.push_back("Read " + one.name);
        return answers({&tag, 1}) && copyOut(one, value);
    }
    bool Write(ITag const* tag, unsigned char const* value) override {
        FakeTag const& one = fake(tag);
        calls.push_back("Write " + one.name);
        return answers({&tag, 1}) && copyIn(one, value);
    }
    bool ReadBlock(ITag const*, unsigned char*, int) override { return false; }
    bool WriteBlock(ITag const*, unsigned char const*, int) override { return false; }

    int MaxDatagramItems(ITag const*) const override { return maxItems; }
    int MaxDatagramLength(ITag const*) const override { return maxLength; }
    bool CanCoexistInDatagram(ITag const* a, ITag const* b) const override {
        return !fake(a).alone && !fake(b).alone && fake(a).node == fake(b).node;
    }
    bool ReadDatagram(ITag const* const*, int, unsigned char*) override { return false; }
    char const* GetName() const override { return "FAKE"; }
    char const* GetNextInstanceName() const override { return "FAKE"; }
    int GetLastError() const override { return code; }
    char const* GetLastErrorString() const override { return text.c_str(); }
    int GetProtocolVersion() const override { return 1; }
    int GetProtocolType() const override { return 1; }
    char const* GetProtocolName() const override { return "Fake"; }
    int GetInfo(char*, int) const override { return 0; }
    char const* GetXml() const override { return nullptr; }
    bool IsConverted() const override { return false; }
    char const* GetIdent() const override { return ident.c_str(); }
    void SetIdent(char const* newIdent) override { ident = newIdent; }
    bool DoCommand(char const*, char* reply, int size) override {
        if (!consoleReply) {
            return false;
        }
        std::size_t const count = consoleReply->copy(reply, static_cast<std::size_t>(size) - 1);
        reply[count] = '\0';
        return true;
    }
    int Extend(int, void*) override { return 0; }

    bool CanAddToDatagram(ITag const* const* tags, int count, ITag const* tag) override {
        return fits(tags, count, tag);
    }
    bool ReadDatagramWithStatus(ITag const* const* tags, int count, unsigned char* values,
                                idal_error_t* status) override {
        List const list(tags, static_cast<std::size_t>(count));
        calls.push_back("ReadDatagram" + names(list));
        std::fill_n(status, count, kItemNotProcessed);
        if (!answers(list)) {
            return false;
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            status[i] = fake(list[i]).status;
            copyOut(fake(list[i]), values);
            values += fake(list[i]).length;
        }
        return true;
    }
    bool MultipleReadSupported() const override { return false; }
    bool MultipleRead(IMultiRead*) override { return false; }
    bool MultipleWriteSupported() const override { return false; }
    bool MultipleWrite(IMultiWrite*) override { return false; }

    int GetNodeID(ITag const* tag) const override { return fake(tag).node; }
    bool CanReadBitBlock(ITag const*) const override { return false; }
    bool ReadBitBlock(ITag const*, unsigned char*, int) override { return false; }
    void* GetInterface(char const*) override { return nullptr; }
    int MaxUnusedGap(ITag const*) const override { return 0; }
    bool IsBefore(ITag const*, ITag const*) const override { return false; }
    bool IsAdjacent(ITag const*, ITag const*) const override { return false; }
    bool NeedsReadBeforeWrite(ITag const*) const override { return false; }
    bool CanWriteDatagrams(ITag const*) const override { return writesDatagrams; }
    bool CanAddToWriteDatagram(ITag const* const* tags, int count, ITag const* tag) const override {
        return fits(tags, count, tag);
    }
    bool WriteDatagramWithStatus(ITag const* const* tags, int count, unsigned char const* values,
                                 idal_error_t* status) override {
        List const list(tags, static_cast<std::size_t>(count));
        calls.push_back("WriteDatagram" + names(list));
        if (!answers(list)) {
            return false;
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            copyIn(fake(list[i]), values);
            values += fake(list[i]).length;
            status[i] = kItemGood;
        }
        return true;
    }
    bool CanWriteBitBlock(ITag const*) const override { return false; }
    bool WriteBitBlock(ITag const*, unsigned char const*, int) override { return false; }
    TagBase* CreateTagBase(char const*) override { return nullptr; }
    int GetMaxTm(ITag const*) const override { return 0; }

private:
    using List = std::span<ITag const* const>;

    static FakeTag const& fake(ITag const* tag) { return static_cast<FakeTag const&>(*tag); }

    static std::string names(List list) {
        std::string text;
        for (ITag const* const tag : list) {
            text += " " + fake(tag).name;
        }
        return text;
    }

    bool step(std::string call) {
        calls.push_back(std::move(call));
        if (!works) {
            setError(-3, "refused by the test");
        }
        return works;
    }

    bool fits(ITag const* const* tags, int count, ITag const* tag) const {
        EXPECT_GT(count, 0) << "a driver looks at the first tag of the list";
        if (count < 1 || !CanCoexistInDatagram(tags[0], tag) || maxItems <= count) {
            return false;
        }
        int length = fake(tag).packed;
        for (int i = 0; i < count; ++i) {
            length += fake(tags[i]).packed;
        }
        return length <= maxLength;
    }

    bool answers(List list) {
        for (ITag const* const tag : list) {
            if (silentNodes.contains(fake(tag).node) || (silentAfter && calls.size() > *silentAfter)) {
                setError(-4, "Timeout on Acknowledge");
                return false;
            }
            if (fake(tag).spoils) {
                setError(spoiledCode, spoiledText);
                return false;
            }
        }
        return true;
    }

    static bool copyOut(FakeTag const& tag, unsigned char* value) {
        std::copy(tag.value.begin(), tag.value.end(), value);
        return true;
    }
    static bool copyIn(FakeTag const& tag, unsigned char const* value) {
        std::copy_n(value, tag.value.size(), tag.value.begin());
        return true;
    }

    std::vector<std::unique_ptr<FakeTag>> owned;
};

} // namespace hosttest
