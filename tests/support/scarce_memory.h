// Makes memory requests fail, one after the other. scarce_memory.cpp replaces the global operator new, hence
// a separate program.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <string>

enum class Shortage { OneRequest, ThatAndAllLater };

constexpr size_t kNoRequest = SIZE_MAX;

// Counts memory requests during its lifetime and refuses number `request`, counted from 0.
class ScopedShortage {
  public:
    ScopedShortage(size_t request, Shortage kind);
    ~ScopedShortage();
    ScopedShortage(const ScopedShortage&) = delete;
    ScopedShortage& operator=(const ScopedShortage&) = delete;

    static size_t requests();  // since the latest ScopedShortage
    static size_t octets();    // requested in total
};

enum class Outcome { Returned, NoMemory, OtherException };

struct Attempt {
    Outcome outcome = Outcome::Returned;
    size_t requests = 0;
    size_t octets = 0;     // requested in total
    bool refused = false;  // whether the refused request was made
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

// For each memory request that `action` makes: calls prepare(), action() with that request refused, and
// check(attempt, request). Returns the number of requests.
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
