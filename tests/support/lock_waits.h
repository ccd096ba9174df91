// Whether an action waits for a lock.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

// Runs `action` on another thread while the lock is held here. True: it had not ended a tenth of a second
// after its start; it has when this returns. An action that locks always waits, so a slow machine can hide a
// missing lock but never fail because of an existing one.
template <typename Action>
bool WaitsFor(std::mutex& lock, Action action) {
    std::atomic<bool> started{false};
    std::atomic<bool> ended{false};
    std::unique_lock held(lock);
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
    held.unlock();
    other.join();
    return waited;
}
