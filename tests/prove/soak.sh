#!/usr/bin/env bash
# Hundreds of connections for ten minutes: what ./run soak does.
# Its tests plant a block and a descriptor in each round, and see each noticed.
# usage: soak.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

VELSOCK_BUILD_DIR=$2 "$1/run" soak 10
