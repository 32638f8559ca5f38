#include "driver/session/SymbolUpload.h"

#include "driver/errors/ErrorSink.h"
#include "driver/errors/ErrorTexts.h"
#include "driver/link/SerialLink.h"
#include "driver/services/FileService.h"
#include "driver/session/Login.h"
#include "interfaces/ErrorCodes.h"

#include <optional>

namespace _VELK {

namespace {

constexpr std::size_t kMaxFileLength = std::size_t{64} * 1024 * 1024;
constexpr unsigned kMaxPieces = 1'000'000;

} // namespace

unsigned int SymbolUpload::fetch(char const* plcFileName, char const* localPath, NodeParams const* node,
                                 bool bigEndian) {
    file_.reset(); // an earlier upload may not have closed it
    ByteOrder const order = byteOrderOf(bigEndian);
    int request = plcFileName != nullptr ? writeOpenAndRead(link_.txData(), plcFileName, order) : 0;
    if (request == 0 || localPath == nullptr) {
        errors_.fail(kErrorRequest, kInvalidArgument);
        return 0;
    }
    std::size_t length = 0;
    for (unsigned pieces = 1; pieces <= kMaxPieces; ++pieces) {
        int replyLength = 0;
        unsigned int const done = link_.exchange(request, &replyLength, node, bigEndian);
        if (done == 0) {
            file_.reset();
            login_.forget();
            return 0;
        }
        std::optional<FilePiece> const piece =
            readFilePiece(link_.rxData().first(static_cast<std::size_t>(replyLength)), order);
        if (!piece || piece->bytes.size() > kMaxFileLength - length) {
            return refusePiece();
        }
        length += piece->bytes.size();
        if (!keepPiece(piece->bytes, localPath)) {
            return 0;
        }
        if (piece->last) {
            file_.reset();
            return done;
        }
        request = writeReadNext(link_.txData());
    }
    return refusePiece();
}

/**
 * Ends an upload. The local file deliberately stays open and unchanged; the next upload or the destructor closes it.
 */
unsigned int SymbolUpload::refusePiece() {
    login_.failed();
    errors_.fail(kErrorReply, "Wrong reply or Data Counter while reading symbol file");
    return 0;
}

/** Appends to the local file, which the first piece creates. */
bool SymbolUpload::keepPiece(std::span<unsigned char const> bytes, char const* localPath) {
    if (file_ == nullptr) {
        file_.reset(std::fopen(localPath, "wb"));
        if (file_ == nullptr) {
            return errors_.fault(kErrorState, "Cannot open symbol file for write");
        }
        // Without a buffer, a full disk is noticed at the write, not only when the file is closed.
        std::setvbuf(file_.get(), nullptr, _IONBF, 0);
    }
    if (std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) != bytes.size()) {
        file_.reset();
        return errors_.fault(kErrorState, "Cannot write on symbol file");
    }
    return true;
}

} // namespace _VELK
