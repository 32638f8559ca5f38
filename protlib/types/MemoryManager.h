#pragma once

#include "protlib/types/Model.h"

#include <string>
#include <vector>

/** The models of a driver. Filled once, then only read; pointers into it are valid until the next addModel(). */
class MemoryManager {
public:
    /** Appends a copy, even if there is already one of that name. */
    void addModel(Model const& model);

    /** The first model called exactly @p name, else the first of all; null only when there is none. */
    [[nodiscard]] Model const* getModel(std::string const& name) const;

    /** The memory type of exactly that model, or null: an unknown model does not fall back to the first. */
    [[nodiscard]] MemoryType const* getMemoryType(std::string const& modelName,
                                                  std::string const& memoryTypeName) const;

private:
    [[nodiscard]] Model const* findModel(std::string const& name) const;

    std::vector<Model> models_;
};
