#include "config/forwarding_settings.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

// Restores the settings after each test.
class ForwardingSettingsTest : public testing::Test {
  protected:
    ~ForwardingSettingsTest() override { ReplaceForwarding(before_.enabled, before_.ip, before_.port); }

  private:
    ForwardingValues before_ = CopyForwarding();
};

TEST_F(ForwardingSettingsTest, DefaultsAreOffLocalHostAnd162) {
    const ForwardingSettingFields defaults;
    EXPECT_FALSE(defaults.forwardingEnabled);
    EXPECT_EQ(defaults.forwardingIp, L"127.0.0.1");
    EXPECT_EQ(defaults.forwardingPort, 162);
}

TEST_F(ForwardingSettingsTest, PortsFrom1To65535AreUnchangedAndAllOthersBecome162) {
    const auto store = [](int32_t port) {
        ReplaceForwarding(false, L"10.1.2.3", port);
        return CopyForwarding().port;
    };
    for (const int32_t port : {1, 2, 161, 162, 1024, 65534, 65535}) {
        EXPECT_EQ(store(port), port);
    }
    for (const int32_t port : {0, -1, -5, 65536, 70000, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(store(port), 162) << port;
    }
}

// The settings alternate between two sets of values; no copy may mix them.
TEST_F(ForwardingSettingsTest, AllThreeAreReplacedTogether) {
    constexpr int kRounds = 20000;
    const std::wstring on = L"10.0.0.1";
    const std::wstring off = L"a much longer address text that needs memory of its own";
    ReplaceForwarding(true, on, 1);
    std::thread writer([&] {
        for (int round = 0; round < kRounds; ++round) {
            ReplaceForwarding(false, off, 2);
            ReplaceForwarding(true, on, 1);
        }
    });
    int mixed = 0;
    for (int round = 0; round < kRounds; ++round) {
        const ForwardingValues seen = CopyForwarding();
        mixed += seen.ip != (seen.enabled ? on : off) || seen.port != (seen.enabled ? 1 : 2);
    }
    writer.join();
    EXPECT_EQ(mixed, 0);
}

}  // namespace
