#include "trap/forwarding.h"

#include "config/forwarding_settings.h"
#include "core/activity_log.h"
#include "platform/text.h"

void ForwardDatagram(const uint8_t* octets, size_t count, UdpSocket* socket, std::string& logLines) {
    if (!ForwardingSettings.forwardingEnabled || socket == nullptr) {
        return;
    }
    const ForwardingValues target = CopyForwarding();
    std::string addressText;
    Ipv4Endpoint endpoint;
    // Asked again: it may have been switched off, and the target replaced, since.
    if (!target.enabled || !EncodeAnsi(target.ip, addressText) ||
        !ParseIpv4Address(addressText, &endpoint.address)) {
        return;
    }
    endpoint.port = static_cast<uint16_t>(target.port);
    const SendResult result = SendDatagram(*socket, endpoint, octets, count);
    if (result == SendResult::Failed || result == SendResult::NoRoom) {
        AppendLogLine(L"Forwarding failed (sendto error).", logLines);
    }
}
