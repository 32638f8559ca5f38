#include "plc/station/FileTransfer.h"

#include <algorithm>
#include <utility>

namespace plc {

void FileTransfer::open(Bytes file) {
    file_ = std::move(file);
    position_ = 0;
    open_ = true;
}

FilePiece FileTransfer::next(std::size_t size, bool endless) {
    if (endless && position_ == file_.size()) {
        position_ = 0;
    }
    std::size_t const count = std::min(size, file_.size() - position_);
    auto const from = file_.begin() + static_cast<std::ptrdiff_t>(position_);
    FilePiece piece{.data = Bytes(from, from + static_cast<std::ptrdiff_t>(count)), .more = true};
    position_ += count;
    if (position_ == file_.size() && !endless) {
        piece.more = false;
        open_ = false;
    }
    return piece;
}

} // namespace plc
