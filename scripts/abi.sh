#!/usr/bin/env bash
# The ABI of libtessera.so against the baseline kept in abi/libtessera.abi.
#   scripts/abi.sh check    fails when the library breaks the baseline's ABI (removed or
#                           changed functions, variables or types), and when the newest change
#                           of the baseline breaks its previous version without a new SONAME.
#                           Additions pass.
#   scripts/abi.sh update   writes the baseline from the library (same library, same file).
# Both build the shared library in build/default (RelWithDebInfo: the description comes from
# its debug information).
set -euo pipefail
cd "$(dirname "$0")/.."

baseline=abi/libtessera.abi
library=build/default/src/libtessera.so
# abidiff's exit status is a bit set.
abi_error=3 abi_change=4 abi_incompatible=8

usage() {
  echo "usage: $0 check|update" >&2
  exit 2
}
[ $# -eq 1 ] || usage
command=$1
[ "$command" = check ] || [ "$command" = update ] || usage

source scripts/deps.sh
tessera_install_dependencies
[ -f build/default/CMakeCache.txt ] || cmake --preset default >/dev/null
cmake --build build/default -j"$(nproc)" --target tessera >/dev/null
if ! readelf -S "$library" | grep -q '\.debug_info'; then
  echo "error: $library has no debug information; configure build/default as RelWithDebInfo" >&2
  exit 1
fi

# Public types only (those of include/), no source locations or build paths, hashed type ids:
# the same library gives the same file in any checkout (the build maps the tree's path away).
describe() {
  abidw --headers-dir include --drop-private-types --drop-undefined-syms --exported-interfaces-only \
        --no-show-locs --no-corpus-path --no-comp-dir-path --no-elf-needed --type-id-style hash "$library"
}

soname_of() { sed -n "s/^<abi-corpus [^>]* soname='\([^']*\)'.*/\1/p" "$1"; }

# compare OLD NEW: prints abidiff's report and sets `verdict` to "same", "additions" or "breaks".
compare() {
  local status=0 changed=0
  abidiff "$1" "$2" >"$work/report" || status=$?
  if (( status & abi_error )); then
    cat "$work/report" >&2
    echo "error: abidiff failed ($status)" >&2
    exit 1
  fi
  if (( status & abi_change )) && ! (( status & abi_incompatible )); then
    # Changes to what existed (a type's layout, a virtual table) count; new symbols do not.
    abidiff --no-added-syms "$1" "$2" >/dev/null || changed=$?
  fi
  if (( status & abi_incompatible )) || (( changed & abi_change )); then
    verdict=breaks
  elif (( status & abi_change )); then
    verdict=additions
  else
    verdict=same
  fi
  [ "$verdict" = same ] || cat "$work/report"
}

# The baseline before its newest change: the committed one while the file has uncommitted
# changes, else the one before the newest first-parent commit that changed it.
previous_baseline() {
  git rev-parse --git-dir >/dev/null 2>&1 || return 1
  local newest
  if ! git diff --quiet HEAD -- "$baseline" 2>/dev/null; then
    git show "HEAD:$baseline" 2>/dev/null
    return
  fi
  newest=$(git log --first-parent -1 --format=%H -- "$baseline")
  [ -n "$newest" ] && git show "$newest^:$baseline" 2>/dev/null
}

# Fails when the baseline's newest change breaks the previous baseline under the same SONAME.
check_history() {
  if ! previous_baseline >"$work/previous.abi" || [ ! -s "$work/previous.abi" ]; then
    echo "no earlier baseline in the history to compare with"
    return
  fi
  compare "$work/previous.abi" "$baseline" >"$work/history-report"
  if [ "$verdict" = breaks ] && [ "$(soname_of "$work/previous.abi")" = "$(soname_of "$baseline")" ]; then
    cat "$work/history-report"
    echo "error: the baseline's newest change breaks the ABI under the same SONAME" \
         "$(soname_of "$baseline"): raise the major version in CMakeLists.txt with it" >&2
    return 1
  fi
  echo "baseline history: newest change is $verdict$( [ "$verdict" = breaks ] && echo " with a new SONAME")"
}

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
describe >"$work/current.abi"

if [ "$command" = update ]; then
  mkdir -p "$(dirname "$baseline")"
  cp "$work/current.abi" "$baseline"
  echo "wrote $baseline ($(soname_of "$baseline"))"
  check_history
  exit
fi

if [ ! -f "$baseline" ]; then
  echo "error: no $baseline; write it with: $0 update" >&2
  exit 1
fi
failed=0
check_history || failed=1
library_soname=$(soname_of "$work/current.abi")
if [ "$library_soname" != "$(soname_of "$baseline")" ]; then
  echo "error: the library's SONAME is $library_soname, the baseline's $(soname_of "$baseline"):" \
       "update the baseline with it ($0 update)" >&2
  exit 1
fi
compare "$baseline" "$work/current.abi"
case $verdict in
  same) echo "ABI: same as the baseline ($library_soname)" ;;
  additions) echo "ABI: additions only ($library_soname); '$0 update' records them" ;;
  breaks)
    echo "error: the library breaks the ABI of $baseline. Keep the old interface, or raise the" \
         "major version in CMakeLists.txt (the SONAME and the package name follow) and run" \
         "'$0 update', in the same commit" >&2
    failed=1 ;;
esac
exit "$failed"
