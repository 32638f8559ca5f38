#include "host/services/PermanentStorage.h"

#include "host/services/InterfaceNames.h"
#include "host/services/NoThrow.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace host {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t kLongestName = 255; ///< bytes of a file name

/** The directory as an absolute path, so that a change of the working directory does not matter; empty stays empty. */
fs::path absolutePath(fs::path const& directory) {
    std::error_code error;
    fs::path absolute = fs::absolute(directory, error);
    return error ? directory : absolute;
}

bool isHarmless(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-' || c == '_';
}

void appendEscaped(std::string& text, char c) {
    constexpr char const* kDigits = "0123456789ABCDEF";
    auto const byte = static_cast<unsigned char>(c);
    text += '%';
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
}

} // namespace

std::optional<std::string> instanceFolder(std::string_view instance) {
    std::string folder;
    for (char const c : instance) {
        if (isHarmless(c) || (c == '.' && !folder.empty())) {
            folder += c;
        } else {
            appendEscaped(folder, c);
        }
        if (folder.size() > kLongestName) {
            return std::nullopt;
        }
    }
    return folder.empty() ? std::nullopt : std::optional(std::move(folder));
}

bool isPlainFileName(std::string_view name) {
    return !name.empty() && name.size() <= kLongestName && name.find('/') == std::string_view::npos && name != "." &&
           name != "..";
}

PermanentStorage::Paths::Paths(fs::path const& directory) : directory_(absolutePath(directory)) {}

IInterface* PermanentStorage::Paths::ConvertTo(char const* name) {
    return isOneOf(name, {"IPermanentStorage2"}) ? this : nullptr;
}

char const* PermanentStorage::Paths::GetImpName() const {
    return "PermanentStorage2";
}

int PermanentStorage::Paths::GetImpVersion() const {
    return 100;
}

bool PermanentStorage::Paths::GetFullPath(char const* instance, char const* name, char* path, int size) {
    if (path == nullptr || size <= 0) {
        return false;
    }
    path[0] = '\0';
    if (instance == nullptr || name == nullptr) {
        return false;
    }
    std::string const full = noThrow([&] { return fullPath(instance, name); }, std::string());
    if (full.empty() || full.size() >= static_cast<std::size_t>(size)) {
        return false;
    }
    std::memcpy(path, full.c_str(), full.size() + 1);
    return true;
}

std::string PermanentStorage::Paths::fullPath(char const* instance, char const* name) const {
    auto const place = folder(instance);
    return place.ok() && isPlainFileName(name) ? (place.value() / name).string() : std::string();
}

base::Result<fs::path> PermanentStorage::Paths::folder(std::string_view instance) const {
    if (directory_.empty()) {
        return base::Failure{base::FailureKind::Storage, "no directory is given to keep files in"};
    }
    auto const name = instanceFolder(instance);
    if (!name) {
        return base::Failure{base::FailureKind::Storage,
                             "no files can be kept for an instance that is called '" + std::string(instance) + "'"};
    }
    fs::path const place = directory_ / *name;
    std::error_code error;
    fs::create_directories(place, error); // another program may create it at the same time, so only the result is
                                          // checked
    if (!fs::is_directory(place)) {
        return base::Failure{base::FailureKind::Storage,
                             "the directory " + place.string() + " cannot be made: " + error.message()};
    }
    return place;
}

PermanentStorage::PermanentStorage(fs::path const& directory) : paths_(directory) {}

IInterface* PermanentStorage::ConvertTo(char const* name) {
    if (isOneOf(name, {"IPermanentStorage2"})) {
        return &paths_;
    }
    return isOneOf(name, {"PermanentStorage", "IPermanentStorage"}) ? this : nullptr;
}

char const* PermanentStorage::GetImpName() const {
    return "PermanentStorage";
}

int PermanentStorage::GetImpVersion() const {
    return 100;
}

base::Outcome PermanentStorage::prepare(std::string_view instance) const {
    auto const place = paths_.folder(instance);
    if (!place.ok()) {
        return place.failure();
    }
    if (faccessat(AT_FDCWD, place.value().c_str(), W_OK | X_OK, AT_EACCESS) != 0) {
        return base::Failure{base::FailureKind::Storage, "no files can be written in " + place.value().string() + ": " +
                                                             std::generic_category().message(errno)};
    }
    return {};
}

} // namespace host
