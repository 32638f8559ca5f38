#pragma once

namespace base {

/**
 * What kind of failure happened, decided where it arises. Exit codes, advice and diagnoses come from the kind, and
 * never from the words of a failure.
 */
enum class FailureKind {
    Internal, ///< a fault in a program; should never happen

    // The request.
    Usage,         ///< words of the user, or settings, that make no sense
    Configuration, ///< the driver does not accept the configuration
    Request,       ///< a tag address, a node number or another argument that the driver does not accept
    Value,         ///< a value that does not fit its type
    TooLarge,      ///< more than one exchange can carry
    NotPossible,   ///< not supported, or not in this state
    LeftOut,       ///< a tag that was never passed to the driver, or that the driver did not process
    Unreachable,   ///< a variable that the driver cannot address
    Missing,       ///< a variable that the PLC's program does not have

    // This machine.
    Module,              ///< the driver module is missing, or cannot be used
    Memory,              ///< there is not enough memory
    File,                ///< a file cannot be read or written
    FileExists,          ///< another file is in the way
    Storage,             ///< symbol files cannot be stored
    NoStoredSymbols,     ///< no symbol file is stored
    StoredSymbolsBroken, ///< the stored symbol file cannot be read

    // The serial port.
    PortMissing,    ///< there is no such port
    NotAPort,       ///< the name belongs to something else
    PortDenied,     ///< no permission to use it
    PortBusy,       ///< another program uses it
    PortNoHardware, ///< the name exists, but there is no hardware
    PortSettings,   ///< it does not accept the line settings
    PortFault,      ///< it cannot be opened for another reason
    PortDied,       ///< it was open, and then failed
    Interrupted,    ///< the user stopped the waiting

    // The PLC, and the line to it.
    Timeout,          ///< no answer in time
    Coupler,          ///< a coupler could not pass a frame on
    Garbled,          ///< frames that are not valid
    WrongReply,       ///< a valid frame that does not answer the request
    WrongSize,        ///< values whose sizes differ from those requested
    WrongLength,      ///< a response that is too short or too long for the requested values
    LoginRefused,     ///< the PLC refused a login, or the logout of another node
    ReadRefused,      ///< the PLC refused a read
    WriteRefused,     ///< the PLC refused a write
    OtherProject,     ///< the PLC runs another program now
    NoSymbolFile,     ///< the PLC gave no symbol file
    SymbolFileBroken, ///< it gave one that cannot be used
    BadQuality,       ///< the PLC says that a value is bad
    Conversion,       ///< a value that a conversion of its tag does not accept
};

/** For tests and tables: how many kinds there are. */
inline constexpr int kFailureKinds = static_cast<int>(FailureKind::Conversion) + 1;

/** Whether the serial port could not be opened, or failed. */
constexpr bool isOfPort(FailureKind kind) {
    return kind >= FailureKind::PortMissing && kind <= FailureKind::PortDied;
}

} // namespace base
