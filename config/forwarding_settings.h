// The three settings of the receiver, all about passing received datagrams on.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

struct ForwardingTarget {
    std::wstring ip;
    int32_t port = 0;
};

struct ForwardingSettingFields {
    std::atomic<bool> forwardingEnabled{false};  // GUI thread stores; trap thread loads for every datagram.
    std::wstring forwardingIp = L"127.0.0.1";  // GUI thread replaces; as typed, not checked. Under the lock.
    int32_t forwardingPort = 162;              // GUI thread stores; always 1 to 65535. Under the lock.
};
extern ForwardingSettingFields ForwardingSettings;

// Guards forwardingIp and forwardingPort, as one pair. Held for one copy or one assignment; nothing is called
// under it.
extern std::mutex ForwardingTargetLock;

ForwardingTarget CopyForwardingTarget();
void ReplaceForwardingTarget(const std::wstring& ip, int32_t port);

// The port itself when it lies from 1 to 65535, else 162. Every writer of forwardingPort goes through this.
int32_t ClampForwardingPort(int32_t port);
