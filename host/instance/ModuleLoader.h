#pragma once

#include "base/Result.h"

#include <filesystem>

class IInterfaceFactory;

namespace host {

/**
 * A driver module in memory. Everything obtained from it, driver instances included, must be destroyed before this
 * object.
 */
class LoadedModule {
public:
    /** Loads the shared library at @p file, which is always a path: no library directories are searched. */
    static base::Result<LoadedModule> load(std::filesystem::path const& file);

    ~LoadedModule();
    LoadedModule(LoadedModule&& other) noexcept;
    LoadedModule& operator=(LoadedModule&& other) noexcept;
    LoadedModule(LoadedModule const&) = delete;
    LoadedModule& operator=(LoadedModule const&) = delete;

    /** The module's own factory. */
    [[nodiscard]] IInterfaceFactory& factory() const { return *factory_; }

private:
    LoadedModule(void* library, IInterfaceFactory* factory) : library_(library), factory_(factory) {}

    void* library_;
    IInterfaceFactory* factory_;
};

} // namespace host
