#include "trap/server_state.h"

#include <utility>

#include "core/decimal_text.h"
#include "core/run_guarded.h"
#include "platform/clock.h"
#include "trap/ipv4_text.h"

ServerStateFields ServerState;
std::mutex LastTrapSenderLock;

std::wstring CopyLastTrapSender() {
    const std::lock_guard lock(LastTrapSenderLock);
    return ServerState.lastTrapSender;
}

void SetLastTrap(const Ipv4Endpoint& sender) noexcept {
    ServerState.lastTrapTick.exchange(ReadTickCount());
    RunGuarded([&] {
        std::wstring text = FormatIpv4Address(sender.address) + L":";
        AppendDecimal(text, sender.port);
        const std::lock_guard lock(LastTrapSenderLock);
        ServerState.lastTrapSender = std::move(text);
    });
}
