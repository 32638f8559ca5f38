#include "host/instance/ModuleFile.h"

#include <array>
#include <cstdlib>
#include <system_error>

namespace host {
namespace {

constexpr std::array<char const*, 3> kPlaces{
    "../lib/velk/libvelk.so",     // installed
    "../../factory/libvelk.so",   // built, program in tools/<name>/
    "../../../factory/libvelk.so" // built, program in tests/<folder>/<name>/
};

} // namespace

base::Result<std::filesystem::path> findModule() {
    if (char const* const named = std::getenv("VELK_MODULE"); named != nullptr && *named != '\0') {
        return std::filesystem::path(named);
    }
    std::error_code error;
    std::filesystem::path const program = std::filesystem::read_symlink("/proc/self/exe", error);
    for (char const* const place : kPlaces) {
        std::filesystem::path const file = (program.parent_path() / place).lexically_normal();
        if (std::filesystem::exists(file, error)) {
            return file;
        }
    }
    return base::Failure{base::FailureKind::Module, "The driver module libvelk.so was not found beside " +
                                                        program.string() + "; name it in VELK_MODULE"};
}

} // namespace host
