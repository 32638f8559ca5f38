#include "host/instance/ModuleLoader.h"

#include "interfaces/ModuleEntry.h"

#include <dlfcn.h>
#include <memory>
#include <string>
#include <system_error>
#include <utility>

namespace host {

namespace {

struct Unloader {
    void operator()(void* library) const { dlclose(library); }
};
using Library = std::unique_ptr<void, Unloader>;

std::string loaderMessage() {
    char const* const message = dlerror();
    return message != nullptr ? message : "unknown reason";
}

GetInterfaceFactoryFunction entryPoint(Library const& library) {
    return reinterpret_cast<GetInterfaceFactoryFunction>(dlsym(library.get(), kModuleEntryName));
}

} // namespace

base::Result<LoadedModule> LoadedModule::load(std::filesystem::path const& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) {
        return base::Failure{base::FailureKind::Module, "there is no driver module " + file.string()};
    }
    std::filesystem::path const absolute = std::filesystem::absolute(file, error);
    Library library(dlopen(absolute.c_str(), RTLD_NOW | RTLD_LOCAL));
    if (!library) {
        return base::Failure{base::FailureKind::Module,
                             "the driver module " + file.string() + " cannot be loaded: " + loaderMessage()};
    }
    auto* const entry = entryPoint(library);
    if (entry == nullptr) {
        return base::Failure{base::FailureKind::Module,
                             file.string() + " is not a driver module: it has no function " + kModuleEntryName};
    }
    IInterfaceFactory* const factory = entry();
    if (factory == nullptr) {
        return base::Failure{base::FailureKind::Module,
                             "the driver module " + file.string() + " gives no interface factory"};
    }
    return LoadedModule(library.release(), factory);
}

LoadedModule::~LoadedModule() {
    if (library_ != nullptr) {
        dlclose(library_);
    }
}

LoadedModule::LoadedModule(LoadedModule&& other) noexcept
    : library_(std::exchange(other.library_, nullptr)), factory_(std::exchange(other.factory_, nullptr)) {}

LoadedModule& LoadedModule::operator=(LoadedModule&& other) noexcept {
    std::swap(library_, other.library_);
    std::swap(factory_, other.factory_);
    return *this;
}

} // namespace host
