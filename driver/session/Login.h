#pragma once

#include "driver/config/NodeParams.h"

#include <cstdint>

namespace _VELK {

/**
 * Which node the driver is logged in to, and when to give up that login.
 *
 * A PLC that has restarted no longer knows the login, and one that is gone cannot log out. If a login were kept for
 * ever, the first would refuse every call, and the second would make every other node of the line unreachable. So after
 * five calls in a row that fail with a login, it is forgotten without a logout.
 */
class Login {
public:
    static constexpr int kFailuresThatForget = 5;

    /** Use this and not node(), because 0 is a valid node. */
    [[nodiscard]] bool isLoggedIn() const { return loggedIn_; }
    [[nodiscard]] bool isWithAnother(std::uint32_t node) const { return loggedIn_ && node_ != node; }

    [[nodiscard]] std::uint32_t node() const { return node_; } ///< 0 also when there is no login

    /** The parameters that the login was made with, even if the configuration has changed since. */
    [[nodiscard]] NodeParams const& params() const { return params_; }

    /** Before a login is sent: keeps its parameters. May throw std::bad_alloc. */
    void prepare(NodeParams const& params) { params_ = params; }

    /** The node has accepted the login. */
    void accepted(std::uint32_t node) {
        node_ = node;
        loggedIn_ = true;
        failedCalls_ = 0;
    }

    /** The node has accepted the logout. */
    void left() { loggedIn_ = false; }

    void forget() {
        loggedIn_ = false;
        node_ = 0;
        failedCalls_ = 0;
    }

    /** A call before that has no end was ended by an exception, or by the host cancelling its thread: it failed, too.
     */
    void beginCall() {
        if (inCall_) {
            failed();
            endCall();
        }
        inCall_ = true;
        doubted_ = false;
    }

    /** The node served the present call: counting starts again. */
    void succeeded() {
        doubted_ = false;
        failedCalls_ = 0;
    }

    /** The present call failed in a way that a lost login would explain. */
    void failed() { doubted_ = true; }

    void endCall() {
        inCall_ = false;
        if (doubted_ && loggedIn_ && ++failedCalls_ >= kFailuresThatForget) {
            forget();
        }
    }

private:
    NodeParams params_;
    std::uint32_t node_ = 0;
    bool loggedIn_ = false;
    bool inCall_ = false;  ///< between beginCall() and endCall()
    bool doubted_ = false; ///< the present call failed
    int failedCalls_ = 0;  ///< failed calls in a row with the present login
};

} // namespace _VELK
