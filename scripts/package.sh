#!/usr/bin/env bash
# Builds the Debian packages libtessera<N> (the shared library) and libtessera-dev in
# build/package, a Release build of the library alone for /usr, and prints their paths.
#   scripts/package.sh              builds them
#   scripts/package.sh round-trip   then, as root, installs them with apt-get, builds the client
#                                   of tests/install through find_package and through pkg-config
#                                   with no search paths of its own (ldconfig lets the loader
#                                   find the library), runs it, purges the packages and checks
#                                   that none of their files, folders or loader entries is left
set -euo pipefail
cd "$(dirname "$0")/.."
case ${1:-} in
  "") round_trip=false ;;
  round-trip) round_trip=true ;;
  *) echo "usage: $0 [round-trip]" >&2; exit 2 ;;
esac
if $round_trip && [ "$(id -u)" -ne 0 ]; then
  echo "error: installing the packages needs root" >&2
  exit 1
fi

source scripts/deps.sh
tessera_install_dependencies
cmake -S . -B build/package -DCMAKE_BUILD_TYPE=Release -DCMAKE_INSTALL_PREFIX=/usr \
      -DTESSERA_BUILD_TESTS=OFF -DTESSERA_BUILD_EXAMPLES=OFF >/dev/null
cmake --build build/package -j"$(nproc)"
rm -f build/package/*.deb
(cd build/package && cpack -G DEB >/dev/null)
ls build/package/*.deb
$round_trip || exit 0

unset CMAKE_PREFIX_PATH PKG_CONFIG_PATH LD_LIBRARY_PATH
export DEBIAN_FRONTEND=noninteractive
runtime_deb=$(ls build/package/libtessera[0-9]*_*.deb)
dev_deb=$(ls build/package/libtessera-dev_*.deb)
packages=("$(dpkg-deb -f "$runtime_deb" Package)" "$(dpkg-deb -f "$dev_deb" Package)")
libdir=/usr/lib/$(dpkg-architecture -qDEB_HOST_MULTIARCH)
# Installed or with configuration files left: dpkg still knows of it.
known() {
  local status
  status=$(dpkg-query -W -f='${Status}' "$1" 2>/dev/null) || return 1
  [[ $status != *not-installed ]]
}
for package in "${packages[@]}"; do
  if known "$package"; then
    echo "error: $package is installed already; purge it first" >&2
    exit 1
  fi
done
# Paths inside the packages, folders with a trailing slash.
contents=$(dpkg-deb -c "$runtime_deb"; dpkg-deb -c "$dev_deb")
paths=$(awk '{print $6}' <<<"$contents" | sed 's|^\./|/|; /^\/$/d' | sort -u)

work=$(mktemp -d)
purge() { apt-get purge -y -qq "${packages[@]}" >/dev/null; rm -rf "$work"; }
trap purge EXIT

apt-get install -y -qq "./$runtime_deb" "./$dev_deb" >/dev/null
echo "installed: ${packages[*]}"

cmake -S tests/install -B "$work/cmake" >/dev/null
found=$(sed -n 's/^Tessera_DIR:PATH=//p' "$work/cmake/CMakeCache.txt")
[ "$found" = "$libdir/cmake/Tessera" ] || { echo "error: find_package found $found" >&2; exit 1; }
cmake --build "$work/cmake" -j"$(nproc)" >/dev/null
"$work/cmake/client"
"$work/cmake/client_static"
# /lib is /usr/lib on Debian 12, and the loader may name either.
loaded=$(ldd "$work/cmake/client" | awk '/libtessera\.so/ {print $3}')
[ -n "$loaded" ] && [ "$loaded" -ef "$libdir/$(basename "$loaded")" ] ||
  { echo "error: the loader finds libtessera at '$loaded', not in $libdir" >&2; exit 1; }

echo "pkg-config: $(pkg-config --cflags --libs tessera) (libdir $(pkg-config --variable=libdir tessera))"
[ "$(pkg-config --variable=libdir tessera)" = "$libdir" ] || { echo "error: wrong libdir" >&2; exit 1; }
# shellcheck disable=SC2046
c++ -std=c++17 tests/install/Client.cpp $(pkg-config --cflags --libs tessera) -o "$work/client-pc"
"$work/client-pc"

trap - EXIT
purge
left=""
for path in $paths; do
  if [[ $path == */ ]]; then
    # A folder stays only while another package owns it.
    if [ -d "$path" ] && ! dpkg-query -S "${path%/}" >/dev/null 2>&1; then left+=" $path"; fi
  elif [ -e "$path" ] || [ -L "$path" ]; then
    left+=" $path"
  fi
done
if ldconfig -p | grep libtessera; then left+=" (loader cache entry)"; fi
for package in "${packages[@]}"; do
  if known "$package"; then left+=" (dpkg record of $package)"; fi
done
[ -z "$left" ] || { echo "error: left after purge:$left" >&2; exit 1; }
echo "purged: nothing left"
