#pragma once

#include "driver/config/NodeParams.h"

#include <cstdint>

namespace _VELK {

/**
 * Which node the driver is logged in to, and how long that is believed.
 *
 * A PLC that has restarted knows no login any more, and one that is gone cannot log out. With a login kept for ever
 * the first would refuse every call, and the second would keep every other node of the line from being reached. So
 * the fifth call in a row that fails with a login forgets it, without a logout.
 */
class Login {
public:
    static constexpr int kFailuresThatForget = 5;

    /** Decides; node() does not, for node 0 is a node. */
    [[nodiscard]] bool isLoggedIn() const { return loggedIn_; }
    [[nodiscard]] bool isWithAnother(std::uint32_t node) const { return loggedIn_ && node_ != node; }

    [[nodiscard]] std::uint32_t node() const { return node_; } ///< 0 also when there is no login

    /** The parameters that the login was made with, whatever the configuration has become since. */
    [[nodiscard]] NodeParams const& params() const { return params_; }

    /** Before a login goes out: keeps what it is made with. May throw std::bad_alloc. */
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

    void beginCall() { doubted_ = false; }

    /** The node did in the present call what it was asked for: the count begins anew. */
    void succeeded() {
        doubted_ = false;
        failedCalls_ = 0;
    }

    /** The present call failed in a way that a lost login explains. */
    void failed() { doubted_ = true; }

    void endCall() {
        if (doubted_ && loggedIn_ && ++failedCalls_ >= kFailuresThatForget) {
            forget();
        }
    }

private:
    NodeParams params_;
    std::uint32_t node_ = 0;
    bool loggedIn_ = false;
    bool doubted_ = false; ///< the present call failed
    int failedCalls_ = 0;  ///< in a row, with the present login
};

} // namespace _VELK
