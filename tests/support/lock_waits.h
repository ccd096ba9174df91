// Tests whether an action waits for a lock.
#pragma once

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

// Runs `action` on another thread while this one holds `lock`. True: it was still running after 100 ms. It
// has ended when this returns. A slow machine can hide a missing lock but cannot fail an action that locks.
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
