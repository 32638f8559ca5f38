#include "host/instance/DriverFailure.h"

#include "interfaces/ErrorCodes.h"
#include "interfaces/IProtocol.h"

#include <algorithm>
#include <array>

namespace host {

namespace {

using base::FailureKind;

/** How a row's text is compared with the driver's. */
enum class Match { Whole, Start, End };

struct DriverText {
    std::string_view text;
    FailureKind kind;
    Match match = Match::Whole;
};

/** The driver's texts, which are part of the contract; the reference for integrators explains each of them. */
constexpr std::array kTexts{
    DriverText{"Generic error on receiving", FailureKind::PortDied},
    DriverText{"Can't open serial port", FailureKind::PortFault},

    DriverText{"Can't allocate Tag", FailureKind::Memory},
    DriverText{"Out of memory", FailureKind::Memory},

    DriverText{"Parser: ", FailureKind::Configuration, Match::Start},
    DriverText{"parameter '", FailureKind::Configuration, Match::Start},
    DriverText{"Protocol type not supported", FailureKind::Configuration},

    DriverText{"Tag URI error: ", FailureKind::Request, Match::Start},
    DriverText{"Node number out of range", FailureKind::Request},
    DriverText{"writing to read_only type", FailureKind::Request},
    DriverText{"Invalid argument", FailureKind::Request},
    DriverText{" not present in Symbols files", FailureKind::Missing, Match::End},

    DriverText{"Too many items in datagram", FailureKind::TooLarge},
    DriverText{"Tx Buffer dimension exceeded", FailureKind::TooLarge},
    DriverText{"Rx Buffer dimension exceeded", FailureKind::WrongLength}, // about a response, but with the error code
                                                                          // of a request

    DriverText{"Protocol not started", FailureKind::NotPossible},
    DriverText{"Optimized writing not supported", FailureKind::NotPossible},
    DriverText{"Cannot open symbol file for write", FailureKind::Storage},
    DriverText{"Cannot write on symbol file", FailureKind::Storage},
    DriverText{"Exception in a host service", FailureKind::Internal},

    DriverText{"Timeout on Acknowledge", FailureKind::Timeout},
    DriverText{"Timeout on data receiving", FailureKind::Timeout},

    DriverText{"Too short Ack message received", FailureKind::Garbled},
    DriverText{"Wrong Ack message received", FailureKind::Garbled},
    DriverText{"Too short message received", FailureKind::Garbled},
    DriverText{"Wrong Protocol ID received", FailureKind::Garbled},
    DriverText{"Wrong checksum or wrong block number received", FailureKind::Garbled},

    DriverText{"Wrong number of bytes received", FailureKind::WrongSize},
    DriverText{"Wrong reply or Data Counter while reading symbol file", FailureKind::WrongReply},
    DriverText{"Command not acknowledged by PLC", FailureKind::ReadRefused},
    DriverText{"Wrong reply length or ack in WriteData operation", FailureKind::WriteRefused},
    DriverText{"One of the values has bad quality", FailureKind::BadQuality},
    // Recorded by reads that succeed. After a failure this text is therefore an older one, and the failure recorded
    // none.
    DriverText{" not present in symbol file", FailureKind::LoginRefused, Match::End},
    DriverText{"Project ID mismatch", FailureKind::OtherProject},
    DriverText{"Symbol file not present", FailureKind::NoSymbolFile},
    DriverText{"Symbol file is corrupted", FailureKind::SymbolFileBroken},

    DriverText{"read conversion error", FailureKind::Conversion},
    DriverText{"write conversion error", FailureKind::Conversion},
    DriverText{"datagramItem conversion error", FailureKind::Conversion},
};

bool fits(DriverText const& row, std::string_view text) {
    switch (row.match) {
    case Match::Start:
        return text.starts_with(row.text);
    case Match::End:
        return text.ends_with(row.text);
    case Match::Whole:
        break;
    }
    return text == row.text;
}

FailureKind kindOfCode(int code) {
    switch (code) {
    case kErrorNone: // only a refused login or logout records no error
        return FailureKind::LoginRefused;
    case kErrorPort:
        return FailureKind::PortFault;
    case kErrorRequest:
        return FailureKind::Request;
    case kErrorState:
        return FailureKind::NotPossible;
    case kErrorTimeout:
        return FailureKind::Timeout;
    case kErrorReply:
        return FailureKind::WrongReply;
    case kErrorConversion:
        return FailureKind::Conversion;
    default:
        return FailureKind::Internal;
    }
}

} // namespace

FailureKind driverFailureKind(int code, std::string_view text) {
    auto const* const known =
        std::find_if(kTexts.begin(), kTexts.end(), [&](DriverText const& row) { return fits(row, text); });
    return known != kTexts.end() ? known->kind : kindOfCode(code);
}

base::Failure driverFailure(IProtocol const& protocol) {
    char const* const recorded = protocol.GetLastErrorString();
    std::string_view const text = recorded != nullptr ? recorded : "";
    int const code = protocol.GetLastError();
    return {driverFailureKind(code, text), text.empty() ? "the driver gave no reason" : std::string(text), code};
}

} // namespace host
