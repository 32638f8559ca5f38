#include "tools/velk/project/WholeFile.h"

#include "base/FileDescriptor.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace velk {
namespace {

/** A temporary file in the folder of another one; removed with this object unless it was given that file's name. */
class TemporaryFile {
public:
    explicit TemporaryFile(std::filesystem::path const& beside);
    ~TemporaryFile() { remove(); }
    TemporaryFile(TemporaryFile const&) = delete;
    TemporaryFile& operator=(TemporaryFile const&) = delete;

    [[nodiscard]] bool isOpen() const { return descriptor_.isOpen(); }

    bool write(std::string_view content);
    bool setMode(mode_t mode) { return fchmod(descriptor_.get(), mode) == 0; }
    bool renameTo(std::filesystem::path const& file);

    /** Fails with EEXIST when a file of that name exists. */
    bool becomeNew(std::filesystem::path const& file);

private:
    void remove() {
        if (isOpen() && !name_.empty()) {
            unlink(name_.c_str());
        }
    }

    std::filesystem::path name_;
    base::FileDescriptor descriptor_;
};

TemporaryFile::TemporaryFile(std::filesystem::path const& beside) {
    constexpr mode_t kMode = 0666;
    constexpr int kAttempts = 100;
    std::string const start = fmt::format(".velk-{}-", getpid()); // short, however long the final name is
    for (int i = 0; i < kAttempts && !isOpen(); ++i) {
        name_ = beside.parent_path() / (start + std::to_string(i));
        descriptor_ = base::FileDescriptor(::open(name_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kMode));
        if (!isOpen() && errno != EEXIST) {
            return;
        }
    }
}

bool TemporaryFile::write(std::string_view content) {
    while (!content.empty()) {
        ssize_t const count = ::write(descriptor_.get(), content.data(), content.size());
        if (count < 0 && errno != EINTR) {
            return false;
        }
        content.remove_prefix(count < 0 ? 0 : static_cast<std::size_t>(count));
    }
    return fsync(descriptor_.get()) == 0;
}

bool TemporaryFile::renameTo(std::filesystem::path const& file) {
    if (rename(name_.c_str(), file.c_str()) != 0) {
        return false;
    }
    name_.clear();
    return true;
}

bool TemporaryFile::becomeNew(std::filesystem::path const& file) {
    if (link(name_.c_str(), file.c_str()) == 0) {
        return true; // the temporary name is removed with this object
    }
    bool const noLinksHere = errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS;
    if (!noLinksHere || renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE) != 0) {
        return false;
    }
    name_.clear();
    return true;
}

/** Makes the new name survive a power loss; not every file system supports that. */
void syncFolderOf(std::filesystem::path const& file) {
    std::filesystem::path const folder = file.has_parent_path() ? file.parent_path() : ".";
    base::FileDescriptor const descriptor(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.isOpen()) {
        fsync(descriptor.get());
    }
}

/** The file that symbolic links lead to, so that the links stay. */
std::filesystem::path behindLinks(std::filesystem::path const& file) {
    std::error_code error;
    std::filesystem::path const target = std::filesystem::canonical(file, error);
    return error ? file : target;
}

} // namespace

base::Outcome writeWholeFile(std::filesystem::path const& file, std::string_view content, bool replace) {
    std::filesystem::path const target = replace ? behindLinks(file) : file;
    struct stat status {};
    bool const there = stat(target.c_str(), &status) == 0;
    if (there && !replace) {
        return base::Failure{base::FailureKind::FileExists, std::strerror(EEXIST)};
    }
    if (there && !S_ISREG(status.st_mode)) {
        return base::Failure{base::FailureKind::File,
                             S_ISDIR(status.st_mode) ? "it is a directory" : "it is a device, not a file"};
    }
    TemporaryFile temporary(target);
    constexpr mode_t kPermissions = 07777;
    bool const written = temporary.isOpen() && temporary.write(content) &&
                         (!there || temporary.setMode(status.st_mode & kPermissions)) &&
                         (replace ? temporary.renameTo(target) : temporary.becomeNew(target));
    if (!written) {
        return base::Failure{errno == EEXIST ? base::FailureKind::FileExists : base::FailureKind::File,
                             std::strerror(errno)};
    }
    syncFolderOf(target);
    return {};
}

} // namespace velk
