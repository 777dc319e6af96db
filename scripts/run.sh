#!/usr/bin/env bash
# Installs what is missing, builds, and opens Morvena on the sample database (copied on first
# use to ~/.local/share/morvena/Morvena.mdb, where the program finds it by its default name).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/install-deps.sh"
"$root/scripts/build.sh"
data_dir="${XDG_DATA_HOME:-$HOME/.local/share}/morvena"
mkdir -p "$data_dir"
[ -f "$data_dir/Morvena.mdb" ] || cp "$root/build/share/Morvena.mdb" "$data_dir/Morvena.mdb"
cd "$data_dir"
if [ -z "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
    exec xvfb-run -a -s "-screen 0 1280x800x24" "$root/build/app/morvena" "$@"
fi
exec "$root/build/app/morvena" "$@"
