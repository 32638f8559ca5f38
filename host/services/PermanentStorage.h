#pragma once

#include "base/Result.h"
#include "interfaces/HostServices.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace host {

/**
 * The folder name for an instance: letters, digits, "-", "_" and a "." that is not the first character stay, every
 * other byte becomes "%" and two hexadecimal digits, so that two instances never share a folder and none leaves
 * the directory. Nothing for an empty or much too long name.
 */
std::optional<std::string> instanceFolder(std::string_view instance);

/** True for the name of a file in a folder: not empty, no "/", neither "." nor "..". */
bool isPlainFileName(std::string_view name);

/**
 * Keeps the files of driver instances in a directory of the user's choice, one folder an instance.
 *
 * The folders are made when they are first asked for. The module writes its files itself, under the path it gets,
 * and checks them when it reads them: half a file is refused and fetched again.
 */
class PermanentStorage final : public IPermanentStorage {
public:
    /** @param directory made when it does not exist; an empty one gives no paths */
    explicit PermanentStorage(std::filesystem::path const& directory);

    /** Answers the paths for "IPermanentStorage2". */
    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override;
    [[nodiscard]] int GetImpVersion() const override;

    /**
     * Makes the folder of an instance and checks that files can be written there.
     *
     * Worth a call before the driver starts: it takes a storage without a path for none at all, and then keeps its
     * files in the working directory.
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
