#!/usr/bin/env bash
# The stages: the scripts beside this one whose names begin with a small letter, NAME.sh PROJECT_FOLDER BUILD_FOLDER.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")"
LC_ALL=C
for script in [a-z]*.sh; do echo "${script%.sh}"; done
