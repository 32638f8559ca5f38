#pragma once

#include "interfaces/HostServices.h"
#include "interfaces/IInterfaceFactory.h"
#include "tests/support/AllocationGate.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace velktest {

/** A failure in one call of a host service, before the service does its work. */
class Trouble {
public:
    std::function<void()> strike; ///< throws, or ends the thread
    int at = 0;                   ///< in which call, counted from 1; 0 for none
    int calls = 0;

    void operator()() {
        if (++calls == at) {
            strike();
        }
    }
    [[nodiscard]] bool HasStruck() const { return at != 0 && calls >= at; }
};

/** Any service that is acquired and released only. */
class FakeService : public IInterface {
public:
    explicit FakeService(std::string name, int version = 1) : name_(std::move(name)), version_(version) {}
    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return name_.c_str(); }
    int GetImpVersion() const override { return version_; }

private:
    std::string name_;
    int version_;
};

class FakeScheduler : public IMultiTask2 {
public:
    Trouble* trouble = nullptr;
    int yields = 0;
    int lastAmount = 0;
    int foreignCalls = 0; ///< calls of slots 5 to 8, which the module must not call

    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "FakeScheduler"; }
    int GetImpVersion() const override { return 21; }
    void HostSlot5() override { ++foreignCalls; }
    void HostSlot6() override { ++foreignCalls; }
    void HostSlot7() override { ++foreignCalls; }
    void HostSlot8() override { ++foreignCalls; }
    void Yield(int amount) override {
        if (trouble != nullptr) {
            (*trouble)();
        }
        ++yields;
        lastAmount = amount;
    }
};

/** Hands out one port again and again, or none. */
class FakeSerialFactory : public ISerialFactory {
public:
    ISerialPort* port = nullptr;
    Trouble* trouble = nullptr;
    std::vector<std::string> created;
    std::vector<ISerialPort*> released;

    IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
    char const* GetImpName() const override { return "FakeSerialFactory"; }
    int GetImpVersion() const override { return 22; }
    ISerialPort* CreatePort(char const* name) override {
        AllocationPause const pause;
        if (trouble != nullptr) {
            (*trouble)();
        }
        created.emplace_back(name);
        return port;
    }
    void ReleasePort(ISerialPort* given) override {
        AllocationPause const pause;
        released.push_back(given);
        if (trouble != nullptr) {
            (*trouble)();
        }
    }
};

/** Permanent storage in one directory, for all instances. */
class FakeStorage : public IPermanentStorage {
public:
    class Paths : public IPermanentStorage2 {
    public:
        explicit Paths(FakeStorage& storage) : storage_(&storage) {}
        IInterface* ConvertTo(char const* /*name*/) override { return nullptr; }
        char const* GetImpName() const override { return "FakeStorage2"; }
        int GetImpVersion() const override { return 1; }
        bool GetFullPath(char const* instance, char const* name, char* path, int size) override {
            AllocationPause const pause;
            if (storage_->trouble != nullptr) {
                (*storage_->trouble)();
            }
            storage_->asked.emplace_back(instance, name);
            storage_->lastSize = size;
            if (!storage_->hasPaths) {
                return false;
            }
            if (storage_->unterminated) {
                std::fill(path, path + size, 'x');
                return true;
            }
            int const written =
                std::snprintf(path, static_cast<std::size_t>(size), "%s/%s", storage_->directory.c_str(), name);
            return written > 0 && written < size;
        }

    private:
        FakeStorage* storage_;
    };

    Trouble* trouble = nullptr;
    std::string directory = ".";
    bool hasInterface2 = true;
    bool hasPaths = true;
    bool unterminated = false; ///< every path is a long name without a terminating zero
    int lastSize = 0;
    std::vector<std::pair<std::string, std::string>> asked; ///< instance, file name

    IInterface* ConvertTo(char const* name) override {
        AllocationPause const pause;
        return hasInterface2 && std::string("IPermanentStorage2") == name ? &paths_ : nullptr;
    }
    char const* GetImpName() const override { return "FakeStorage"; }
    int GetImpVersion() const override { return 1; }

private:
    Paths paths_{*this};
};

/** The host: all services, any of which can be missing; a log of what was requested and released. */
class FakeHost final : public IInterfaceFactory {
public:
    FakeScheduler scheduler;
    FakeSerialFactory serial;
    FakeService sockets{"FakeSocketFactory", 23};
    FakeService buffers{"FakeCdsBuffer"};
    FakeService diagnosis{"FakeDiag"};
    FakeStorage storage;
    FakeService driverInterface{"FakeDriverInterface"};
    FakeService smux{"FakeSmux"};
    FakeService fastTimer{"FakeFastTimer"};

    std::set<std::string> lacking;
    std::vector<std::string> log; ///< "create <name>", "release <name>"

    IInterface* CreateInterface(char const* name) override {
        AllocationPause const pause;
        log.push_back(std::string("create ") + name);
        auto const services = Services();
        auto const found = services.find(name);
        return found == services.end() || lacking.contains(name) ? nullptr : found->second;
    }

    void ReleaseInterface(IInterface* object) override {
        AllocationPause const pause;
        std::string name = object == nullptr ? "null" : "stranger";
        for (auto const& [serviceName, service] : Services()) {
            if (service == object) {
                name = serviceName;
            }
        }
        log.push_back("release " + name);
    }

    /** The log's entries that begin with @p kind ("create" or "release"), without it. */
    std::vector<std::string> Logged(std::string const& kind) const {
        std::vector<std::string> names;
        for (auto const& entry : log) {
            if (entry.starts_with(kind + " ")) {
                names.push_back(entry.substr(kind.size() + 1));
            }
        }
        return names;
    }

private:
    std::map<std::string, IInterface*> Services() {
        return {{"IMultiTask2", &scheduler},
                {"ISerialFactory", &serial},
                {"ISocketFactory", &sockets},
                {"ICDSBuffer", &buffers},
                {"IDiag", &diagnosis},
                {"IPermanentStorage", &storage},
                {"IDriverInterface", &driverInterface},
                {"ISmux", &smux},
                {"IFastTimer", &fastTimer}};
    }
};

} // namespace velktest
