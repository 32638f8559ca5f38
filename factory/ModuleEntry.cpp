#include "factory/InterfaceFactory.h"

namespace {

// Made when the module is loaded. When it is unloaded, the destructor releases services that are still held.
InterfaceFactory Factory;

} // namespace

/** The only symbol that the module exports: see interfaces/ModuleEntry.h. */
extern "C" __attribute__((visibility("default"))) IInterfaceFactory* GetInterfaceFactory();

extern "C" IInterfaceFactory* GetInterfaceFactory() {
    return &Factory;
}
