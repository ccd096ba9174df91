#include "trap/trap_thread.h"

#include <algorithm>
#include <functional>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "core/file_text.h"
#include "core/run_guarded.h"
#include "trap/forwarding.h"
#include "trap/ipv4_text.h"
#include "trap/receive_loop.h"
#include "trap/snmp_message.h"
#include "trap/trap_record.h"

namespace {

// Ordinary traps fit into one Ethernet frame.
constexpr size_t kLargestOrdinaryDatagram = 1500;

bool IsGiant(const TrapArrival& trap) {
    return trap.count > kLargestOrdinaryDatagram;
}

// Gives back what a hostile giant took, be it recorded or not: when memory runs out on the way, above all.
class GiantRelease {
  public:
    GiantRelease(std::span<const TrapArrival> arrivals, TrapWorkspace& workspace)
        : needed_(std::any_of(arrivals.begin(), arrivals.end(), IsGiant)), workspace_(workspace) {}
    GiantRelease(const GiantRelease&) = delete;
    GiantRelease& operator=(const GiantRelease&) = delete;
    ~GiantRelease() {
        if (needed_) {
            workspace_.bindings.Release();
            std::wstring().swap(workspace_.record);
            std::string().swap(workspace_.records);
        }
    }

  private:
    bool needed_;
    TrapWorkspace& workspace_;
};

void ReplaceSenderText(const TrapArrival& trap, std::wstring& text) {
    text.clear();
    AppendIpv4Text(text, trap.sender.address);
}

void AppendRecord(const TrapArrival& trap, TrapWorkspace& workspace) {
    ReplaceSenderText(trap, workspace.sender);
    DecodeSnmpMessage(trap.octets, trap.count, workspace.bindings);
    ComposeTrapRecord(trap.time, workspace.sender, workspace.bindings, workspace.record);
    AppendFileLines(workspace.record, workspace.records);
}

void AppendAnnouncement(const TrapArrival& trap, TrapWorkspace& workspace) {
    ReplaceSenderText(trap, workspace.sender);
    workspace.message.assign(L"Trap received (").append(workspace.sender).append(L").");
    AppendLogLine(workspace.message, workspace.logLines);
}

// One step for each trap that was recorded; what it throws ends it for that trap alone.
template <typename Step>
void ForEachRecorded(std::span<TrapArrival> arrivals, Step step) {
    for (const TrapArrival& trap : arrivals) {
        if (trap.recorded) {
            RunGuarded([&] { step(trap); });
        }
    }
}

// Writes what was collected and empties it. An empty append would make a file that is missing.
void WriteCollected(const std::wstring& path, std::string& octets) {
    if (!octets.empty()) {
        AppendLinesToFile(path, octets);
    }
    octets.clear();
}

void ReceiveTraps(UdpSocket& trapSocket, UdpSocket* forwardSocket) {
    // On the stack, which a thread has from its start or does not start at all: a receiver must not end for
    // want of its buffer.
    TrapTurn turn;
    TrapWorkspace workspace;
    const auto record = [&] { RecordTraps(turn.arrivals(), forwardSocket, workspace); };
    // By reference, which needs no memory either.
    ReceiveWhileRunning(trapSocket, turn, std::ref(record));
}

}  // namespace

void RecordTraps(std::span<TrapArrival> arrivals, UdpSocket* forwardSocket, TrapWorkspace& workspace) {
    const GiantRelease release(arrivals, workspace);
    workspace.records.clear();
    workspace.logLines.clear();

    for (TrapArrival& trap : arrivals) {
        trap.recorded = RunGuarded([&] { AppendRecord(trap, workspace); });
    }
    WriteCollected(AppPaths.trapFilePath, workspace.records);

    ForEachRecorded(arrivals, [&](const TrapArrival& trap) { AppendAnnouncement(trap, workspace); });
    WriteCollected(AppPaths.logFilePath, workspace.logLines);

    ForEachRecorded(arrivals, [&](const TrapArrival& trap) {
        ForwardDatagram(trap.octets, trap.count, forwardSocket, workspace.logLines);
    });
    WriteCollected(AppPaths.logFilePath, workspace.logLines);
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
