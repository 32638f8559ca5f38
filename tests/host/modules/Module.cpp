#include "interfaces/IInterface.h"
#include "interfaces/IInterfaceFactory.h"

#include <cstring>

namespace {

class Greeting final : public IInterface {
public:
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "a module of the tests"; }
    int GetImpVersion() const override { return 1; }
};

class Factory final : public IInterfaceFactory { // NOLINT(cppcoreguidelines-virtual-class-destructor)
public:
    IInterface* CreateInterface(char const* name) override {
        return std::strcmp(name, "Greeting") == 0 ? &greeting_ : nullptr;
    }
    void ReleaseInterface(IInterface* /*object*/) override {}

private:
    Greeting greeting_;
};

} // namespace

extern "C" __attribute__((visibility("default"))) IInterfaceFactory* GetInterfaceFactory() {
    static Factory factory;
    return &factory;
}
