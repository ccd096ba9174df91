#include "trap/listener_thread.h"

#include <array>
#include <functional>
#include <string>

#include "core/activity_log.h"
#include "core/app_paths.h"
#include "core/data_files.h"
#include "trap/ipv4_text.h"
#include "trap/receive_loop.h"

namespace {

// The log lines of what waited together. Each datagram overwrites the one before: nobody looks at
// its content.
class ListenerTurn : public ReceiveTurn {
  public:
    std::span<uint8_t> Room() override {
        return taken_ < kMostDatagrams ? std::span<uint8_t>(buffer_) : std::span<uint8_t>();
    }

    void Take(size_t, const Ipv4Endpoint& sender) override {
        ++taken_;
        message_.assign(L"Datagram on UDP 161 from ");
        AppendIpv4Text(message_, sender.address);
        message_.push_back(L'.');
        AppendLogLine(message_, logLines_);
    }

    void Clear() override {
        taken_ = 0;
        logLines_.clear();
    }

    void WriteLines() const {
        if (!logLines_.empty()) {
            AppendLinesToFile(AppPaths.logFilePath, logLines_);
        }
    }

  private:
    static constexpr size_t kBufferSize = 4096;  // a longer datagram is cut
    static constexpr size_t kMostDatagrams = 256;

    std::array<uint8_t, kBufferSize> buffer_;
    size_t taken_ = 0;
    std::wstring message_;
    std::string logLines_;
};

void LogDatagrams(UdpSocket& socket) {
    ListenerTurn turn;
    const auto write = [&turn] { turn.WriteLines(); };
    ReceiveWhileRunning(socket, turn, std::ref(write));
}

}  // namespace

void ListenerThread(UdpSocket& listenerSocket) {
    LogMessage(L"Listener thread started (UDP 161).");
    try {
        LogDatagrams(listenerSocket);
    } catch (...) {
        // As in TrapThread: this thread ends, everything else goes on.
    }
    LogMessage(L"Listener thread stopped (UDP 161).");
}
