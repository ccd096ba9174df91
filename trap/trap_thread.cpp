#include "trap/trap_thread.h"

#include <array>
#include <functional>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/decimal_text.h"
#include "platform/clock.h"
#include "trap/forwarding.h"
#include "trap/ipv4_text.h"
#include "trap/receive_loop.h"
#include "trap/server_state.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

namespace {

constexpr size_t kLargestDatagram = 65535;

// Ordinary traps fit into one Ethernet frame.
constexpr size_t kLargestOrdinaryDatagram = 1500;

void NoteArrival(const Ipv4Endpoint& sender, std::wstring& text) {
    text.clear();
    AppendIpv4Text(text, sender.address);
    const size_t addressLength = text.size();
    text.push_back(L':');
    AppendDecimal(text, sender.port);
    ServerState.lastTrapTick.exchange(ReadTickCount());
    ReplaceLastTrapSender(text);
    text.resize(addressLength);
}

// Gives back what a hostile giant took, be it recorded or not: when memory runs out on the way, above all.
class GiantRelease {
  public:
    GiantRelease(size_t count, TrapWorkspace& workspace) : count_(count), workspace_(workspace) {}
    GiantRelease(const GiantRelease&) = delete;
    GiantRelease& operator=(const GiantRelease&) = delete;
    ~GiantRelease() {
        if (count_ > kLargestOrdinaryDatagram) {
            workspace_.bindings.Release();
            std::wstring().swap(workspace_.record);
        }
    }

  private:
    size_t count_;
    TrapWorkspace& workspace_;
};

void ReceiveTraps(UdpSocket& trapSocket, UdpSocket* forwardSocket) {
    // On the stack, which a thread has from its start or does not start at all: a receiver must not end for
    // want of its buffer.
    std::array<uint8_t, kLargestDatagram> buffer;
    TrapWorkspace workspace;
    const auto record = [&](size_t size, const Ipv4Endpoint& sender) {
        RecordTrap(buffer.data(), size, sender, forwardSocket, workspace);
    };
    // By reference, which needs no memory either.
    ReceiveWhileRunning(trapSocket, buffer.data(), buffer.size(), std::ref(record));
}

}  // namespace

void RecordTrap(const uint8_t* octets, size_t count, const Ipv4Endpoint& sender, UdpSocket* forwardSocket,
                TrapWorkspace& workspace) {
    const GiantRelease release(count, workspace);
    NoteArrival(sender, workspace.sender);
    const LocalTime time = ReadLocalTime();
    DecodeSnmpMessage(octets, count, workspace.bindings);
    ComposeTrapRecord(time, workspace.sender, workspace.bindings, workspace.record);
    AppendToFile(AppPaths.trapFilePath, workspace.record);
    workspace.logLine.assign(L"Trap received (").append(workspace.sender).append(L").");
    LogMessage(workspace.logLine);
    ForwardDatagram(octets, count, forwardSocket);
}

void TrapThread(UdpSocket& trapSocket, UdpSocket* forwardSocket) {
    LogMessage(L"Trap thread started (UDP 162).");
    try {
        ReceiveTraps(trapSocket, forwardSocket);
    } catch (...) {
        // Nothing that receives throws; if it ever does, this thread ends, and the process and the other
        // thread go on.
    }
    LogMessage(L"Trap thread stopped.");
}
