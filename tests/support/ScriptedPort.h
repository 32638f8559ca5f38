#pragma once

#include "interfaces/HostServices.h"
#include "tests/support/AllocationGate.h"
#include "tests/support/Bytes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace velktest {

/**
 * A serial port that plays a script: which bytes the driver must write, and what each of its reads gets.
 *
 * The order of writes and reads is part of the script. The first deviation is reported once and derails the port;
 * from then on every read times out. Time is virtual: a time-out advances it by the time-out asked for.
 */
class ScriptedPort : public ISerialPort {
public:
    struct ReadCall {
        int maximum;
        int firstByteTimeoutMs;
        int interCharTimeoutMs;
        int reserved;
    };
    struct OpenCall {
        int baud;
        int parity;
        int dataBits;
        int stopBits;
        int rs485;
        bool operator==(OpenCall const&) const = default;
    };

    // The script.
    ScriptedPort& Expect(Bytes bytes) { return Add({Kind::kWrite, std::move(bytes), 0, 1}); }
    ScriptedPort& Expect(std::string_view hex) { return Expect(Hex(hex)); }
    ScriptedPort& Answer(Bytes bytes) {
        int const count = static_cast<int>(bytes.size());
        return Add({Kind::kRead, std::move(bytes), count, 1});
    }
    ScriptedPort& Answer(std::string_view hex) { return Answer(Hex(hex)); }
    /** An answer for which the port's read returns @p result, which is not 0. */
    ScriptedPort& AnswerReturning(Bytes bytes, int result) {
        int const count = static_cast<int>(bytes.size());
        return Add({Kind::kRead, std::move(bytes), count, result});
    }
    ScriptedPort& Silence() { return Add({Kind::kRead, {}, 0, 1}); }
    ScriptedPort& Fault() { return Add({Kind::kRead, {}, 0, 0}); }
    /** A fault of the port that nevertheless claims bytes. */
    ScriptedPort& FaultWith(Bytes bytes) {
        int const count = static_cast<int>(bytes.size());
        return Add({Kind::kRead, std::move(bytes), count, 0});
    }
    /** A port that lies about the number of bytes. */
    ScriptedPort& AnswerClaiming(Bytes bytes, int count) { return Add({Kind::kRead, std::move(bytes), count, 1}); }
    /** The driver must empty the port here (calls to Purge() are only checked against the script when asked). */
    ScriptedPort& ExpectPurge() { return Add({Kind::kPurge, {}, 0, 0}); }

    /** Reports the part of the script that was not played. */
    void ExpectDone() {
        if (!derailed_) {
            EXPECT_TRUE(script_.empty()) << script_.size() << " steps were not played; the next is "
                                         << Describe(script_.front());
        }
        script_.clear();
        derailed_ = false;
    }

    /** Drops the rest of the script, for tests where it is open whether it is played. */
    void Forget() {
        script_.clear();
        derailed_ = false;
    }

    // Observations.
    std::vector<ReadCall> reads;
    std::vector<Bytes> writes;
    std::vector<OpenCall> opens;
    int purges = 0;
    int closes = 0;
    int openResult = 1;
    bool writesFail = false;  ///< whether writes return 0; the bytes are checked nevertheless
    int purgesThatRemove = 0; ///< this many calls to Purge() return 1; each call lowers the number
    bool purgesForEver = false;
    long long nowMs = 0;

    // IInterface
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "ScriptedPort"; }
    int GetImpVersion() const override { return 1; }

    // ISerialPort
    int Open(int baud, int parity, int dataBits, int stopBits, int rs485) override {
        AllocationPause const pause;
        opens.push_back({baud, parity, dataBits, stopBits, rs485});
        return openResult;
    }

    void Close() override { ++closes; }

    int Purge(unsigned char* buffer, int reserved1, int reserved2) override {
        AllocationPause const pause;
        EXPECT_NE(buffer, nullptr);
        EXPECT_EQ(reserved1, 0);
        EXPECT_EQ(reserved2, 0);
        ++purges;
        if (!script_.empty() && script_.front().kind == Kind::kPurge) {
            script_.pop_front();
        }
        if (purgesForEver) {
            return 1;
        }
        if (purgesThatRemove > 0) {
            --purgesThatRemove;
            return 1;
        }
        return 0;
    }

    int Write(unsigned char const* bytes, int length, int reserved) override {
        AllocationPause const pause;
        EXPECT_EQ(reserved, 0);
        if (bytes == nullptr || length < 0) {
            Derail("write of " + std::to_string(length) + " bytes");
            return 0;
        }
        Bytes const written(bytes, bytes + length);
        writes.push_back(written);
        int const result = writesFail ? 0 : length;
        if (derailed_) {
            return result;
        }
        if (script_.empty() || script_.front().kind != Kind::kWrite) {
            Derail("write of " + ToHex(written));
        } else if (script_.front().bytes != written) {
            Derail("write of " + ToHex(written));
        } else {
            script_.pop_front();
        }
        return result;
    }

    int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int interCharTimeoutMs, int* count,
             int reserved) override {
        AllocationPause const pause;
        reads.push_back({maximum, firstByteTimeoutMs, interCharTimeoutMs, reserved});
        *count = 0;
        if (!derailed_ && (script_.empty() || script_.front().kind != Kind::kRead)) {
            Derail("read");
        }
        if (derailed_) {
            nowMs += firstByteTimeoutMs;
            return 1;
        }
        Step const step = std::move(script_.front());
        script_.pop_front();
        auto const length = std::min(step.bytes.size(), static_cast<std::size_t>(std::max(maximum, 0)));
        EXPECT_EQ(length, step.bytes.size()) << "the script answers more than the driver asks for";
        if (length != 0) {
            std::memcpy(buffer, step.bytes.data(), length);
        }
        *count = step.count;
        nowMs += step.bytes.empty() ? firstByteTimeoutMs : interCharTimeoutMs;
        return step.result;
    }

private:
    enum class Kind { kWrite, kRead, kPurge };
    struct Step {
        Kind kind;
        Bytes bytes;
        int count;
        int result;
    };

    ScriptedPort& Add(Step step) {
        script_.push_back(std::move(step));
        return *this;
    }

    static std::string Describe(Step const& step) {
        switch (step.kind) {
        case Kind::kWrite:
            return "write of " + ToHex(step.bytes);
        case Kind::kPurge:
            return "purge";
        case Kind::kRead:
            break;
        }
        return step.result == 0 ? "read that fails" : "read of " + ToHex(step.bytes);
    }

    void Derail(std::string const& seen) {
        derailed_ = true;
        ADD_FAILURE() << "after " << writes.size() << " writes and " << reads.size()
                      << " reads\n  the driver did: " << seen
                      << "\n  the script has: " << (script_.empty() ? "nothing" : Describe(script_.front()));
    }

    std::deque<Step> script_;
    bool derailed_ = false;
};

} // namespace velktest
