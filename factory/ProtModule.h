#pragma once

#include "interfaces/IProtModule.h"

/**
 * The module as a whole: acquires the host's services for all driver instances and releases them.
 *
 * The services are kept in the variables of protlib/protocol/HostServiceVariables.h. No locks: the host calls Init()
 * and Close() from one thread, and driver instances live between them.
 */
class ProtModule final : public IProtModule {
public:
    ProtModule() = default;
    ProtModule(ProtModule const&) = delete;
    ProtModule& operator=(ProtModule const&) = delete;
    ProtModule(ProtModule&&) = delete;
    ProtModule& operator=(ProtModule&&) = delete;

    /** Releases the services that are still held. */
    ~ProtModule() override;

    /** This object for "ProtModule" and "IProtModule", else null. */
    IInterface* ConvertTo(char const* name) override;
    [[nodiscard]] char const* GetImpName() const override { return "ProtModule"; }
    [[nodiscard]] int GetImpVersion() const override { return 100; }

    bool Init(IInterfaceFactory* host) override;
    void Close() override;
    [[nodiscard]] char const* GetLastError() const override { return lastError_; }

private:
    bool acquireRequired();
    void releaseAll(); ///< releases all held services, however often Init() was called

    char const* lastError_ = "";
    IInterfaceFactory* host_ = nullptr; // the host whose services are held
    int initCount_ = 0;                 // successful Init() calls without their Close()
};
