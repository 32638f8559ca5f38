#include "tools/velk/context/Choices.h"

namespace velk {
namespace {

constexpr char const* kBareType = "Serial_RS232";
constexpr char const* kRoutedType = "ABB_RS232_AC";
constexpr char const* kBigModel = "Motorola";
constexpr char const* kLittleModel = "Intel";

} // namespace

std::vector<std::string> const& parities() {
    static std::vector<std::string> const kWords{"none", "even", "odd", "mark"};
    return kWords;
}

std::vector<std::string> const& modes() {
    static std::vector<std::string> const kWords{"RS-232", "RS-485"};
    return kWords;
}

std::vector<std::string> const& framings() {
    static std::vector<std::string> const kWords{"bare", "routed", kBareType, kRoutedType};
    return kWords;
}

std::vector<std::string> const& byteOrders() {
    static std::vector<std::string> const kWords{"big", "little", kBigModel, kLittleModel};
    return kWords;
}

std::vector<std::string> const& areas() {
    static std::vector<std::string> const kWords{"M", "MB", "I", "IB", "Q", "QB", "3", "4", "5", "PROJ_ID"};
    return kWords;
}

std::string protocolType(std::string const& framing) {
    return framing == "bare" || framing == kBareType ? kBareType : kRoutedType;
}

std::string modelName(std::string const& byteOrder) {
    return byteOrder == "little" || byteOrder == kLittleModel ? kLittleModel : kBigModel;
}

std::string framingWord(std::string const& protocolType) {
    return protocolType == kBareType ? "bare" : "routed";
}

std::string byteOrderWord(std::string const& model) {
    return model == kLittleModel ? "little" : "big";
}

} // namespace velk
