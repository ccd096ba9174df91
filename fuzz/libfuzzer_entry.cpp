// The function that libFuzzer calls; the build defines which check it runs.
#include "fuzz/fuzz_targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* octets, size_t size) {
    QUILLMONT_FUZZ_CHECK(octets, size);
    return 0;
}
