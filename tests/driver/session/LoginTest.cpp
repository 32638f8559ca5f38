#include "driver/session/Login.h"

#include <gtest/gtest.h>

#include <string>

/** Which node the driver is logged in to, and when it discards the login; nothing is exchanged here. */
namespace {

using _VELK::Login;
using _VELK::NodeParams;

/** How one call of the driver ends. */
enum class Call { Succeeds, Fails, SaysNothing };

void Make(Login& login, Call outcome) {
    login.beginCall();
    if (outcome == Call::Succeeds) {
        login.succeeded();
    } else if (outcome == Call::Fails) {
        login.failed();
    }
    login.endCall();
}

void FailTimes(Login& login, int count) {
    for (int i = 0; i < count; ++i) {
        Make(login, Call::Fails);
    }
}

class LoginTest : public ::testing::Test {
protected:
    Login login;
};

TEST_F(LoginTest, NobodyIsLoggedInToAtFirst) {
    EXPECT_FALSE(login.isLoggedIn());
    EXPECT_FALSE(login.isWithAnother(1));
    EXPECT_EQ(login.node(), 0U);
}

TEST_F(LoginTest, AcceptedLoginIsWithItsNode) {
    login.accepted(5);
    EXPECT_TRUE(login.isLoggedIn());
    EXPECT_EQ(login.node(), 5U);
    EXPECT_FALSE(login.isWithAnother(5));
    EXPECT_TRUE(login.isWithAnother(3));
}

TEST_F(LoginTest, NodeZeroIsANode) {
    login.accepted(0);
    EXPECT_TRUE(login.isLoggedIn());
    EXPECT_TRUE(login.isWithAnother(1));
    EXPECT_FALSE(login.isWithAnother(0));
}

TEST_F(LoginTest, KeepsTheParametersThatItWasMadeWith) {
    NodeParams params;
    params.model = "Motorola";
    params.Timeout = 700;
    login.prepare(params);
    login.accepted(5);
    params.model = "Intel";
    params.Timeout = 500;
    EXPECT_TRUE(login.params().isBigEndian());
    EXPECT_EQ(login.params().Timeout, 700);
}

TEST_F(LoginTest, PreparedLoginIsNotOneYet) {
    login.prepare(NodeParams{});
    EXPECT_FALSE(login.isLoggedIn());
}

TEST_F(LoginTest, LogoutEndsIt) {
    login.accepted(5);
    login.left();
    EXPECT_FALSE(login.isLoggedIn());
    EXPECT_FALSE(login.isWithAnother(3));
}

TEST_F(LoginTest, FifthFailedCallInARowForgetsIt) {
    login.accepted(5);
    FailTimes(login, 4);
    EXPECT_TRUE(login.isLoggedIn());
    Make(login, Call::Fails);
    EXPECT_FALSE(login.isLoggedIn());
    EXPECT_EQ(login.node(), 0U);
}

TEST_F(LoginTest, SuccessBeginsTheCountAnew) {
    login.accepted(5);
    FailTimes(login, 4);
    Make(login, Call::Succeeds);
    FailTimes(login, 4);
    EXPECT_TRUE(login.isLoggedIn());
    Make(login, Call::Fails);
    EXPECT_FALSE(login.isLoggedIn());
}

TEST_F(LoginTest, CallThatSaysNothingNeitherCountsNorBeginsTheCountAnew) {
    login.accepted(5);
    FailTimes(login, 4);
    Make(login, Call::SaysNothing);
    EXPECT_TRUE(login.isLoggedIn());
    Make(login, Call::Fails);
    EXPECT_FALSE(login.isLoggedIn());
}

TEST_F(LoginTest, CallThatFailsTwiceCountsOnce) {
    login.accepted(5);
    for (int i = 0; i < 4; ++i) {
        login.beginCall();
        login.failed();
        login.failed();
        login.endCall();
    }
    EXPECT_TRUE(login.isLoggedIn());
}

TEST_F(LoginTest, FailuresWithoutALoginDoNotCount) {
    FailTimes(login, 7);
    login.accepted(5);
    FailTimes(login, 4);
    EXPECT_TRUE(login.isLoggedIn());
}

TEST_F(LoginTest, NewLoginBeginsTheCountAnew) {
    login.accepted(5);
    FailTimes(login, 4);
    login.left();
    login.accepted(3);
    FailTimes(login, 4);
    EXPECT_TRUE(login.isLoggedIn());
}

} // namespace
