// Memory that runs out at each request in turn. The global operator new is replaced by linking
// scarce_memory.cpp, hence programs of their own.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

// A moment of want, or the end of all memory.
enum class Shortage { OneRequest, ThatAndAllLater };

constexpr size_t kNoRequest = SIZE_MAX;

// Counts requests from its beginning and refuses the given one, until its end.
class ScopedShortage {
  public:
    ScopedShortage(size_t request, Shortage kind);
    ~ScopedShortage();
    ScopedShortage(const ScopedShortage&) = delete;
    ScopedShortage& operator=(const ScopedShortage&) = delete;

    static size_t requests();  // made since the last one began
    static size_t octets();    // that these asked for
};

enum class Outcome { Returned, NoMemory, OtherException };

struct Attempt {
    Outcome outcome = Outcome::Returned;
    size_t requests = 0;   // that it made
    size_t octets = 0;     // that these asked for
    bool refused = false;  // whether it came as far as the refused one
};

template <typename Action>
Attempt Try(const Action& action, size_t request = kNoRequest, Shortage kind = Shortage::OneRequest) {
    Attempt attempt;
    const ScopedShortage scope(request, kind);
    try {
        action();
    } catch (const std::bad_alloc&) {
        attempt.outcome = Outcome::NoMemory;
    } catch (...) {
        attempt.outcome = Outcome::OtherException;
    }
    attempt.requests = ScopedShortage::requests();
    attempt.octets = ScopedShortage::octets();
    attempt.refused = request < attempt.requests;
    return attempt;
}

// Calls prepare(), action() and check(attempt, request) for each request of `action` in turn, until it makes
// fewer. Returns how many were refused.
template <typename Prepare, typename Action, typename Check>
size_t RefuseEachRequest(Shortage kind, const Prepare& prepare, const Action& action, const Check& check) {
    for (size_t request = 0;; ++request) {
        prepare();
        const Attempt attempt = Try(action, request, kind);
        if (!attempt.refused) {
            EXPECT_EQ(attempt.outcome, Outcome::Returned);
            return request;
        }
        const ::testing::ScopedTrace trace(__FILE__, __LINE__, "refused request " + std::to_string(request));
        check(attempt, request);
    }
}
