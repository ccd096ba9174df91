// Runs a step whose failure must not stop the next one.
#pragma once

// Runs `step` and catches every exception. Returns whether `step` completed. The exceptions that occur are
// memory shortages and locks that the system refuses. They are not logged, since the log may be what failed.
template <typename Step>
bool RunGuarded(Step&& step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        return false;
    }
}
