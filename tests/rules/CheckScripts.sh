#!/usr/bin/env bash
# Holds every script to what shellcheck finds; an exception stands in the script, with its reason.
# usage: CheckScripts.sh PROJECT_FOLDER
set -euo pipefail

cd "$1"
command -v shellcheck >/dev/null || {
  echo "shellcheck is not installed"
  exit 1
}

# Whatever begins like a script, or ends like one.
scripts() {
  find . \( -name .git -o -path ./build \) -prune -o -type f \( -name '*.sh' -o -perm -u+x \) -print |
    while read -r file; do
      if [[ $file == *.sh ]] || head -n 1 "$file" | grep -qE '^#!.*sh'; then echo "$file"; fi
    done
}

mapfile -t files < <(scripts | LC_ALL=C sort)
((${#files[@]} > 0)) || {
  echo "no scripts were found"
  exit 1
}
shellcheck --external-sources --source-path=SCRIPTDIR "${files[@]}"
echo "${#files[@]} scripts pass shellcheck"
