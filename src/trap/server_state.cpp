#include "trap/server_state.h"

ServerStateFields ServerState;
std::mutex LastTrapSenderLock;

std::wstring CopyLastTrapSender() {
    const std::lock_guard lock(LastTrapSenderLock);
    return ServerState.lastTrapSender;
}

void ReplaceLastTrapSender(std::wstring_view sender) {
    const std::lock_guard lock(LastTrapSenderLock);
    ServerState.lastTrapSender = sender;
}
