#include "trap/trap_processing.h"

#include <string>
#include <vector>

#include "core/run_guarded.h"
#include "trap/forwarding.h"
#include "trap/ipv4_text.h"
#include "trap/pending_output.h"
#include "trap/server_state.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

namespace {

void ProcessTrap(const TrapArrival& trap, bool isAlone, UdpSocket* forwardSocket, PendingOutput& output) {
    SetLastTrap(trap.sender);
    const std::wstring sender = FormatIpv4Address(trap.sender.address);
    std::vector<VarbindRecord> bindings;
    DecodeSnmpMessage(trap.octets, trap.count, bindings);
    output.AddRecord(ComposeTrapRecord(trap.time, sender, bindings));
    output.AddLogLine(L"Trap received (" + sender + L").");
    if (isAlone) {
        output.Write();
    }
    ForwardDatagram(trap.octets, trap.count, forwardSocket, output);
}

}  // namespace

void ProcessTraps(std::span<const TrapArrival> arrivals, UdpSocket* forwardSocket) noexcept {
    const bool isAlone = arrivals.size() == 1;
    PendingOutput output;
    for (const TrapArrival& trap : arrivals) {
        RunGuarded([&] { ProcessTrap(trap, isAlone, forwardSocket, output); });
    }
    output.Write();
}
