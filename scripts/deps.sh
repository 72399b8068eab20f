#!/usr/bin/env bash
# Makes sure the Debian packages the build needs are present. As root it installs what is
# missing; otherwise it prints the exact apt-get line and fails. Sourced by the other scripts.
set -euo pipefail

TESSERA_PACKAGES=(cmake g++ clang make pkg-config dpkg-dev file abigail-tools libboost-dev libgtest-dev libbenchmark-dev
                  libicu-dev libpoco-dev liburiparser-dev locales)

tessera_missing_packages() {
  local missing=()
  for package in "${TESSERA_PACKAGES[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
      missing+=("$package")
    fi
  done
  echo "${missing[@]:-}"
}

tessera_has_utf8_locale() {
  locale -a 2>/dev/null | grep -qiE '^en_US\.utf-?8$'
}

tessera_install_dependencies() {
  local missing
  missing=$(tessera_missing_packages)
  if [ -n "$missing" ]; then
    if [ "$(id -u)" -ne 0 ]; then
      echo "Missing Debian packages. Install them with:" >&2
      echo "  sudo apt-get install -y ${missing}" >&2
      exit 1
    fi
    echo "Installing: ${missing}"
    export DEBIAN_FRONTEND=noninteractive
    apt-get update -qq
    # shellcheck disable=SC2086
    apt-get install -y -qq --no-install-recommends ${missing} >/dev/null
  fi
  # The text tests compare under a UTF-8 locale as well as "C".
  if ! tessera_has_utf8_locale; then
    if [ "$(id -u)" -eq 0 ] && [ -f /etc/locale.gen ]; then
      sed -i 's/^# *en_US.UTF-8 UTF-8/en_US.UTF-8 UTF-8/' /etc/locale.gen
      grep -q '^en_US.UTF-8 UTF-8' /etc/locale.gen || echo 'en_US.UTF-8 UTF-8' >> /etc/locale.gen
      locale-gen >/dev/null
    else
      echo "note: no en_US.UTF-8 locale; the UTF-8 locale tests will be skipped" \
           "(as root: sed -i 's/^# *en_US.UTF-8/en_US.UTF-8/' /etc/locale.gen && locale-gen)" >&2
    fi
  fi
}
