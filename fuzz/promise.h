// How a check reports a broken promise.
#pragma once

#include <cstdio>
#include <cstdlib>

// Aborts, which a fuzzer counts as a finding, unless `isTrue`.
inline void Promise(bool isTrue, const char* promise) {
    if (!isTrue) {
        std::fprintf(stderr, "Promise broken: %s\n", promise);
        std::fflush(stderr);
        std::abort();
    }
}
