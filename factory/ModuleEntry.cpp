#include "factory/InterfaceFactory.h"

namespace {

// Made when the module is loaded; when it is unloaded its destructor gives back what the host has not closed.
InterfaceFactory Factory;

} // namespace

/** The only symbol that the module exports: see interfaces/ModuleEntry.h. */
extern "C" __attribute__((visibility("default"))) IInterfaceFactory* GetInterfaceFactory();

extern "C" IInterfaceFactory* GetInterfaceFactory() {
    return &Factory;
}
