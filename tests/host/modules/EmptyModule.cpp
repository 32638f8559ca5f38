class IInterfaceFactory;

extern "C" __attribute__((visibility("default"))) IInterfaceFactory* GetInterfaceFactory() {
    return nullptr;
}
