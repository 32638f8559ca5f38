#pragma once

#include "interfaces/IInterfaceFactory.h"

/** Type of the module's entry point, for use with dlsym(). It never fails and always returns the same object. */
using GetInterfaceFactoryFunction = IInterfaceFactory* (*)();

/** Name of the module's entry point: the only symbol that the module exports. */
inline constexpr char const* kModuleEntryName = "GetInterfaceFactory";
