#!/usr/bin/env bash
# Transfers with servers and clients that are not the library's, and over bad networks: what ./run peers does.
# usage: peers.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

VELSOCK_BUILD_DIR=$2 "$1/run" peers
