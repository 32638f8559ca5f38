#pragma once

#include "plc/frames/Bytes.h"

#include <cstddef>
#include <optional>

namespace plc {

struct FilePiece {
    Bytes data{};
    bool more = false;
};

/// A file that is being read in pieces.
class FileTransfer {
public:
    void open(Bytes file);
    void close() { open_ = false; }
    [[nodiscard]] bool isOpen() const { return open_; }

    /// The next at most `size` bytes of the open file; with its last byte the file closes. An endless file begins
    /// again at its start instead.
    [[nodiscard]] FilePiece next(std::size_t size, bool endless);

private:
    Bytes file_;
    std::size_t position_ = 0;
    bool open_ = false;
};

} // namespace plc
