#include "config/forwarding_settings.h"

ForwardingSettingFields ForwardingSettings;
std::mutex ForwardingLock;

ForwardingPort::ForwardingPort(int32_t port) : port_(port >= 1 && port <= 65535 ? port : kDefault) {}

ForwardingValues CopyForwarding() {
    const std::lock_guard lock(ForwardingLock);
    return {ForwardingSettings.forwardingEnabled, ForwardingSettings.forwardingIp,
            ForwardingSettings.forwardingPort};
}

void ReplaceForwarding(bool enabled, const std::wstring& ip, ForwardingPort port) {
    const std::lock_guard lock(ForwardingLock);
    ForwardingSettings.forwardingIp = ip;  // first, because it may throw
    ForwardingSettings.forwardingPort = port;
    ForwardingSettings.forwardingEnabled.exchange(enabled);
}
