#pragma once

#include "driver/config/ByteOrder.h"

#include <cstddef>
#include <cstdio>
#include <memory>
#include <span>

namespace _VELK {

class ErrorSink;
class Login;
class SerialLink;
struct NodeParams;

/** Fetches a file from a PLC piece by piece. */
class SymbolUpload {
public:
    SymbolUpload(SerialLink& link, Login& login, ErrorSink& errors) : link_(link), login_(login), errors_(errors) {}

    /**
     * Fetches the PLC's file @p plcFileName into the local file @p localPath, which is created or overwritten when the
     * first piece has arrived. A failed exchange also discards the login.
     *
     * @return not 0 on success
     */
    unsigned int fetch(char const* plcFileName, char const* localPath, NodeParams const* node, bool bigEndian);

private:
    struct FileCloser {
        void operator()(std::FILE* file) const noexcept { static_cast<void>(std::fclose(file)); }
    };

    bool keepPiece(std::span<unsigned char const> bytes, char const* localPath);
    unsigned int refusePiece();

    SerialLink& link_;
    Login& login_;
    ErrorSink& errors_;
    std::unique_ptr<std::FILE, FileCloser> file_; ///< local file of the present upload, or of one that was refused
};

} // namespace _VELK
