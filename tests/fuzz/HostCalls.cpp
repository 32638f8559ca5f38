#include "tests/fuzz/HostCalls.h"

#include "tests/support/ConfigText.h"
#include "tests/support/SymbolFileBytes.h"

#include <array>
#include <iterator>

namespace velktest {

namespace {

constexpr int kMostCalls = 24;
constexpr std::size_t kMostTags = 100; // ten more than fit a datagram
constexpr std::size_t kLongestValue = 80'000;
constexpr int kCallsThatRecoveryMayTake = 12;

constexpr std::array kAddresses{
    "1?A?M?0?short",
    "1?B?I?5?int-3",
    "1?FLAG?MB?2?boolean",
    "1?NONE?M?9?string-20",
    "1?A?M?0.6?boolean-12",
    "2?A?M?0?short",
    "2?B?Q?7?double",
    "2?FLAG?QB?11?boolean",
    "2?A?3?1?unsignedInt-5(swap2,inv)",
    "1?A?M?3?short(bcd)",
    "1?A?M?0?string-500",
    "2?PLC_PRG/Deep.Name[3]?4?0?float(neg)",
    "1?A?M?0?string-74970",
    "1?A?M?0?boolean-0",
    "0?A?M?0?byte",
    "256?A?5?0?unsignedByte-40(swapnibble)",
    "257?A?M?0?short",
    "1?ID?PROJ_ID?7?unsignedInt",
    "2?ID?PROJ_ID?0x7FFFFFFF?unsignedInt",
    "1?A?M?2147483647.7?boolean-9",
    "2?B?M?0?double-4",
    "1?A?M?0?unsignedShort-10000",
};

constexpr std::array kBlockSizes{"128", "1024", "1441", "1460", "129"};
constexpr std::array kRepeats{"2", "1", "3"};

SymbolFileBytes GoodFile(std::uint32_t project) {
    SymbolFileBytes file(project);
    file.Variable("A", 0, 16).Variable("B", 1, 32).Variable("FLAG", 0, 13).Variable("PLC_PRG.Deep.Name[3]", 4, 0);
    return file;
}

std::size_t HostLength(std::vector<ITag*> const& tags) {
    std::size_t length = 0;
    for (ITag const* const tag : tags) {
        length += static_cast<std::size_t>(tag->GetVarLength());
    }
    return length;
}

} // namespace

HostCalls::HostCalls(FuzzedDriver& driver, FuzzInput& input) : driver_(driver), input_(input) {
    if (input_.Flag()) {
        StoreFile();
    }
    Configure();
    Require(driver_->Start(), "the driver starts");
    tags_ = {driver_->CreateTag(kAddresses[0]), driver_->CreateTag(kAddresses[1]), driver_->CreateTag(kAddresses[2])};
}

void HostCalls::Configure() {
    ConfigText text;
    text.Set("BlockSize", input_.Pick(kBlockSizes)).Set("repeat", input_.Pick(kRepeats));
    text.Node(2, "model", "Motorola").Node(256, "model", "Motorola");
    if (input_.Flag()) {
        text.Set("protType", "ABB_RS232_AC").Set("RoutingLevels", "2").Set("CouplerLV1", "couple6");
        text.Set("ChannelLV2", "19").Set("AddressLV1", "10.200.3.4");
    }
    if (input_.Flag()) {
        text.Set("model", "Motorola");
    }
    Require(driver_->Config(text.Build().c_str()), "the configuration is good");
}

void HostCalls::Run() {
    for (int calls = 0; calls < kMostCalls && !input_.AtEnd(); ++calls) {
        Call();
    }
}

void HostCalls::Call() {
    switch (input_.Below(16)) {
    case 0:
    case 1:
    case 2:
        return Read(SomeTags());
    case 3:
        return ReadWithoutStatus(SomeTags());
    case 4:
    case 5:
        return Write(SomeTags());
    case 6:
        return ReadOne(input_.Pick(tags_));
    case 7:
        return WriteOne(input_.Pick(tags_));
    case 8:
        return ReadBlock(input_.Pick(tags_));
    case 9:
    case 10:
        if (ITag* const tag = MakeTag(); tag != nullptr) {
            tags_.push_back(tag);
        }
        return;
    case 11:
        return Plan(SomeTags());
    case 12:
        return Command();
    case 13:
        return ForgetTag();
    case 14:
        return StoreFile();
    default:
        return Trouble();
    }
}

/** A failure caused by the host or its services. */
void HostCalls::Trouble() {
    switch (input_.Below(8)) {
    case 0:
        return Configure();
    case 1:
        return driver_.LoseStorage();
    case 2:
        return driver_.SpoilPaths();
    case 3:
        return driver_.FillDisk(static_cast<int>(input_.Below(3)));
    case 4:
        return driver_.RestoreServices();
    case 5:
        refusedAllocation_ = input_.Byte() % 64U + 1;
        return;
    case 6:
        driver_.LosePort();
        return Restart();
    default:
        return Restart();
    }
}

void HostCalls::Restart() {
    driver_->Stop();
    if (input_.Below(4) != 0) {
        driver_->Start();
    }
}

ITag* HostCalls::MakeTag() {
    unsigned const number = input_.Below(kAddresses.size() + 1);
    std::string const address = number < kAddresses.size() ? kAddresses[number] : input_.Text('\n');
    ITag* const tag = Driver([&] { return driver_->CreateTag(address.c_str()); });
    if (tag == nullptr || static_cast<std::size_t>(tag->GetVarLength()) <= kLongestValue) {
        return tag;
    }
    driver_->FreeTag(tag);
    return nullptr;
}

/** One tag or a few; sometimes more than fit a datagram, or for a call with a count of 0. */
std::vector<ITag*> HostCalls::SomeTags() {
    unsigned const wish = input_.Byte();
    emptyList_ = wish == 0xFD;
    std::size_t const count = wish == 0xFF ? kMostTags : wish == 0xFE ? kMostTags - 10 : wish % 6 + 1;
    std::vector<ITag*> tags;
    for (std::size_t i = 0; i < count; ++i) {
        ITag* const tag = input_.Pick(tags_);
        if (HostLength(tags) < kLongestValue) {
            tags.push_back(tag);
        }
    }
    return tags;
}

void HostCalls::Read(std::vector<ITag*> const& tags) {
    int const count = emptyList_ ? 0 : static_cast<int>(tags.size());
    ExactBuffer values(HostLength(tags));
    std::vector<idal_error_t> status(tags.size(), 77);
    bool const done =
        Driver([&] { return driver_->ReadDatagramWithStatus(tags.data(), count, values.Data(), status.data()); });
    for (int i = 0; i < count; ++i) {
        idal_error_t const each = status[static_cast<std::size_t>(i)];
        Require(each == 1 || each == -1 || (each == 0 && !done), "a status is one of three");
    }
}

void HostCalls::ReadWithoutStatus(std::vector<ITag*> const& tags) {
    ExactBuffer values(HostLength(tags));
    Driver([&] { return driver_->ReadDatagram(tags.data(), static_cast<int>(tags.size()), values.Data()); });
}

void HostCalls::Write(std::vector<ITag*> const& tags) {
    int const count = emptyList_ ? 0 : static_cast<int>(tags.size());
    ExactBuffer const values(HostLength(tags), static_cast<unsigned char>(input_.Byte()));
    std::vector<idal_error_t> status(static_cast<std::size_t>(count), 77);
    bool const done =
        Driver([&] { return driver_->WriteDatagramWithStatus(tags.data(), count, values.Data(), status.data()); });
    Require(count == 0 || status == std::vector<idal_error_t>(tags.size(), done ? 1 : 77),
            "a list is written whole or not at all");
}

void HostCalls::ReadOne(ITag* tag) {
    ExactBuffer value(HostLength({tag}));
    Driver([&] { return driver_->Read(tag, value.Data()); });
}

void HostCalls::WriteOne(ITag* tag) {
    ExactBuffer const value(HostLength({tag}), static_cast<unsigned char>(input_.Byte()));
    Driver([&] { return driver_->Write(tag, value.Data()); });
}

void HostCalls::ReadBlock(ITag* tag) {
    unsigned const length = input_.Word();
    ExactBuffer bytes(length);
    Driver([&] { return driver_->ReadBlock(tag, bytes.Data(), static_cast<int>(length)); });
}

void HostCalls::Plan(std::vector<ITag*> const& tags) {
    int const count = static_cast<int>(tags.size());
    bool const fits = driver_->CanAddToDatagram(tags.data(), count, tags.back());
    Require(fits == driver_->CanAddToWriteDatagram(tags.data(), count, tags.back()), "one rule for reads and writes");
    driver_->IsBefore(tags.front(), tags.back());
    driver_->IsAdjacent(tags.front(), tags.back());
    ITag const* const copy = tags.back()->Clone();
    Require(copy->PackedLen() == tags.back()->PackedLen(), "a copy is like the tag");
    delete copy;
}

void HostCalls::Command() {
    constexpr std::array kCommands{"read 1?B?I?5?int-3", "write 1?A?M?0?short 3412", "lasterror", "info",
                                   "read 2?FLAG?MB?13?boolean"};
    ExactBuffer reply(input_.Byte());
    char const* const command = input_.Pick(kCommands);
    auto* const text = reinterpret_cast<char*>(reply.Data());
    Driver([&] { return driver_->DoCommand(command, text, static_cast<int>(reply.Size())); });
}

/** At least one tag is always kept. */
void HostCalls::ForgetTag() {
    if (tags_.size() > 1) {
        auto const tag = tags_.begin() + static_cast<std::ptrdiff_t>(input_.Below(tags_.size()));
        driver_->FreeTag(*tag);
        tags_.erase(tag);
    }
}

/** A good file, or one with some wrong bytes. */
void HostCalls::StoreFile() {
    int const node = static_cast<int>(input_.Below(3));
    Bytes file = GoodFile(7 + input_.Below(3)).Build();
    for (unsigned changes = input_.Below(4); changes != 0; --changes) {
        file[input_.Byte() % file.size()] = static_cast<unsigned char>(input_.Byte());
    }
    if (input_.Below(8) == 7) {
        file.resize(input_.Byte() % file.size());
    }
    driver_.RestoreServices(); // nothing can be stored on a full device
    FuzzedDriver::Store(node, file);
}

void HostCalls::ExpectRecovery(char const* address) {
    driver_.RestoreServices();
    Require(driver_->Start(), "the driver starts again");
    ITag* const tag = driver_->CreateTag(address);
    Require(tag != nullptr, "a good address makes a tag");
    bool good = false;
    for (int call = 0; call < kCallsThatRecoveryMayTake && !good; ++call) {
        ExactBuffer value(HostLength({tag}));
        idal_error_t status = 0;
        good = driver_->ReadDatagramWithStatus(&tag, 1, value.Data(), &status) && status == 1;
    }
    Require(good, "a healthy line is read again");
}

} // namespace velktest
