#include "config/forwarding_settings.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Puts the settings back, whatever a test makes of them.
class ForwardingSettingsTest : public testing::Test {
  protected:
    ~ForwardingSettingsTest() override { ReplaceForwardingTarget(before_.ip, before_.port); }

  private:
    ForwardingTarget before_ = CopyForwardingTarget();
};

TEST_F(ForwardingSettingsTest, FreshSettingsAreOffLocalHostAnd162) {
    const ForwardingSettingFields fresh;
    EXPECT_FALSE(fresh.forwardingEnabled);
    EXPECT_EQ(fresh.forwardingIp, L"127.0.0.1");
    EXPECT_EQ(fresh.forwardingPort, 162);
}

TEST_F(ForwardingSettingsTest, PortsFrom1To65535StayAndAllOthersBecome162) {
    for (const int32_t port : {1, 2, 161, 162, 1024, 65534, 65535}) {
        EXPECT_EQ(ClampForwardingPort(port), port);
    }
    for (const int32_t port : {0, -1, -5, 65536, 70000, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(ClampForwardingPort(port), 162) << port;
    }
}

TEST_F(ForwardingSettingsTest, CopyGivesWhatWasReplaced) {
    ReplaceForwardingTarget(L"10.1.2.3", 9162);
    const ForwardingTarget target = CopyForwardingTarget();
    EXPECT_EQ(target.ip, L"10.1.2.3");
    EXPECT_EQ(target.port, 9162);
}

TEST_F(ForwardingSettingsTest, AddressAndPortAreReplacedAsOnePair) {
    const ForwardingTarget first = {L"10.0.0.1", 1};
    const ForwardingTarget second = {L"a much longer address text that needs memory of its own", 2};
    ReplaceForwardingTarget(first.ip, first.port);
    std::thread writer([&] {
        for (int round = 0; round < 2000; ++round) {
            const ForwardingTarget& next = round % 2 == 0 ? second : first;
            ReplaceForwardingTarget(next.ip, next.port);
        }
    });
    int mixed = 0;
    for (int round = 0; round < 2000; ++round) {
        const ForwardingTarget seen = CopyForwardingTarget();
        mixed += seen.ip != (seen.port == 1 ? first.ip : second.ip);
    }
    writer.join();
    EXPECT_EQ(mixed, 0);
}

}  // namespace
