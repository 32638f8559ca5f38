#include "protlib/types/MemoryManager.h"

#include <algorithm>

void MemoryManager::addModel(Model const& model) {
    models_.push_back(model);
}

Model const* MemoryManager::getModel(std::string const& name) const {
    auto const* const model = findModel(name);
    if (model != nullptr || models_.empty()) {
        return model;
    }
    return &models_.front(); // an unknown model in a configuration must not stop the driver
}

MemoryType const* MemoryManager::getMemoryType(std::string const& modelName, std::string const& memoryTypeName) const {
    auto const* const model = findModel(modelName);
    return model == nullptr ? nullptr : model->getMemoryType(memoryTypeName);
}

Model const* MemoryManager::findModel(std::string const& name) const {
    auto const found =
        std::find_if(models_.begin(), models_.end(), [&](auto const& model) { return model.getName() == name; });
    return found == models_.end() ? nullptr : &*found;
}
