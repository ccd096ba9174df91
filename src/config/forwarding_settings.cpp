#include "config/forwarding_settings.h"

ForwardingSettingFields ForwardingSettings;
std::mutex ForwardingLock;

// Unsigned, so that one comparison catches 0 and the negative ones too.
ForwardingPort::ForwardingPort(int32_t port)
    : port_(static_cast<uint32_t>(port) - 1U > 65534U ? kDefault : port) {}

ForwardingValues CopyForwarding() {
    const std::lock_guard lock(ForwardingLock);
    return {ForwardingSettings.forwardingEnabled, ForwardingSettings.forwardingIp,
            ForwardingSettings.forwardingPort};
}

void ReplaceForwarding(bool enabled, const std::wstring& ip, ForwardingPort port) {
    const std::lock_guard lock(ForwardingLock);
    ForwardingSettings.forwardingIp = ip;  // first: when there is no memory for it, nothing has changed
    ForwardingSettings.forwardingPort = port;
    ForwardingSettings.forwardingEnabled.exchange(enabled);
}
