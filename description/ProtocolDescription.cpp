#include "description/ProtocolDescription.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <iterator>

namespace {

constexpr auto Xml_VELK = std::to_array<unsigned char>({
#include "description/Xml_VELK.inc" // written by the build, see CompressDocument.cpp
});

constexpr auto kHeaderEnd = std::find(Xml_VELK.begin(), Xml_VELK.end(), static_cast<unsigned char>(0));
static_assert(Xml_VELK.end() - kHeaderEnd == 2092);

} // namespace

char const* GetXml_VELK() noexcept {
    return reinterpret_cast<char const*>(&*std::next(kHeaderEnd));
}

namespace _VELK {

std::span<unsigned char const> xmlContainer() noexcept {
    return Xml_VELK;
}

} // namespace _VELK
