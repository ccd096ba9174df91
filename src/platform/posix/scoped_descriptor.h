// Owns one file descriptor.
#pragma once

#include <unistd.h>

#include "platform/scoped.h"

struct Descriptor {
    using Value = int;
    static constexpr Value kNone = -1;
    static bool IsOpen(Value descriptor) { return descriptor >= 0; }
    static void Close(Value descriptor) { close(descriptor); }
};
using ScopedDescriptor = Scoped<Descriptor>;
