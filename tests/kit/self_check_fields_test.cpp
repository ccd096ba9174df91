// The forwarding fields, and forwarding to targets that cannot be reached.
#include "tests/kit/self_check.h"

#include "tests/support/sample_messages.h"

namespace {

struct FieldCase {
    std::wstring typed;
    std::string saved;
};

// Returns the value of an element of config.xml.
std::string Setting(const std::string& name) {
    const std::string config = ReadDataFile(L"config.xml");
    const size_t start = config.find("<" + name + ">") + name.size() + 2;
    return config.substr(start, config.find("</" + name + ">") - start);
}

class ForwardingFields : public SelfCheck {};

TEST_F(ForwardingFields, APortIsReadAsANumberAndAnInvalidOneBecomes162) {
    for (const FieldCase& field :
         {FieldCase{L"1", "1"}, FieldCase{L"65535", "65535"}, FieldCase{L" 999", "999"},
          FieldCase{L"999x", "999"}, FieldCase{L"+77", "77"}, FieldCase{L"0", "162"}, FieldCase{L"-1", "162"},
          FieldCase{L"65536", "162"}, FieldCase{L"4294967297", "162"}, FieldCase{L"port", "162"},
          FieldCase{L"", "162"},
          // Only 62 characters are read: the buffer of 63 includes the terminator.
          FieldCase{std::wstring(60, L'0') + L"99", "99"},
          FieldCase{std::wstring(60, L'0') + L"999", "99"}}) {
        Forward(L"127.0.0.1", field.typed);
        EXPECT_EQ(Setting("forwardingPort"), field.saved) << testing::PrintToString(field.typed);
    }
}

TEST_F(ForwardingFields, AnAddressIsSavedAsTypedUpTo254Characters) {
    for (const FieldCase& field :
         {FieldCase{L"", "127.0.0.1"}, FieldCase{L" 10.0.0.1", " 10.0.0.1"}, FieldCase{L"a host", "a host"},
          FieldCase{std::wstring(254, L'7'), std::string(254, '7')},
          FieldCase{std::wstring(300, L'7'), std::string(254, '7')}}) {
        Forward(field.typed, L"162");
        EXPECT_EQ(Setting("forwardingIp"), field.saved) << testing::PrintToString(field.typed);
    }
}

class ForwardingFailures : public SelfCheck {
  protected:
    // Sends three traps. Returns for how many of them log.txt says that forwarding failed.
    size_t CountFailuresOfThree() const {
        for (size_t sent = 1; sent <= 3; ++sent) {
            Send(FindSample("v2_link_down").octets);
            EXPECT_TRUE(WaitForTraps(sent));
        }
        const auto failures = [] { return CountLogLines("Forwarding failed (sendto error)."); };
        WaitUntil([&] { return failures() == 3; }, 2s);
        EXPECT_EQ(CountOf(ReadDataFile(kTraps), "FROM: 127.0.0.1"), 3U);
        return failures();
    }
};

// sendto documents WSAEACCES for a broadcast address on a socket without SO_BROADCAST.
TEST_F(ForwardingFailures, ABroadcastAddressFailsForEachTrap) {
    Forward(L"255.255.255.255", L"162");
    EXPECT_EQ(CountFailuresOfThree(), 3U);
}

TEST_F(ForwardingFailures, AClosedPortStopsNeitherForwardingNorReceiving) {
    LoopbackClient target;
    const std::wstring port = std::to_wstring(target.port());
    target.Close();
    Forward(L"127.0.0.1", port);
    Fact("forwarding three traps to a closed port of this computer: " +
         std::to_string(CountFailuresOfThree()) + " fail");
    const LoopbackClient open;
    Forward(L"127.0.0.1", std::to_wstring(open.port()));
    Send(FindSample("v1_link_down").octets);
    EXPECT_EQ(open.Receive(), FindSample("v1_link_down").octets);
}

// 240.0.0.1 is reserved: no network delivers to it.
TEST_F(ForwardingFailures, AnAddressWithoutARouteDoesNotStopReceiving) {
    Forward(L"240.0.0.1", L"162");
    Fact("forwarding three traps to 240.0.0.1: " + std::to_string(CountFailuresOfThree()) + " fail");
}

}  // namespace
