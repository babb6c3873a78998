#!/usr/bin/env bash
# The fuzzers, five minutes for all of them: what ./run fuzz does.
# Inputs that have found something are kept in tests/fuzz/regressions.
# usage: fuzz.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

VELSOCK_BUILD_DIR=$2 "$1/run" fuzz 300
