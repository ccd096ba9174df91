// The one function that libFuzzer asks for; the build says which check is behind it.
#include "fuzz/fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* octets, size_t size) {
    QUILLMONT_FUZZ_CHECK(octets, size);
    return 0;
}
