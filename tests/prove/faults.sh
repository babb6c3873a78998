#!/usr/bin/env bash
# Every call of the module to the C library fails with every number that the manual has for it, and every allocation,
# once and from then on, in every scene (tests/faults).
# Its tests plant a descriptor, a block, a thread key, a start-up, a thread, a sink, an exception and a crash, and see
# each noticed.
# usage: faults.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

cmake --preset release -B "$2/release" >/dev/null
cmake --build "$2/release" --parallel "$(nproc)" --target fault_campaign >/dev/null
"$2/release/bin/fault_campaign" --stage system-calls --stage allocations
