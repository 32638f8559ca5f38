#pragma once

#include <dlfcn.h>
#include <stdexcept>
#include <string>

namespace velktest {

/** The built module, loaded and unloaded as a host does it. */
class LoadedModule {
public:
    LoadedModule() : handle_(dlopen(VELK_MODULE_PATH, RTLD_NOW | RTLD_LOCAL)) {
        if (handle_ == nullptr) {
            throw std::runtime_error(dlerror());
        }
    }
    ~LoadedModule() { Unload(); }
    LoadedModule(LoadedModule const&) = delete;
    LoadedModule& operator=(LoadedModule const&) = delete;

    /** The address of a symbol, or null. */
    void* Symbol(std::string const& name) const { return dlsym(handle_, name.c_str()); }

    void Unload() {
        if (handle_ != nullptr) {
            dlclose(handle_);
            handle_ = nullptr;
        }
    }

    /** Whether the module is still in this process's memory. */
    static bool IsResident() {
        void* const handle = dlopen(VELK_MODULE_PATH, RTLD_NOW | RTLD_NOLOAD);
        if (handle == nullptr) {
            return false;
        }
        dlclose(handle);
        return true;
    }

private:
    void* handle_;
};

} // namespace velktest
