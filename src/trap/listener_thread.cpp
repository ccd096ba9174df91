#include "trap/listener_thread.h"

#include <array>

#include "core/activity_log.h"
#include "core/run_guarded.h"
#include "trap/ipv4_text.h"
#include "trap/pending_output.h"
#include "trap/receive_loop.h"

namespace {

// Collects log lines only: each datagram overwrites the previous one in the buffer.
class ListenerBatch : public ReceiveBatch {
  public:
    std::span<uint8_t> FreeSpace() override {
        return arrivals_ < kMaxArrivals ? std::span<uint8_t>(buffer_) : std::span<uint8_t>();
    }

    void AddArrival(size_t, const Ipv4Endpoint& sender) override {
        ++arrivals_;
        RunGuarded([&] {
            output_.AddLogLine(L"Datagram on UDP 161 from " + FormatIpv4Address(sender.address) + L".");
        });
    }

    void Process() override {
        output_.Write();
        arrivals_ = 0;
    }

  private:
    static constexpr size_t kBufferSize = 4096;  // a longer datagram is truncated
    static constexpr size_t kMaxArrivals = 256;

    std::array<uint8_t, kBufferSize> buffer_;
    size_t arrivals_ = 0;
    PendingOutput output_;
};

}  // namespace

void ListenerThread(UdpSocket& listenerSocket) noexcept {
    LogMessage(L"Listener thread started (UDP 161).");
    RunGuarded([&] {
        ListenerBatch batch;
        ReceiveWhileRunning(listenerSocket, batch);
    });
    LogMessage(L"Listener thread stopped (UDP 161).");
}
