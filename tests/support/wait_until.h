// Waiting for another thread, another program or the system.
#pragma once

#include <chrono>
#include <thread>

// Returns true as soon as `condition` does, false if it does not within `limit`.
template <typename Condition>
bool WaitUntil(const Condition& condition,
               std::chrono::milliseconds limit = std::chrono::milliseconds(20000)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    return true;
}
