#!/usr/bin/env bash
# A soak that keeps something each round must say so, and fail.
# usage: PlantedLeakTests.sh PROGRAM LEAK QUANTITY
set -euo pipefail

status=0
said=$("$1" 1 7 "$2") || status=$?
echo "$said"
[ "$status" = 1 ] && grep -q "^$3: .*TOO MUCH" <<<"$said"
