// The receiver as a whole on its real ports, with a separate data folder. The ports are fixed, so these
// programs run where they are free: in a network namespace or a fresh Wine prefix inside one.
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

// The octets of the sample message of that name.
const Octets& Sample(std::string_view name);

// The sample's lines in SNMP.txt after the header line, without the empty one at the end.
std::string ExpectedLines(std::string_view name);

// A v2c trap of 65,507 octets, the largest datagram; its last binding is the integer 4711.
Octets LargestMessage();

class EngineTest : public ::testing::Test {
  protected:
    // The socket library lives as long as the fixture, since fixtures have clients as members.
    EngineTest();
    ~EngineTest() override;
    void SetUp() override;
    void TearDown() override;

    // The lines of log.txt without their stamps; a line without a proper stamp is reported as a failure.
    static std::vector<std::string> LogLines();
    static size_t CountLogLines(std::string_view message);
    static bool WaitForLogLines(std::string_view message, size_t count = 1);
    static std::string TrapFile();
    // Each record of SNMP.txt without its stamp, up to and without its empty line.
    static std::vector<std::string> TrapRecords();
    static bool WaitForTraps(size_t count);

  private:
    ScratchFolder scratch_;
    AppPathsGuard paths_{scratch_};
};
