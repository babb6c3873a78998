#!/usr/bin/env bash
# Hundreds of connections for ten minutes: what ./run soak does.
# usage: soak.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

VELSOCK_BUILD_DIR=$2 "$1/run" soak 10
