#!/usr/bin/env bash
# Installs what is missing, builds the library and runs the example program.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/deps.sh
tessera_install_dependencies
cmake --preset default -DTESSERA_BUILD_TESTS=OFF >/dev/null
cmake --build build/default -j"$(nproc)" --target tessera tessera_static tessera_tour
./build/default/examples/tessera_tour
