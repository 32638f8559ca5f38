#include "driver/Protocol_VELK.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/services/FileService.h"

#include <optional>

using _VELK::ByteOrder;

namespace {

constexpr std::size_t kMaxFileLength = std::size_t{64} * 1024 * 1024;
constexpr unsigned kMaxPieces = 1'000'000;

} // namespace

unsigned int Protocol_VELK::readFileFromPLC(char const* plcFileName, char const* localPath,
                                            _VELK::NodeParams const* node, bool bigEndian) {
    uploadFile_.reset(); // an earlier upload may have left it open
    ByteOrder const order = _VELK::byteOrderOf(bigEndian);
    int request = plcFileName != nullptr ? _VELK::writeOpenAndRead(txData_, plcFileName, order) : 0;
    if (request == 0 || localPath == nullptr) {
        SetError(kErrorRequest, _VELK::kInvalidArgument);
        return 0;
    }
    std::size_t length = 0;
    for (unsigned pieces = 1; pieces <= kMaxPieces; ++pieces) {
        int replyLength = 0;
        unsigned int const done = doProtocolInner2(request, &replyLength, node, bigEndian);
        if (done == 0) {
            uploadFile_.reset();
            forgetLogin();
            return 0;
        }
        std::optional<_VELK::FilePiece> const piece =
            _VELK::readFilePiece(std::span(rxData_).first(static_cast<std::size_t>(replyLength)), order);
        if (!piece || piece->bytes.size() > kMaxFileLength - length) {
            return refusePiece();
        }
        length += piece->bytes.size();
        if (!keepPiece(piece->bytes, localPath)) {
            return 0;
        }
        if (piece->last) {
            uploadFile_.reset();
            return done;
        }
        request = _VELK::writeReadNext(txData_);
    }
    return refusePiece();
}

/** Ends an upload. The local file deliberately stays open as it is; the next upload or the destructor closes it. */
unsigned int Protocol_VELK::refusePiece() {
    doubtLogin();
    SetError(kErrorReply, "Wrong reply or Data Counter while reading symbol file");
    return 0;
}

/** Appends to the local file, which the first piece makes. */
bool Protocol_VELK::keepPiece(std::span<unsigned char const> bytes, char const* localPath) {
    if (uploadFile_ == nullptr) {
        uploadFile_.reset(std::fopen(localPath, "wb"));
        if (uploadFile_ == nullptr) {
            return fault(kErrorState, "Cannot open symbol file for write");
        }
        // Without a buffer a full disk shows at the write, not only when the file is closed.
        std::setvbuf(uploadFile_.get(), nullptr, _IONBF, 0);
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), uploadFile_.get()) != bytes.size()) {
        uploadFile_.reset();
        return fault(kErrorState, "Cannot write on symbol file");
    }
    return true;
}
