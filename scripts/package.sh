#!/usr/bin/env bash
# Builds the Debian packages libtessera<N> (the shared library) and libtessera-dev in
# build/package, a Release build of the library alone for /usr, and prints their paths.
set -euo pipefail
cd "$(dirname "$0")/.."
source scripts/deps.sh
tessera_install_dependencies
cmake -S . -B build/package -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
      -DTESSERA_BUILD_TESTS=OFF -DTESSERA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/package -j"$(nproc)"
rm -f build/package/*.deb
(cd build/package && cpack -G DEB >/dev/null)
ls build/package/*.deb
