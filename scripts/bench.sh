#!/usr/bin/env bash
# Builds the benchmarks (preset bench, Release), runs every program with interleaved
# repetitions, and writes REPORT.md and report.png with Tessera beside its peers.
#   scripts/bench.sh [--quick] [--filter REGEX] [--out DIR]
#     --quick         3 repetitions of 0.05 s instead of 5 of 0.4 s: a smoke run
#     --filter REGEX  only the benchmarks whose name matches, and their peers
#     --out DIR       where REPORT.md and report.png go (default bench/)
# The raw JSON stays in build/bench/results/; scripts/bench_report.py remakes the report
# from it without running anything:
#   scripts/bench_report.py --meta build/bench/results/machine.json build/bench/results/*-*.json
set -euo pipefail
cd "$(dirname "$0")/.."
started=$(date +%s)

mode=full repetitions=5 min_time=0.4 filter="" out=bench
while [ $# -gt 0 ]; do
  case "$1" in
    --quick) mode=quick repetitions=3 min_time=0.05 ;;
    --filter) filter="${2:?--filter needs a regex}"; shift ;;
    --filter=*) filter="${1#--filter=}" ;;
    --out) out="${2:?--out needs a folder}"; shift ;;
    --out=*) out="${1#--out=}" ;;
    -h|--help) sed -n '2,10p' "$0" | sed 's/^# \{0,1\}//'; exit 0 ;;
    *) echo "bench.sh: unknown option $1 (try --help)" >&2; exit 2 ;;
  esac
  shift
done

source scripts/deps.sh
TESSERA_PACKAGES+=(python3-matplotlib)
tessera_install_dependencies

cmake --preset bench >/dev/null
cmake --build build/bench -j"$(nproc)"

results=build/bench/results
rm -rf "$results"
mkdir -p "$results"
load() { cut -d' ' -f1-3 /proc/loadavg | sed 's/ /, /g'; }
load_before=$(load)

# Programs in the report's order, then any newcomer.
programs=()
for subsystem in memory text time internet events timers numerics; do
  [ -x "build/bench/bench/$subsystem/bench_$subsystem" ] && programs+=("build/bench/bench/$subsystem/bench_$subsystem")
done
while IFS= read -r program; do
  [[ " ${programs[*]} " == *" $program "* ]] || programs+=("$program")
done < <(find build/bench/bench -name 'bench_*' -type f -perm -u+x | sort)

# Benchmarks that need a process where no thread has started yet run in one of their own.
solo='NoThreadStarted'

# Runs `program` on exactly the names given on stdin, into `json`.
run_names() {
  local program=$1 json=$2 names
  names=$(sed 's/[][\.|$(){}?+*^]/\\&/g' | paste -sd'|')
  [ -n "$names" ] || return 0
  echo "== $(basename "$program") -> $json"
  { "$program" --benchmark_filter="^($names)\$" \
               --benchmark_repetitions="$repetitions" --benchmark_enable_random_interleaving=true \
               --benchmark_min_time="$min_time" \
               --benchmark_format=console --benchmark_out_format=json --benchmark_out="$json" ||
      echo "bench.sh: $(basename "$program") failed; the report lists what it wrote" >&2
  } | grep -vE '_(mean|stddev|cv|median) ' || true
}

for program in "${programs[@]}"; do
  name=$(basename "$program")
  listed=$("$program" --benchmark_list_tests=true || true)
  # A filtered case keeps its peers, or its ratios would be blank.
  [ -z "$filter" ] || listed=$(python3 scripts/bench_report.py --select="$filter" <<<"$listed")
  [ -n "$listed" ] || continue
  grep -E "$solo" <<<"$listed" | run_names "$program" "$results/$name-solo.json" || true
  grep -vE "$solo" <<<"$listed" | run_names "$program" "$results/$name-all.json" || true
done
load_after=$(load)

cpu=$(sed -n 's/^model name[[:space:]]*: //p' /proc/cpuinfo | head -1)
[ -n "$cpu" ] || cpu=$(lscpu 2>/dev/null | sed -n 's/^Model name: *//p' | head -1)
cache() { sed -n "s/^$1:[A-Z]*=//p" build/bench/CMakeCache.txt; }
compiler_info=$(find build/bench/CMakeFiles -name CMakeCXXCompiler.cmake | sort | tail -1)
compiler_id() { sed -n "s/^set(CMAKE_CXX_COMPILER_$1 \"\(.*\)\")/\1/p" "$compiler_info"; }
build_type=$(cache CMAKE_BUILD_TYPE)
MODE=$mode REPETITIONS=$repetitions MIN_TIME=$min_time FILTER=$filter CPU=$cpu CORES=$(nproc) \
KERNEL="Linux $(uname -r)" LOAD_BEFORE=$load_before LOAD_AFTER=$load_after \
DATE=$(date -u '+%Y-%m-%d %H:%M UTC') \
COMMIT="$(git describe --always --dirty 2>/dev/null || echo unknown) ($(git rev-parse --abbrev-ref HEAD 2>/dev/null || echo '?'))" \
COMPILER="$(compiler_id ID) $(compiler_id VERSION) ($(realpath "$(cache CMAKE_CXX_COMPILER)"))" \
BUILD_TYPE="$build_type $(cache "CMAKE_CXX_FLAGS_${build_type^^}")" \
BENCHMARK_VERSION=$(dpkg-query -W -f='${Version}' libbenchmark-dev 2>/dev/null || echo '?') \
SECONDS_TAKEN=$(($(date +%s) - started)) \
python3 - "$results/machine.json" <<'EOF'
import json, os, sys
keys = ["mode", "repetitions", "min_time", "filter", "cpu", "cores", "kernel", "load_before",
        "load_after", "date", "commit", "compiler", "build_type", "benchmark_version"]
meta = {key: os.environ[key.upper()] for key in keys}
meta["seconds"] = int(os.environ["SECONDS_TAKEN"])
with open(sys.argv[1], "w") as f:
    json.dump(meta, f, indent=1)
EOF

shopt -s nullglob
python3 scripts/bench_report.py --meta "$results/machine.json" --out "$out" "$results"/bench_*.json
elapsed=$(($(date +%s) - started))
echo "Total time: $((elapsed / 60)) min $((elapsed % 60)) s"
