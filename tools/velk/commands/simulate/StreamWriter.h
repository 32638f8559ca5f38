#pragma once

#include "base/FileDescriptor.h"

#include <chrono>
#include <cstddef>
#include <string>
#include <string_view>

namespace velk::simulation {

/** Writes to standard output, or another stream, only what it takes without waiting. */
class StreamWriter {
public:
    enum class OnFailure {
        Throw,  ///< CommandError, when nothing can be written any more
        Forget, ///< what is put is lost, for nobody is left to be told
    };

    explicit StreamWriter(int stream, OnFailure onFailure = OnFailure::Throw);

    void put(std::string_view text) { text_ += text; }

    [[nodiscard]] bool isPending() const { return written_ < text_.size(); }

    /** Ready to be written to when more of what is pending can go. */
    [[nodiscard]] int descriptor() const { return own_.isOpen() ? own_.get() : stream_; }

    /** Writes what goes at once and answers whether any did. */
    bool write();

    /** What a stream that is not read any more, or too slowly, is waited for. */
    struct Patience {
        std::chrono::milliseconds standstill;
        std::chrono::milliseconds altogether;
    };

    /** Writes the rest and answers how many lines were left over when the patience was. */
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
