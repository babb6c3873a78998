#!/usr/bin/env bash
# Hundreds of connections for ten minutes: what ./run soak does. An hour of it, on 2026-11-22, was as even: 641,592
# connections, 2,203,300 transfers of 45,077,667,209 bytes, and no rise in bytes or descriptors.
# Its tests plant a block and a descriptor in each round, and see each noticed.
# usage: soak.sh PROJECT_FOLDER BUILD_FOLDER
set -euo pipefail

VELSOCK_BUILD_DIR=$2 "$1/run" soak 10
