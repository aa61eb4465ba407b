#!/usr/bin/env bash
# Holds the interface of a shared library to that of the last release, which lies in this folder as text.
#   compare.sh LIBRARY DUMP            fails where a function or a type is gone or other than it was
#   compare.sh --update LIBRARY DUMP   writes the text anew
# The library has debug information; abidw and abidiff are those of abigail-tools.
set -euo pipefail
root=$(dirname "$(dirname "$(realpath "$0")")")

# As text: nothing of the machine, no types that no public header declares, nothing that only libraries of one release
# share.
describe() {  # library, file
  local headers=(--headers-dir "$root/include") header
  for header in "$root"/src/*.h; do headers+=(--header-file "$header"); done
  abidw --no-corpus-path --no-comp-dir-path --no-show-locs --no-elf-needed --no-parameter-names --drop-undefined-syms \
    --exported-interfaces-only --drop-private-types "${headers[@]}" --suppressions "$root/abi/private.suppressions" \
    --out-file "$2" "$1"
}

if [ "${1:-}" = --update ]; then
  describe "$2" "$3"
  exit
fi
new=$(mktemp --suffix=.abi)
trap 'rm "$new"' EXIT
describe "$1" "$new"
abidiff --no-added-syms "$2" "$new"
