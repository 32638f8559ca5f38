#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace velk::simulation {

/** Writes to standard output or another stream without waiting. */
class StreamWriter {
public:
    enum class OnFailure {
        Throw,  ///< CommandError, when the stream can no longer be written
        Forget, ///< output is dropped, because there is no reader
    };

    explicit StreamWriter(int stream, OnFailure onFailure = OnFailure::Throw);

    void put(std::string_view text) { text_ += text; }

    [[nodiscard]] bool isPending() const { return written_ < text_.size(); }

    /** Writable when more of the pending output fits. */
    [[nodiscard]] int descriptor() const { return own_.isOpen() ? own_.get() : stream_; }

    /** Writes what fits at once and returns whether anything did. */
    bool write();

    /** How long to wait for a stream that is read slowly or no longer read. */
    struct Patience {
        std::chrono::milliseconds standstill;
        std::chrono::milliseconds altogether;
    };

    /** Writes the rest and returns how many lines remained when the time was over. */
    std::size_t finish(Patience patience);

private:
    void fail(int error);
    void forget();
    [[nodiscard]] bool isReady(std::chrono::milliseconds wait) const;

    int stream_;
    OnFailure onFailure_;
    base::FileDescriptor own_;
    std::string text_;
    std::size_t written_ = 0;
};

} // namespace velk::simulation
