#!/usr/bin/env bash
# Looks for the compiler's and the linker's protections in modules, programs and archives of objects, for Linux or for
# Windows.
# usage: CheckProtections.sh [--installed] FILE...
# --installed: the files must not look for libraries in a fixed folder either.
#
# Control-flow guard is not asked for on Windows, since mingw-w64 has none. The note that a file has landing places
# throughout is asked for in objects alone: Debian's start files have no such note, and the linker then leaves it out.
set -euo pipefail

fail() {
  echo "$1" >&2
  exit 1
}

installed=false
if [ "${1-}" = --installed ]; then
  installed=true
  shift
fi
[ $# -gt 0 ] || fail "no files to check"

# has WHAT PATTERN COMMAND...: the command's output about the file has a line like the pattern; lacks: it has none.
has() {
  "${@:3}" "$file" | grep -E -e "$2" >/dev/null || fail "$file: no $1"
}
lacks() {
  if "${@:3}" "$file" | grep -E -e "$2" >&2; then fail "$file: has $1"; fi
}

check_elf() {
  has "read-only relocations" GNU_RELRO readelf -lW
  has "binding at load time" '\(FLAGS_1\).*NOW' readelf -dW
  has "stack that is not executable" 'GNU_STACK.* RW +0x' readelf -lW
  lacks "a part that can be written and executed" 'LOAD.* RWE ' readelf -lW
  lacks "relocations in its code" TEXTREL readelf -dW
  has "stack protector" ' __stack_chk_fail@' readelf --dyn-syms -W
  lacks "formatting that is not checked" ' v?(f|sn?)?printf@' readelf --dyn-syms -W
  if $installed; then check_search; fi
  if [ "$(uname -m)" = x86_64 ]; then check_landing_places; fi
}

# It is there, or the loader could not place a program anywhere else.
check_program() {
  has "address of the loader's choice" '\(FLAGS_1\).*PIE' readelf -dW
}

# The module calls functions that have a checked form.
check_module() {
  has "checked functions" ' __(mem|str|sn?printf|vsn?printf)[a-z]*_chk@' readelf --dyn-syms -W
}

check_search() {
  # shellcheck disable=SC2016  # the loader's word for the file's own folder
  if readelf -dW "$file" | grep -E 'RPATH|RUNPATH' | grep -vE '\[\$ORIGIN(/[^:]*)?\]' >&2; then
    fail "$file: searches a fixed folder"
  fi
}

# Each exported function begins with one. Start files have a few of their own.
check_landing_places() {
  local places
  places=$(objdump -d --no-show-raw-insn "$file" | sed -nE 's/^ *([0-9a-f]+):\s+endbr64.*/\1/p')
  [ "$(wc -l <<<"$places")" -gt 20 ] || fail "$file: no landing places of indirect branches"
  nm --dynamic --defined-only "$file" | awk -v places="$places" -v file="$file" '
    BEGIN { count = split(places, list, "\n"); for (i = 1; i <= count; ++i) known[list[i]] = 1 }
    $2 ~ /^[TW]$/ { sub(/^0+/, "", $1); if (!($1 in known)) { print file ": no landing place at " $3; failed = 1 } }
    END { exit failed }' >&2
}

# What a program is linked with has the same protections as far as they are the compiler's.
check_archive() {
  lacks "code for an executable stack" 'GNU-stack .* X ' readelf -SW
  has "stack protector" 'U __stack_chk_fail$' nm
  has "checked functions" 'U __[a-z]*(cpy|printf)_chk$' nm
  if [ "$(uname -m)" = x86_64 ]; then
    local notes
    notes=$(readelf -nW "$file" | grep -c 'x86 feature: IBT, SHSTK' || true)
    [ "$notes" = "$(ar t "$file" | wc -l)" ] || fail "$file: not all objects have landing places of indirect branches"
  fi
}

check_windows() {
  local what
  for what in DYNAMIC_BASE HIGH_ENTROPY_VA NX_COMPAT; do has "$what" "$what" x86_64-w64-mingw32-objdump -p; done
  # Without relocations it can only be loaded where it was linked for.
  has "relocations" ' \.reloc ' x86_64-w64-mingw32-objdump -h
}

check() {
  case $(head -c 4 "$file" | tr -d '\0') in
    $'\x7fELF')
      check_elf
      if readelf -dW "$file" | grep -q '(SONAME)'; then check_module; else check_program; fi
      ;;
    '!<ar') check_archive ;;
    MZ*) check_windows ;;
    *) fail "$file: neither a module nor a program nor an archive" ;;
  esac
}

for file in "$@"; do check; done
echo "$# files have their protections"
