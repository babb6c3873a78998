#!/usr/bin/env bash
# Transfers with servers and clients that are not the library's, and over bad networks: what ./run peers does.
# A planted bit that a relay changed was noticed by the pages', the values' and the encrypted connections' tests.
# usage: peers.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

VELSOCK_BUILD_DIR=$2 "$1/run" peers
