#include "tools/velk/line/FailureJson.h"

#include "tools/velk/text/Text.h"

#include <algorithm>
#include <array>

namespace velk {

namespace {

using base::FailureKind;

struct KindWord {
    FailureKind kind;
    std::string_view word;
};

constexpr std::array kWords{
    KindWord{FailureKind::Internal, "internal"},
    KindWord{FailureKind::Usage, "usage"},
    KindWord{FailureKind::Configuration, "configuration"},
    KindWord{FailureKind::Request, "request"},
    KindWord{FailureKind::Value, "value"},
    KindWord{FailureKind::TooLarge, "too_large"},
    KindWord{FailureKind::NotPossible, "not_possible"},
    KindWord{FailureKind::LeftOut, "left_out"},
    KindWord{FailureKind::Unreachable, "unreachable"},
    KindWord{FailureKind::Missing, "missing"},
    KindWord{FailureKind::Module, "module"},
    KindWord{FailureKind::Memory, "memory"},
    KindWord{FailureKind::File, "file"},
    KindWord{FailureKind::FileExists, "file_exists"},
    KindWord{FailureKind::Storage, "storage"},
    KindWord{FailureKind::NoStoredSymbols, "no_stored_symbols"},
    KindWord{FailureKind::StoredSymbolsBroken, "stored_symbols_broken"},
    KindWord{FailureKind::PortMissing, "port_missing"},
    KindWord{FailureKind::NotAPort, "not_a_port"},
    KindWord{FailureKind::PortDenied, "port_denied"},
    KindWord{FailureKind::PortBusy, "port_busy"},
    KindWord{FailureKind::PortNoHardware, "port_no_hardware"},
    KindWord{FailureKind::PortSettings, "port_settings"},
    KindWord{FailureKind::PortFault, "port_fault"},
    KindWord{FailureKind::PortDied, "port_died"},
    KindWord{FailureKind::Interrupted, "interrupted"},
    KindWord{FailureKind::Timeout, "no_answer"},
    KindWord{FailureKind::Coupler, "coupler"},
    KindWord{FailureKind::Garbled, "garbled"},
    KindWord{FailureKind::WrongReply, "wrong_reply"},
    KindWord{FailureKind::WrongSize, "wrong_size"},
    KindWord{FailureKind::WrongLength, "wrong_length"},
    KindWord{FailureKind::LoginRefused, "login_refused"},
    KindWord{FailureKind::ReadRefused, "read_refused"},
    KindWord{FailureKind::WriteRefused, "write_refused"},
    KindWord{FailureKind::OtherProject, "other_project"},
    KindWord{FailureKind::NoSymbolFile, "no_symbol_file"},
    KindWord{FailureKind::SymbolFileBroken, "symbol_file_broken"},
    KindWord{FailureKind::BadQuality, "bad_quality"},
    KindWord{FailureKind::Conversion, "conversion"},
};
static_assert(kWords.size() == base::kFailureKinds);

} // namespace

std::string_view kindWord(FailureKind kind) {
    auto const* const found =
        std::find_if(kWords.begin(), kWords.end(), [&](KindWord const& each) { return each.kind == kind; });
    return found == kWords.end() ? kWords.front().word : found->word;
}

void putFailure(nlohmann::ordered_json& json, base::Failure const& failure) {
    json["reason"] = toUtf8(failure.text);
    json["kind"] = kindWord(failure.kind);
    if (failure.driverCode) {
        json["driver_code"] = *failure.driverCode;
    }
}

} // namespace velk
