#pragma once

#include "base/FileDescriptor.h"
#include "plc/ports/FdServer.h"

#include <exception>
#include <thread>

namespace velk::simulation {

/** Serves a line in a separate thread. */
class PlcService {
public:
    /** @p server must outlive the service. */
    explicit PlcService(plc::FdServer& server);
    ~PlcService();
    PlcService(PlcService const&) = delete;
    PlcService& operator=(PlcService const&) = delete;

    void start();

    /** Readable once the service has ended. */
    [[nodiscard]] int endDescriptor() const { return end_.get(); }
    [[nodiscard]] bool isOver() const;

    /** Ends the service and returns why the server stopped. Rethrows its exception. */
    plc::FdServer::End finish();

private:
    void tellEnd() const;

    plc::FdServer& server_;
    base::FileDescriptor end_;
    plc::FdServer::End why_ = plc::FdServer::End::kStopped;
    std::exception_ptr problem_;
    std::jthread thread_;
};

} // namespace velk::simulation
