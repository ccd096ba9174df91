// The three settings of the receiver, all about passing received datagrams on.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

// A port that datagrams can be sent to, 1 to 65535. Made of any other number it is 162, so that nobody can
// store one that is out of range.
class ForwardingPort {
  public:
    ForwardingPort(int32_t port = kDefault);
    operator int32_t() const { return port_; }

  private:
    static constexpr int32_t kDefault = 162;
    int32_t port_;
};

// GUI thread replaces, any thread copies; under ForwardingLock, but that a look at the flag alone needs none.
struct ForwardingSettingFields {
    std::atomic<bool> forwardingEnabled{false};
    std::wstring forwardingIp = L"127.0.0.1";  // as typed, not checked
    ForwardingPort forwardingPort;
};
extern ForwardingSettingFields ForwardingSettings;

// Guards the three as one. Held for one copy or one assignment; nothing is called under it.
extern std::mutex ForwardingLock;

// The three at one moment.
struct ForwardingValues {
    bool enabled = false;
    std::wstring ip;
    ForwardingPort port;
};
ForwardingValues CopyForwarding();

// Holds from the next datagram on, and as a whole: none in between goes to a target for which forwarding was
// never on (the first of all, 127.0.0.1 port 162, is this program's own). May throw std::bad_alloc; nothing
// has changed then.
void ReplaceForwarding(bool enabled, const std::wstring& ip, ForwardingPort port);
