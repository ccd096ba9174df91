#include "config/forwarding_settings.h"

ForwardingSettingFields ForwardingSettings;
std::mutex ForwardingTargetLock;

ForwardingTarget CopyForwardingTarget() {
    const std::lock_guard lock(ForwardingTargetLock);
    return {ForwardingSettings.forwardingIp, ForwardingSettings.forwardingPort};
}

void ReplaceForwardingTarget(const std::wstring& ip, int32_t port) {
    const std::lock_guard lock(ForwardingTargetLock);
    ForwardingSettings.forwardingIp = ip;
    ForwardingSettings.forwardingPort = port;
}

int32_t ClampForwardingPort(int32_t port) {
    constexpr int32_t kDefaultPort = 162;
    // Unsigned, so that one comparison catches 0 and the negative ones too.
    return static_cast<uint32_t>(port) - 1U > 65534U ? kDefaultPort : port;
}
