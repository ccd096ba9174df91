#!/usr/bin/env bash
# Builds and runs the tests: the engine under sanitizers, the Windows programs under Wine, and the program itself in
# its windows. With --all also ThreadSanitizer, clang-tidy, clang as a second compiler, the packages, the scripts and
# the kit for a real Windows machine. Needs no preparation on a fresh Debian 12 or 13 machine.
# Prints CTest's summary and why tests were skipped. The exit code is 0 only if nothing failed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

builds=(native windows)
case "${1:-}" in
    "")
        scripts/packages.sh build run test
        scripts/build.sh native
        scripts/build.sh windows
        selection=(--label-exclude '^all$')
        ;;
    --all)
        scripts/packages.sh build run test check package icon
        builds+=(tsan)
        scripts/build.sh native
        scripts/build.sh tsan
        scripts/build.sh windows all tests/kit/all tests/packages/all
        selection=()
        ;;
    *)
        echo "Usage: ./test.sh [--all]" >&2
        exit 2
        ;;
esac

# One CTest run over all builds. Tests mostly wait, so more of them run at once than there are processors.
for build in "${builds[@]}"; do
    echo "subdirs($build)"
done >build/CTestTestfile.cmake
code=0
ctest --test-dir build --output-on-failure --no-tests=error -j "$(($(nproc) * 2))" "${selection[@]}" </dev/null || code=$?
scripts/list_skipped.sh build/Testing/Temporary/LastTest.log
exit "$code"
