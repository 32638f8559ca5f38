#pragma once

#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ITag.h"
#include "interfaces/ModuleEntry.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TempDir.h"

#include <filesystem>
#include <string>
#include <unistd.h>

extern "C" IInterfaceFactory* GetInterfaceFactory();

namespace velktest {

/**
 * A driver created as a host does it, with an empty storage, and released as a host does it, so that nothing may
 * remain.
 */
class FuzzedDriver {
public:
    explicit FuzzedDriver(ISerialPort& port) : host_(Host()), port_(port) {
        for (auto const& file : std::filesystem::directory_iterator(Folder().Path())) {
            std::filesystem::remove(file.path());
        }
        RestoreServices();
        host_.serial.created.clear();
        host_.serial.released.clear();
        host_.storage.asked.clear();
        lowestHandle_ = LowestHandle();
        driver_ = static_cast<IProtocol3*>(Protocols()->CreateProtocol("VELK"));
        Require(driver_ != nullptr, "there is a driver");
    }
    ~FuzzedDriver() {
        Protocols()->DeleteProtocol(driver_);
        Require(lostPort_ || host_.serial.created.size() == host_.serial.released.size(), "every port is given back");
        Require(LowestHandle() == lowestHandle_, "every file is closed");
    }
    FuzzedDriver(FuzzedDriver const&) = delete;
    FuzzedDriver& operator=(FuzzedDriver const&) = delete;

    IProtocol3* operator->() const { return driver_; }

    /** The ways in which the host's services fail. */
    void LoseStorage() { host_.storage.directory = "/nonexistent"; }
    void SpoilPaths() { host_.storage.unterminated = true; }
    void LosePort() {
        host_.serial.port = nullptr;
        lostPort_ = true;
    }
    void FillDisk(int node) {
        RestoreServices();
        std::string const path = Folder().Path(FileOf(node));
        std::filesystem::remove(path);
        std::filesystem::create_symlink("/dev/full", path);
        full_ = path;
    }
    void RestoreServices() {
        host_.storage.directory = Folder().Path();
        host_.storage.unterminated = false;
        host_.serial.port = &port_;
        if (!full_.empty()) {
            std::filesystem::remove(full_);
        }
    }

    /** Stores a symbol file, as an earlier run would have left it. */
    static void Store(int node, Bytes const& file) { Folder().Put(FileOf(node), file); }

private:
    static TempDir const& Folder() {
        static TempDir const folder;
        return folder;
    }
    /** One for all inputs, because none of them changes it; the module releases it at the end of the process. */
    static FakeHost& Host() {
        static FakeHost* const host = [] {
            auto* const made = new FakeHost;
            made->storage.directory = Folder().Path();
            IInterface* const module = GetInterfaceFactory()->CreateInterface("IProtModule");
            Require(static_cast<IProtModule*>(module)->Init(made), "the module takes the host");
            return made;
        }();
        return *host;
    }
    /** The number that the next opened file gets: it changes when a file was left open. */
    static int LowestHandle() {
        int const handle = dup(STDERR_FILENO);
        close(handle);
        return handle;
    }
    static IProtocolFactory* Protocols() {
        return static_cast<IProtocolFactory*>(GetInterfaceFactory()->CreateInterface("IProtocolFactory"));
    }

    static std::string FileOf(int node) { return "PLCSymbols_" + std::to_string(node) + ".sdb"; }

    FakeHost& host_;
    ISerialPort& port_;
    bool lostPort_ = false;
    std::string full_; ///< the file that accepts no byte, or empty
    int lowestHandle_ = -1;
    IProtocol3* driver_ = nullptr;
};

} // namespace velktest
