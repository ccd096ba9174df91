// The whole receiver on its real ports, with its own data folder. The ports are fixed, so these programs run
// in a private network namespace.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "platform/udp_socket.h"
#include "tests/support/ber_encoder.h"
#include "tests/support/loopback_client.h"
#include "tests/support/scratch_folder.h"
#include "tests/support/wait_until.h"

constexpr uint16_t kListenerPort = 161;

// The octets of the sample message `name`.
const Octets& Sample(std::string_view name);

// The sample's lines in SNMP.txt after the header line, without the empty line at the end.
std::string ExpectedLines(std::string_view name);

// A v2c trap of 65,507 octets, the largest datagram; its last binding is the integer 4711.
Octets LargestMessage();

class EngineTest : public ::testing::Test {
  protected:
    // Start and stop the socket library: derived fixtures have sockets as members.
    EngineTest();
    ~EngineTest() override;
    void SetUp() override;
    void TearDown() override;

    // The lines of log.txt without their stamps. A line without a proper stamp fails the test.
    static std::vector<std::string> LogLines();
    static size_t CountLogLines(std::string_view message);
    static bool WaitForLogLines(std::string_view message, size_t count = 1);
    static std::string TrapFile();
    // The records of SNMP.txt without their stamps and empty lines.
    static std::vector<std::string> TrapRecords();
    static bool WaitForTraps(size_t count);

  private:
    ScratchFolder scratch_;
    AppPathsGuard paths_{scratch_};
};
