#include "trap/forwarding.h"

#include <string>

#include "config/forwarding_settings.h"
#include "platform/text.h"
#include "trap/server_state.h"

void ForwardDatagram(const uint8_t* octets, size_t count, UdpSocket* socket, PendingOutput& output) {
    if (!ForwardingSettings.forwardingEnabled || socket == nullptr) {
        return;
    }
    const ForwardingValues target = CopyForwarding();
    std::string addressText;
    Ipv4Endpoint endpoint;
    // Check the flag again, together with its target: both may have changed since the unlocked check above.
    if (!target.enabled || !EncodeAnsi(target.ip, addressText) ||
        !ParseIpv4Address(addressText, &endpoint.address)) {
        return;
    }
    endpoint.port = static_cast<uint16_t>(target.port);
    SendResult result = TrySendDatagram(*socket, endpoint, octets, count);
    if (result == SendResult::BufferFull && ServerState.running) {
        output.Write();  // records and log lines must not wait for the network
    }
    while (result == SendResult::BufferFull && WaitForSendBuffer(*socket)) {
        result = TrySendDatagram(*socket, endpoint, octets, count);
    }
    if (result == SendResult::Failed || result == SendResult::BufferFull) {
        output.AddLogLine(L"Forwarding failed (sendto error).");
    }
}
