#pragma once

#include "tests/support/Conversation.h"
#include "tests/support/HostedDriverTest.h"
#include "tests/support/ScriptedPort.h"
#include "tests/support/SymbolFileBytes.h"

#include <string>

namespace velktest {

/** A driver on a scripted port. */
class DriverTest : public HostedDriverTest {
protected:
    DriverTest() { host.serial.port = &port; }

    void SetUp() override { MakeDriver(); }

    void TearDown() override {
        port.ExpectDone();
        HostedDriverTest::TearDown();
    }

    /** Creates the driver again, for services that are used at its creation. */
    void RemakeDriver() {
        DeleteDriver();
        MakeDriver();
    }

    /** Stores a symbol file for @p node, as an earlier run would have left it. */
    void Store(int node, Bytes const& file) const { dir.Put("PLCSymbols_" + std::to_string(node) + ".sdb", file); }

    Conversation Intel() { return {port, Framing{}}; }
    Conversation Motorola() { return {port, Framing{.bigEndian = true}}; }

    ScriptedPort port;
};

} // namespace velktest
