// One step that the next step must not depend on.
#pragma once

// Runs `step`; what it throws ends this step alone. True: it came to its end. What can be thrown here at all
// is a shortage of memory or a lock that the system refuses; there is nothing to report it to, since the log
// itself may be what failed.
template <typename Step>
bool RunGuarded(Step&& step) noexcept {
    try {
        step();
        return true;
    } catch (...) {
        return false;
    }
}
