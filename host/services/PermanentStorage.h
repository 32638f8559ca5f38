#pragma once

#include "base/Result.h"
#include "interfaces/HostServices.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/**
 * The folder name for an instance: letters, digits, "-", "_" and a "." that is not the first character are kept, every
 * other byte becomes "%" and two hexadecimal digits, so that two instances never share a folder and none leaves the
 * directory. Nothing for an empty or much too long name.
 */
std::optional<std::string> instanceFolder(std::string_view instance);

/** True for the name of a file in a folder: not empty, no "/", neither "." nor "..". */
bool isPlainFileName(std::string_view name);

/**
 * Keeps the files of driver instances in a directory of the user's choice, one folder for each instance.
 *
 * The folders are created when first needed. The module writes its files itself, to the path it gets, and checks them
 * when it reads them: an incomplete file is refused and fetched again.
 */
class PermanentStorage final : public IPermanentStorage {
public:
    /** @param directory created when it does not exist; when empty, there are no paths */
    explicit PermanentStorage(std::filesystem::path const& directory);

    /** Returns the object that gives the paths, for "IPermanentStorage2". */
    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override;
    [[nodiscard]] int GetImpVersion() const override;

    /**
     * Creates the folder of an instance and checks that files can be written there.
     *
     * Call it before the driver starts: the driver treats a storage without a path as missing, and would keep its files
     * in the working directory.
     */
    [[nodiscard]] base::Outcome prepare(std::string_view instance) const;

private:
    class Paths final : public IPermanentStorage2 {
    public:
        explicit Paths(std::filesystem::path const& directory);
        IInterface* ConvertTo(char const* name) override;
        [[nodiscard]] char const* GetImpName() const override;
        [[nodiscard]] int GetImpVersion() const override;
        bool GetFullPath(char const* instance, char const* name, char* path, int size) override;

        [[nodiscard]] base::Result<std::filesystem::path> folder(std::string_view instance) const;

    private:
        [[nodiscard]] std::string fullPath(char const* instance, char const* name) const;

        std::filesystem::path directory_;
    };

    Paths paths_;
};

} // namespace host
