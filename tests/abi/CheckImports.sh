#!/usr/bin/env bash
# The module starts no process and no thread, changes no signal's disposition, reads no environment variable and writes
# to no standard stream: it asks the C library for nothing that could.
# usage: CheckImports.sh MODULE
set -euo pipefail

forbidden='v?fork|_?Fork|clone3?|exec(l|v)[a-z]*|fexecve|posix_spawnp?|system|popen|wordexp
pthread_create|thrd_create|getaddrinfo_a|timer_create|mq_notify|std::(j?thread|async)\b.*
signal|sigaction|sigset|bsd_signal|sysv_signal|sigvec
(secure_)?getenv|setenv|putenv|unsetenv|clearenv|environ
v?printf|__v?printf_chk|puts|putchar|stdout|stderr|stdin|std::(cout|cerr|clog|cin)\b.*
dlopen|dlmopen|raise|kill|abort|exit|_exit|quick_exit'

imports=$(nm --dynamic --undefined-only --format=posix --demangle "$1" | sed -E 's/ [UwvV]( .*)?$//; s/@.*//')
[ -n "$imports" ] || {
  echo "$1 imports nothing"
  exit 1
}
if grep -xE "$(paste -sd '|' <<<"$forbidden")" <<<"$imports"; then
  echo "$1 must not import these"
  exit 1
fi
echo "$(wc -l <<<"$imports") functions are imported, and none of what the library must not do"
