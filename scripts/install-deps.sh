#!/usr/bin/env bash
# Installs what Morvena needs to build, run and test, from Debian 12's packages.
# Does nothing when everything is already there.
set -euo pipefail

packages=(
    build-essential cmake pkg-config clang-format
    qt6-base-dev qt6-base-dev-tools libqt6svg6 libgl-dev
    libsqlite3-dev sqlite3 libpq-dev libgumbo-dev qt6-translations-l10n mdbtools-dev mdbtools
    postgresql-15 postgresql-contrib
    xvfb xauth xdotool imagemagick poppler-utils fonts-dejavu-core xdg-utils iproute2
)

missing=()
for package in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$package")
    fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo=()
[ "$(id -u)" = 0 ] || sudo=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo[@]}" apt-get update -qq
"${sudo[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
