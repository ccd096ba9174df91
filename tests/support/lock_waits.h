// Whether something waits for a lock, as a claim that needs no luck.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

// Runs `action` on a thread of its own while the lock is held here. True: it had not ended a tenth of a
// second after its start; it has when this returns. An action that takes the lock always waits, so a slow
// machine can hide a lock that is missing, but never miss one that is there.
template <typename Action>
bool WaitsFor(std::mutex& lock, Action action) {
    std::atomic<bool> started{false};
    std::atomic<bool> ended{false};
    std::unique_lock hold(lock);
    std::thread other([&] {
        started = true;
        action();
        ended = true;
    });
    while (!started) {
        std::this_thread::yield();
    }
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
    while (!ended && std::chrono::steady_clock::now() < deadline) {
        std::this_thread::yield();
    }
    const bool waited = !ended;
    hold.unlock();
    other.join();
    return waited;
}
