// Runs a step whose failure must not stop the next one.
#pragma once

// Runs `step` and catches every exception. Returns whether it completed. Only memory shortages and locks that
// the system refuses can cause one. It is not logged, since the log itself may be what failed.
template <typename Step>
bool RunGuarded(Step&& step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        return false;
    }
}
