// How a check says that a promise was broken.
#pragma once

#include <cstdio>
#include <cstdlib>

// Ends the process unless `kept`. An abort, since that is what a fuzzer takes for a finding.
inline void Promise(bool kept, const char* promise) {
    if (!kept) {
        std::fprintf(stderr, "Promise broken: %s\n", promise);
        std::fflush(stderr);
        std::abort();
    }
}
