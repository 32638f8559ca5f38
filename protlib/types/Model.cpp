#include "protlib/types/Model.h"

#include <algorithm>
#include <utility>

Model::Model(std::string name) : name_(std::move(name)) {}

std::string const& Model::getName() const {
    return name_;
}

int Model::getMaxDatagramLength() const {
    return maxDatagramLength_;
}

void Model::setMaxDatagramLength(int length) {
    maxDatagramLength_ = length;
}

int Model::getMaxDatagramItems() const {
    return maxDatagramItems_;
}

void Model::setMaxDatagramItems(int items) {
    maxDatagramItems_ = items;
}

bool Model::addMemoryType(MemoryType const& type) {
    if (getMemoryType(type.getName()) != nullptr) {
        return false;
    }
    memoryTypes_.push_back(type);
    return true;
}

MemoryType const* Model::getMemoryType(std::string const& name) const {
    auto const found = std::find_if(memoryTypes_.begin(), memoryTypes_.end(),
                                    [&](auto const& type) { return type.getName() == name; });
    return found == memoryTypes_.end() ? nullptr : &*found;
}
