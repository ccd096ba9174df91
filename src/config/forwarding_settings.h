// The settings of the receiver: whether and where to forward received datagrams.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

// A port from 1 to 65535. Any other number becomes 162, so an invalid port cannot be stored.
class ForwardingPort {
  public:
    ForwardingPort(int32_t port = kDefault);
    operator int32_t() const { return port_; }

  private:
    static constexpr int32_t kDefault = 162;
    int32_t port_;
};

// The GUI thread replaces them, any thread copies them. Guarded by ForwardingLock, but the flag alone may be
// read without it.
struct ForwardingSettingFields {
    std::atomic<bool> forwardingEnabled{false};
    std::wstring forwardingIp = L"127.0.0.1";  // as typed, not checked
    ForwardingPort forwardingPort;
};
extern ForwardingSettingFields ForwardingSettings;

// Guards the three settings together. Locked for one copy or one assignment; nothing else is called while it
// is held.
extern std::mutex ForwardingLock;

// A consistent copy of the three settings.
struct ForwardingValues {
    bool enabled = false;
    std::wstring ip;
    ForwardingPort port;
};

// Locks ForwardingLock. May throw std::bad_alloc.
ForwardingValues CopyForwarding();

// Replaces the three settings together; they apply from the next datagram on. Replacing them one by one could
// send a datagram to a target for which forwarding was never on, such as the default, which is this program's
// own port. Locks ForwardingLock. May throw std::bad_alloc; nothing has changed then.
void ReplaceForwarding(bool enabled, const std::wstring& ip, ForwardingPort port);
