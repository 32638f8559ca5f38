#pragma once

#include "tests/support/Conversation.h"

#include <algorithm>
#include <functional>
#include <utility>

namespace velktest {

/**
 * A port with a PLC that answers every request: it receives the request's blocks, passes the payload to a function, and
 * sends the function's result. For tests that do not know beforehand how many exchanges there will be.
 */
class AnsweringPort : public ScriptedPort {
public:
    using Answer = std::function<Bytes(Bytes const& request)>;
    /** Changes a message before it reaches the panel. */
    using Disturbance = std::function<Bytes(Bytes message)>;

    explicit AnsweringPort(Framing framing, Answer answer) : framing_(std::move(framing)), answer_(std::move(answer)) {}

    Disturbance disturb;
    long long messages = 0;

    int Write(unsigned char const* bytes, int length, int /*reserved*/) override {
        AllocationPause const pause;
        ++messages;
        Bytes const message(bytes + framing_.routing.size(), bytes + length);
        if (message[0] == 0xAA) {
            TakeBlock(message);
        } else {
            TakeAcknowledge();
        }
        return length;
    }

    int Read(unsigned char* buffer, int maximum, int firstByteTimeoutMs, int /*inter*/, int* count,
             int /*reserved*/) override {
        AllocationPause const pause;
        Bytes message = std::exchange(pending_, {});
        if (disturb) {
            message = disturb(std::move(message));
        }
        if (message.empty()) {
            nowMs += firstByteTimeoutMs;
        }
        message.resize(std::min(message.size(), static_cast<std::size_t>(maximum)));
        std::copy(message.begin(), message.end(), buffer);
        *count = static_cast<int>(message.size());
        return 1;
    }

private:
    unsigned NumberOf(Bytes const& block) const {
        return framing_.bigEndian ? block[4] * 256U + block[5] : block[5] * 256U + block[4];
    }

    void TakeBlock(Bytes const& block) {
        if (NumberOf(block) == 1) {
            request_.clear();
        }
        request_.insert(request_.end(), block.begin() + 8, block.end());
        pending_ = framing_.Ack(NumberOf(block));
        replying_ = false;
    }

    void TakeAcknowledge() {
        if (!replying_) {
            replying_ = true;
            reply_ = answer_(request_);
            sent_ = 0;
            number_ = 0;
        } else if (number_ != 0 && sent_ == reply_.size()) {
            pending_ = framing_.Ack(0);
            return;
        }
        std::size_t const end = std::min(reply_.size(), sent_ + framing_.blockSize - 8);
        Bytes const piece(reply_.begin() + static_cast<std::ptrdiff_t>(sent_),
                          reply_.begin() + static_cast<std::ptrdiff_t>(end));
        sent_ = end;
        pending_ = framing_.Block(++number_, sent_ == reply_.size(), piece);
    }

    Framing framing_;
    Answer answer_;
    Bytes request_;
    Bytes reply_;
    Bytes pending_;
    std::size_t sent_ = 0;
    unsigned number_ = 0;
    bool replying_ = false;
};

} // namespace velktest
