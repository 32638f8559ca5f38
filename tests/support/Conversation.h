#pragma once

#include "tests/support/Bytes.h"
#include "tests/support/Framing.h"
#include "tests/support/ScriptedPort.h"

#include <algorithm>
#include <cstddef>

namespace velktest {

/** Adds whole exchanges with one PLC to a port's script. */
class Conversation {
public:
    Conversation(ScriptedPort& port, Framing framing) : port_(&port), framing_(std::move(framing)) {}

    Framing const& Line() const { return framing_; }

    /** The panel sends @p request, the PLC acknowledges each block, the panel turns the line around. */
    Conversation& Request(Bytes const& request) {
        std::size_t const room = framing_.blockSize - 8;
        unsigned number = 1;
        for (std::size_t at = 0; at < request.size(); at += room, ++number) {
            std::size_t const end = std::min(request.size(), at + room);
            Bytes const piece(request.begin() + static_cast<std::ptrdiff_t>(at),
                              request.begin() + static_cast<std::ptrdiff_t>(end));
            port_->Expect(framing_.Block(number, end == request.size(), piece)).Answer(framing_.Ack(number));
        }
        port_->Expect(framing_.Ack(0));
        return *this;
    }

    /** The PLC sends @p reply, the panel acknowledges each block, the PLC closes. */
    Conversation& Reply(Bytes const& reply) {
        std::size_t const room = framing_.blockSize - 8;
        unsigned number = 1;
        std::size_t at = 0;
        do {
            std::size_t const end = std::min(reply.size(), at + room);
            Bytes const piece(reply.begin() + static_cast<std::ptrdiff_t>(at),
                              reply.begin() + static_cast<std::ptrdiff_t>(end));
            port_->Answer(framing_.Block(number, end == reply.size(), piece)).Expect(framing_.Ack(number));
            at = end;
            ++number;
        } while (at < reply.size());
        port_->Answer(framing_.Ack(0));
        return *this;
    }

    Conversation& Exchange(Bytes const& request, Bytes const& reply) { return Request(request).Reply(reply); }
    Conversation& Exchange(std::string_view request, std::string_view reply) {
        return Exchange(Hex(request), Hex(reply));
    }

    /** The PLC does not answer the request's first block. */
    Conversation& Dead(Bytes const& request) {
        std::size_t const room = framing_.blockSize - 8;
        std::size_t const end = std::min(request.size(), room);
        Bytes const piece(request.begin(), request.begin() + static_cast<std::ptrdiff_t>(end));
        port_->Expect(framing_.Block(1, end == request.size(), piece)).Silence();
        return *this;
    }

    static Bytes LinkCheckRequest() { return Hex("42 E0 20 26 29 00 00 5D 05"); }
    Bytes LoginRequest() const {
        return Hex(framing_.bigEndian ? "01 00 00 00 02 00 00 00 06 00 00 00 00 00"
                                      : "01 02 00 00 00 06 00 00 00 00 00 00 00 00");
    }

    Conversation& LinkCheck() { return Exchange(LinkCheckRequest(), Hex("00")); }
    Conversation& Login() { return Exchange(LoginRequest(), Hex(framing_.bigEndian ? "03 E8" : "E8 03")); }
    Conversation& Logout() { return Exchange(Hex("02"), Hex("00 00")); }
    Conversation& DeadLinkCheck() { return Dead(LinkCheckRequest()); }

    /** The PLC sends its symbol file in one piece. */
    Conversation& Upload(Bytes const& file) { return Exchange(OpenFileRequest(), FilePiece(file, false)); }
    /** The PLC does not answer when asked for its symbol file. */
    Conversation& DeadUpload() { return Dead(OpenFileRequest()); }
    /** The PLC has no symbol file to send. */
    Conversation& RefusedUpload() {
        return Exchange(OpenFileRequest(), framing_.Word(5) + framing_.Word(0) + framing_.Word(0));
    }

    Bytes OpenFileRequest() const {
        return Hex(framing_.bigEndian ? "31 00 00 0D" : "31 00 0D 00") + Text("DOWNLOAD.SDB") + Hex("00");
    }
    Bytes FilePiece(Bytes const& piece, bool more) const {
        return framing_.Word(0) + framing_.Word(more ? 1 : 0) + framing_.Word(piece.size()) + piece;
    }

private:
    ScriptedPort* port_;
    Framing framing_;
};

} // namespace velktest
