#!/usr/bin/env bash
# Installs what is missing, builds the library and the whole test suite, and runs it.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/deps.sh
tessera_install_dependencies
cmake --preset default -DTESSERA_BUILD_TESTS=ON >/dev/null
cmake --build build/default -j"$(nproc)"
ctest --preset default -j"$(nproc)"
