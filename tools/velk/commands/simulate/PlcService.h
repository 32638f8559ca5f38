#pragma once

#include "base/FileDescriptor.h"
#include "plc/ports/FdServer.h"

#include <exception>
#include <thread>

namespace velk::simulation {

/** Serves a line in a thread of its own. */
class PlcService {
public:
    /** @p server must outlive the service. */
    explicit PlcService(plc::FdServer& server);
    ~PlcService();
    PlcService(PlcService const&) = delete;
    PlcService& operator=(PlcService const&) = delete;

    void start();

    /** Readable from the moment on when nothing is served any more. */
    [[nodiscard]] int endDescriptor() const { return end_.get(); }
    [[nodiscard]] bool isOver() const;

    /** Ends and answers why the server stopped. Throws what it has thrown. */
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
