#include "tests/fuzz/HostCalls.h"
#include "tests/fuzz/MemoryBudget.h"
#include "tests/support/Framing.h"
#include "tests/support/SymbolFileBytes.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>

/**
 * A PLC that frames its messages well, so that the input reaches the layers above the frames: answers to logins, lists
 * and file reads. It corrupts some messages. Time is virtual.
 *
 * The input first configures the line, then chooses the host's calls and the PLC's answers, in the order in which they
 * are needed.
 */
namespace {

using namespace velktest;

constexpr std::size_t kRoutingLength = 19;
constexpr std::size_t kMostMemory = 12'000'000;

/** Not the identifier of a corrupted file: the driver trusts a file that has the identifier of the running program. */
constexpr std::uint32_t kHealthyProject = 0x5EED1234;

class FuzzedPlc final : public ISerialPort {
public:
    explicit FuzzedPlc(FuzzInput& input) : input_(input) {
        static constexpr std::array<std::size_t, 4> kBlockSizes{128, 1441, 1000, 40};
        framing_.blockSize = input_.Pick(kBlockSizes);
        program_ = Program();
    }

    /** From now on everything is answered correctly. */
    void Heal() {
        healthy_ = true;
        program_ = SymbolFileBytes(kHealthyProject).Variable("A", 0, 16).Build();
    }

    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "FuzzedPlc"; }
    int GetImpVersion() const override { return 1; }
    int Open(int /*baud*/, int /*parity*/, int /*dataBits*/, int /*stopBits*/, int /*rs485*/) override { return 1; }
    void Close() override {}
    int Purge(unsigned char* /*buffer*/, int /*reserved1*/, int /*reserved2*/) override {
        pending_.clear();
        return 0;
    }

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        AllocationPause const pause;
        Require(length > 0, "something is sent");
        Bytes message(bytes, bytes + length);
        bool const routed = message.front() == 0x4F;
        framing_.routing.assign(routed ? kRoutingLength : 0, 0);
        message.erase(message.begin(), message.begin() + (routed ? kRoutingLength : 0));
        Require(message.size() >= 6, "a message has a header");
        if (message.front() == 0xAA) {
            TakeBlock(message);
        } else {
            TakeAcknowledge();
        }
        return length;
    }

    int Read(unsigned char* buffer, int maximum, int /*firstByteTimeoutMs*/, int /*interCharTimeoutMs*/, int* count,
             int /*reserved*/) override {
        AllocationPause const pause;
        Bytes message = std::exchange(pending_, {});
        if (--messagesUntilSpoilt_ == 0 && !healthy_) {
            Spoil(message);
        }
        message.resize(std::min(message.size(), static_cast<std::size_t>(maximum)));
        std::copy(message.begin(), message.end(), buffer);
        *count = static_cast<int>(message.size());
        return 1;
    }

private:
    /** A symbol file: good, with many variables, with some changed bytes, or consisting of the input's bytes. */
    Bytes Program() {
        unsigned const kind = input_.Below(8);
        if (kind == 7) {
            return input_.Take(input_.Word() % 512);
        }
        SymbolFileBytes file(7 + input_.Below(3));
        file.Variable("A", 0, 16)
            .Variable("B", kind == 6 ? 9 : 1, kind == 5 ? 0x80000000U : 32)
            .Variable("FLAG", 0, 13);
        for (unsigned more = kind == 4 ? 40U + input_.Byte() * 2U : 0U; more != 0; --more) {
            file.Variable("PLC_PRG.Variable" + std::to_string(more), 0, more);
        }
        Bytes bytes = file.Build();
        for (unsigned changes = kind == 3 ? input_.Below(8) : 0; changes != 0; --changes) {
            bytes[input_.Word() % bytes.size()] = static_cast<unsigned char>(input_.Byte());
        }
        return bytes;
    }

    unsigned NumberOf(Bytes const& block) const {
        return framing_.bigEndian ? block[4] * 256U + block[5] : block[5] * 256U + block[4];
    }

    void TakeBlock(Bytes const& block) {
        Require(block.size() > 8, "a block is not empty");
        unsigned const next = number_ + 1;
        if (answering_ || NumberOf(block) != next) { // the first block: only its number shows the byte order
            framing_.bigEndian = block[5] == 1;
            request_.clear();
        }
        number_ = NumberOf(block);
        Require(number_ == (request_.empty() ? 1 : next), "blocks are numbered from 1");
        Bytes const payload(block.begin() + 8, block.end());
        Require(framing_.Block(number_, block[7] != 0, payload) == framing_.routing + block, "a block is framed well");
        request_.insert(request_.end(), payload.begin(), payload.end());
        pending_ = framing_.Ack(number_);
        answering_ = false;
    }

    void TakeAcknowledge() {
        if (!answering_) {
            answering_ = true;
            reply_ = Answer();
            sent_ = 0;
            number_ = 0;
        } else if (number_ != 0 && sent_ == reply_.size()) {
            pending_ = framing_.Ack(0);
            return;
        }
        if (silent_) {
            return;
        }
        std::size_t const end = std::min(reply_.size(), sent_ + framing_.blockSize - 8);
        Bytes const piece(reply_.begin() + static_cast<std::ptrdiff_t>(sent_),
                          reply_.begin() + static_cast<std::ptrdiff_t>(end));
        sent_ = end;
        pending_ = framing_.Block(++number_, sent_ == reply_.size(), piece);
    }

    Bytes Answer() {
        silent_ = false;
        if (healthy_) {
            return Healthy();
        }
        if (unsigned const spoilt = input_.Byte(); spoilt >= 0xE0) {
            messagesUntilSpoilt_ = static_cast<int>(spoilt & 7U) + 1;
        }
        static constexpr std::array<unsigned, 8> kStatuses{0x48, 0x33, 0, 1000, 1, 0xFFFF, 0xE803, 0x3300};
        switch (input_.Below(16)) {
        case 8:
            return WithStatus(input_.Pick(kStatuses));
        case 9:
            return input_.Take(input_.Word() % 2048);
        case 10: // about as much as fits the driver's buffer
            return Bytes((framing_.blockSize < 1000 ? 2'000 : 74'500) + input_.Byte() * 4U,
                         static_cast<unsigned char>(input_.Byte()));
        case 11:
            return Changed();
        case 12: {
            Bytes reply = Healthy();
            reply.resize(input_.Word() % (reply.size() + 40));
            return reply;
        }
        case 13: {
            Bytes const head = framing_.Word(0) + framing_.Word(input_.Below(4)) + framing_.Word(input_.Word());
            return head + input_.Take(input_.Word() % 1024);
        }
        case 14: // the PLC gets another program and restarts
            program_ = Program();
            loggedIn_ = false;
            return Healthy();
        case 15:
            silent_ = true;
            return {};
        default:
            return Healthy();
        }
    }

    Bytes Healthy() {
        switch (request_[0]) {
        case 0x42:
            return Hex("00");
        case 0x01:
            loggedIn_ = true;
            return framing_.Word(1000);
        case 0x02:
            loggedIn_ = false;
            return framing_.Word(0);
        case 0x31:
            position_ = 0;
            return FilePiece();
        case 0x32:
            return FilePiece();
        case 0x2E:
        case 0x3C:
            return loggedIn_ ? ListReply() : framing_.Word(1);
        default:
            return framing_.Word(0);
        }
    }

    Bytes WithStatus(unsigned status) {
        Bytes reply = Healthy();
        reply.resize(std::max<std::size_t>(reply.size(), 2));
        Bytes const word = framing_.Word(status);
        std::copy(word.begin(), word.end(), reply.begin());
        return reply;
    }

    Bytes Changed() {
        Bytes reply = Healthy();
        for (unsigned changes = input_.Below(3) + 1; changes != 0 && !reply.empty(); --changes) {
            reply[input_.Word() % reply.size()] = static_cast<unsigned char>(input_.Byte());
        }
        return reply;
    }

    Bytes FilePiece() {
        static constexpr std::array<std::size_t, 6> kSizes{65'000, 100, 1, 1'430, 0, 7};
        std::size_t const wish = healthy_ ? kSizes[0] : input_.Pick(kSizes);
        std::size_t const size = std::min(wish, program_.size() - std::min(position_, program_.size()));
        auto const start = program_.begin() + static_cast<std::ptrdiff_t>(std::min(position_, program_.size()));
        position_ += size;
        Bytes const bytes(start, start + static_cast<std::ptrdiff_t>(size));
        return framing_.Word(0) + framing_.Word(position_ < program_.size() ? 1 : 0) + framing_.Word(size) + bytes;
    }

    unsigned NumberAt(std::size_t at, std::size_t width) const {
        Require(at + width <= request_.size(), "a request is whole");
        unsigned number = 0;
        for (std::size_t i = 0; i < width; ++i) {
            number = number << 8U | request_[at + (framing_.bigEndian ? i : width - 1 - i)];
        }
        return number;
    }

    /** Walks through the request, so that it must be complete. */
    Bytes ListReply() {
        bool const write = request_[0] == 0x3C;
        Bytes values;
        values.reserve(2 * request_.size());
        std::size_t at = 6;
        for (unsigned items = NumberAt(2, 4); items != 0; --items) {
            unsigned const size = std::max(NumberAt(at + 6, 4), 1U);
            Require(NumberAt(at, 2) <= 5, "an item has one of the areas");
            at += 10 + (write ? size : 0);
            values.push_back(!healthy_ && input_.Byte() == 0xFF ? 0 : 1); // quality
            Bytes const value = healthy_ ? Bytes() : input_.Take(std::min(size, 8U));
            values.insert(values.end(), value.begin(), value.end());
            values.resize(values.size() + size - value.size(), 0x99);
        }
        Require(request_.size() == at + 4, "a list ends with the project");
        if (program_.size() >= 16 && ProjectOfProgram() != Bytes(request_.end() - 4, request_.end())) {
            return framing_.Word(0x48);
        }
        return write ? framing_.Word(0) : framing_.Word(0) + framing_.Long(0) + values;
    }

    /** The program's own identifier. */
    Bytes ProjectOfProgram() const {
        Bytes identifier(program_.begin() + 12, program_.begin() + 16);
        if (framing_.bigEndian) {
            std::reverse(identifier.begin(), identifier.end());
        }
        return identifier;
    }

    void Spoil(Bytes& message) {
        switch (input_.Below(5)) {
        case 0:
            message.clear();
            return;
        case 1:
            message.resize(input_.Word() % (message.size() + 1));
            return;
        case 2:
            message = message + input_.Take(input_.Byte());
            return;
        case 3:
            message.resize(2'000, 0x55);
            return;
        default:
            if (!message.empty()) {
                message[input_.Word() % message.size()] ^= static_cast<unsigned char>(input_.Byte());
            }
            return;
        }
    }

    FuzzInput& input_;
    Framing framing_;
    Bytes program_;
    bool healthy_ = false;
    bool loggedIn_ = false; ///< a list is not answered without a login
    bool silent_ = false;

    Bytes request_;
    Bytes reply_;
    Bytes pending_;
    std::size_t sent_ = 0;
    std::size_t position_ = 0;
    unsigned number_ = 0;
    bool answering_ = true; ///< the request is complete
    int messagesUntilSpoilt_ = 0;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
    FuzzInput input(data, size);
    MemoryBudget const budget(kMostMemory);
    FuzzedPlc plc(input);
    FuzzedDriver driver(plc);
    HostCalls host(driver, input);
    host.Run();
    plc.Heal();
    host.ExpectRecovery("1?A?M?0?short");
    return 0;
}
