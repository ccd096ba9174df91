#include "tests/support/fake_system.h"

#include <algorithm>
#include <memory>

#include "platform/thread.h"
#include "trap/server_state.h"

FakeSystem Fake;

struct WorkerThread {
    std::string name;
};

namespace {

void Note(const std::string& step) {
    Fake.steps.push_back(step);
}

}  // namespace

UdpSocketRef OpenUdpSocket() {
    if (Fake.socketsLeft-- <= 0) {
        return nullptr;
    }
    auto socket = std::make_shared<UdpSocket>();
    socket->name = "socket " + std::to_string(++Fake.sockets);
    Note("open " + socket->name);
    return socket;
}

bool BindToAllAddresses(UdpSocket& socket, uint16_t port) {
    Note("bind " + socket.name + " to " + std::to_string(port));
    return port != Fake.portInUse;
}

void RequestReceiveBuffer(UdpSocket& socket, int octets) {
    Note("ask for " + std::to_string(octets) + " octets for " + socket.name);
}

ReceiveResult TryReceiveDatagram(UdpSocket&, uint8_t* buffer, size_t capacity, size_t* size,
                                 Ipv4Endpoint* sender) {
    if (Fake.receptions.empty()) {
        return ReceiveResult::Closed;
    }
    const FakeSystem::Reception next = Fake.receptions.front();
    Fake.receptions.pop_front();
    if (next.result == ReceiveResult::Datagram) {
        *size = std::min(capacity, next.octets.size());
        std::copy_n(next.octets.begin(), *size, buffer);
        *sender = next.sender;
        if (Fake.onReceive) {
            Fake.onReceive();
        }
    }
    return next.result;
}

bool WaitForDatagram(UdpSocket&) {
    Note("wait for a datagram");
    return Fake.waitsRefused-- <= 0;
}

void WaitForClose(UdpSocket&) {
    Fake.waitedForClose = true;
}

SendResult TrySendDatagram(UdpSocket&, const Ipv4Endpoint& target, const uint8_t* octets, size_t size) {
    Fake.attempts.push_back({Octets(octets, octets + size), target});
    Note("send");
    if (Fake.sendResults.empty()) {
        return SendResult::Sent;
    }
    const SendResult result = Fake.sendResults.front();
    Fake.sendResults.pop_front();
    return result;
}

bool WaitForSendBuffer(UdpSocket&) {
    Note("wait for buffer");
    return Fake.onWaitForSendBuffer && Fake.onWaitForSendBuffer();
}

void EndWaiting(UdpSocket& socket) {
    Note("end waiting on " + socket.name);
}

void CloseUdpSocket(UdpSocket& socket) {
    Note("close " + socket.name);
}

// The last number of the dotted address is enough to distinguish the targets.
bool ParseIpv4Address(const std::string& text, uint32_t* address) {
    const size_t dot = text.rfind('.');
    if (dot == std::string::npos) {
        return false;
    }
    *address = static_cast<uint32_t>(std::stoi(text.substr(dot + 1)));
    return true;
}

WorkerThreadHandle StartWorkerThread(std::function<void()>) {
    if (Fake.threadsLeft-- <= 0) {
        return nullptr;
    }
    const std::string name = "worker " + std::to_string(++Fake.threads);
    Note("start " + name + (ServerState.running ? " while running" : " too early"));
    return WorkerThreadHandle(new WorkerThread{name});
}

bool WaitForWorkerThread(WorkerThread& thread, uint32_t milliseconds) {
    Note("wait " + std::to_string(milliseconds) + " ms for " + thread.name);
    return false;  // still busy
}

void WorkerThreadCloser::operator()(WorkerThread* thread) const {
    Note("release " + thread->name);
    delete thread;
}

LocalTime ReadLocalTime() {
    return Fake.now;
}

uint64_t ReadTickCount() {
    return 1;
}

void SleepMilliseconds(uint32_t milliseconds) {
    Note("sleep " + std::to_string(milliseconds) + " ms");
}
