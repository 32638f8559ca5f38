// The smallest host: loads the module, opens a serial port and reads one variable.
//   minimal-host PORT ADDRESS [SETTING...]
//   minimal-host /dev/ttyUSB0 '1?PLC_PRG/Counter?M?0?int' baudrate=19200 model=Intel
#include "interfaces/HostServices.h"
#include "interfaces/IInterfaceFactory.h"
#include "interfaces/IProtModule.h"
#include "interfaces/IProtocol.h"
#include "interfaces/IProtocolFactory.h"
#include "interfaces/ITag.h"
#include "interfaces/ModuleEntry.h"

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>
#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <string>
#include <termios.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

// Of two entries with one name the first counts: the settings of the command line stand before these.
constexpr char const* kSettings = "parity=none baudrate=115200 stopbits=1 mode=RS-232 protType=Serial_RS232 "
                                  "BlockSize=1024 Timeout=2000 repeat=2 model=Motorola RoutingLevels=0 CouplerLV1=0 "
                                  "ChannelLV1=0 CouplerLV2=0 ChannelLV2=0";

/** The operations that every service begins with. */
template <class Interface>
class Service : public Interface {
public:
    IInterface* ConvertTo(char const*) override { return nullptr; }
    char const* GetImpName() const override { return "MinimalHost"; }
    int GetImpVersion() const override { return 1; }
};

class Scheduler : public Service<IMultiTask2> {
public:
    void HostSlot5() override {}
    void HostSlot6() override {}
    void HostSlot7() override {}
    void HostSlot8() override {}
    void Yield(int) override { sched_yield(); }
};

class Port : public Service<ISerialPort> {
public:
    explicit Port(std::string name) : name_(std::move(name)) {}
    Port(Port const&) = delete;
    Port& operator=(Port const&) = delete;
    ~Port() override {
        if (fd_ >= 0) {
            close(fd_);
        }
    }

    int Open(int baud, int parity, int, int stopBits, int rs485) override {
        fd_ = open(name_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
        termios line{};
        if (rs485 != 0 || parity > 2 || fd_ < 0 || tcgetattr(fd_, &line) != 0) {
            return 0;
        }
        cfmakeraw(&line);
        line.c_cflag = (line.c_cflag & ~static_cast<tcflag_t>(PARODD | CSTOPB | CRTSCTS)) | CLOCAL | CREAD;
        line.c_cflag |= stopBits == 2 ? CSTOPB : 0U;
        line.c_cflag |= parity == 1 ? PARENB : parity == 2 ? PARENB | PARODD : 0U;
        // The GNU C library takes the bits per second as well as its own constants.
        return cfsetspeed(&line, static_cast<speed_t>(baud)) == 0 && tcsetattr(fd_, TCSANOW, &line) == 0 ? 1 : 0;
    }

    void Close() override {} // not called: the factory gets the port back instead

    int Purge(unsigned char* buffer, int, int) override { return read(fd_, buffer, 1460) > 0 ? 1 : 0; }

    int Write(unsigned char const* bytes, int length, int) override {
        for (int sent = 0; sent < length;) {
            ssize_t const n = write(fd_, bytes + sent, static_cast<std::size_t>(length - sent));
            if (n < 0 && (errno != EAGAIN || !wait(POLLOUT, 1000))) {
                return 0;
            }
            sent += n > 0 ? static_cast<int>(n) : 0;
        }
        return 1;
    }

    int Read(unsigned char* buffer, int maximum, int firstByteMs, int interCharMs, int* count, int) override {
        *count = 0;
        while (*count < maximum && wait(POLLIN, *count == 0 ? firstByteMs : interCharMs)) {
            ssize_t const n = read(fd_, buffer + *count, static_cast<std::size_t>(maximum - *count));
            if (n <= 0) {
                return 0; // the line is gone
            }
            *count += static_cast<int>(n);
        }
        return 1;
    }

private:
    bool wait(short what, int timeoutMs) const {
        pollfd entry{fd_, what, 0};
        return poll(&entry, 1, timeoutMs) > 0;
    }

    std::string name_;
    int fd_ = -1;
};

class Ports : public Service<ISerialFactory> {
public:
    ISerialPort* CreatePort(char const* name) override { return new Port(name); }
    void ReleasePort(ISerialPort* port) override { delete port; }
};

/** What the module gets to see of the host. */
class Host final : public IInterfaceFactory {
public:
    IInterface* CreateInterface(char const* name) override {
        std::string const wanted = name;
        if (wanted == "IMultiTask2" || wanted == "ISerialFactory") {
            return wanted == "IMultiTask2" ? static_cast<IInterface*>(&scheduler_) : &ports_;
        }
        // Two more must be there, but nothing calls them. Without storage the symbol file goes to the current folder.
        return wanted == "ISocketFactory" || wanted == "ICDSBuffer" ? &unused_ : nullptr;
    }
    void ReleaseInterface(IInterface*) override {}

private:
    Scheduler scheduler_;
    Ports ports_;
    Service<IInterface> unused_;
};

void print(ITag const& tag, std::vector<unsigned char> const& value) {
    for (unsigned char const byte : value) {
        std::printf("%02x ", byte);
    }
    if (std::int32_t number = 0; tag.GetVarType() == ICU_INT) {
        std::memcpy(&number, value.data(), sizeof number);
        std::printf("= %d", static_cast<int>(number));
    }
    std::printf("\n");
}

bool readOnce(IProtocol& driver, std::string const& configuration, char const* address) {
    bool const open = driver.Config(configuration.c_str()) && driver.Start();
    ITag* const tag = open ? driver.CreateTag(address) : nullptr; // stays the driver's
    std::vector<unsigned char> value(tag != nullptr ? static_cast<std::size_t>(tag->GetVarLength()) : 0);
    bool const done = tag != nullptr && driver.Read(tag, value.data());
    if (done) {
        print(*tag, value);
    }
    return done;
}

} // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("usage: minimal-host PORT ADDRESS [SETTING...]\n", stderr);
        return 2;
    }
    void* const library = dlopen(VELK_MODULE, RTLD_NOW | RTLD_LOCAL);
    void* const entry = library != nullptr ? dlsym(library, kModuleEntryName) : nullptr;
    if (entry == nullptr) {
        std::fprintf(stderr, "minimal-host: %s\n", dlerror());
        return 1;
    }
    IInterfaceFactory* const module = reinterpret_cast<GetInterfaceFactoryFunction>(entry)();
    auto* const frame = static_cast<IProtModule*>(module->CreateInterface("IProtModule"));
    auto* const factory = static_cast<IProtocolFactory*>(module->CreateInterface("IProtocolFactory"));

    std::string configuration = std::string("CfgVer=1 uart=") + argv[1];
    for (int i = 3; i < argc; ++i) {
        configuration += std::string(" ") + argv[i];
    }
    configuration += std::string(" ") + kSettings;

    Host host; // lives until the module is closed
    if (!frame->Init(&host)) {
        std::fprintf(stderr, "minimal-host: %s\n", frame->GetLastError());
        return 1;
    }
    IProtocol* const driver = factory->CreateProtocol("VELK");
    bool const done = readOnce(*driver, configuration, argv[2]);
    if (char const* const text = driver->GetLastErrorString(); !done) {
        std::fprintf(stderr, "minimal-host: %s (%d)\n", *text != '\0' ? text : "failed without a text: login refused?",
                     driver->GetLastError());
    }
    driver->Stop();
    factory->DeleteProtocol(driver); // with all of its tags
    frame->Close();
    dlclose(library);
    return done ? 0 : 1;
}
