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
    screen=99
    while [ -e "/tmp/.X11-unix/X$screen" ] || [ -e "/tmp/.X$screen-lock" ]; do
        screen=$((screen + 1))
    done
    echo "No display: Morvena runs on the virtual screen :$screen (Xvfb), which nobody sees;" \
        "to see it, take a picture with 'DISPLAY=:$screen import -window root shot.png'" \
        "or watch it with 'x11vnc -display :$screen' and a VNC viewer." >&2
    exec xvfb-run -n "$screen" -s "-screen 0 1280x800x24" "$root/build/app/morvena" "$@"
fi
exec "$root/build/app/morvena" "$@"
