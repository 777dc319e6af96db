#!/usr/bin/env bash
# Starts the built program under a virtual X server on a copy of the sample database, opens a
# recipe from the keyboard, waits until its page is shown, takes a screenshot and closes the
# program through its closing question.
# Arguments: the program, the sample database, the folder for the screenshot.
set -euo pipefail
program="$1"
sample="$2"
out="$3"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cp "$sample" "$work/Morvena.mdb"
mkdir -p "$work/config" "$out"
export MORVENA_CONFIG_DIR="$work/config"
export QT_QPA_PLATFORM=xcb  # a real window under the virtual X server
page="$work/page.html"
printf 'Windows Registry Editor Version 5.00\n\n[Software\\Orlessa\\Morvena]\n"TempFilename"="%s"\n' \
    "$page" > "$work/config/machine.reg"

xvfb-run -a -s "-screen 0 1024x768x24" bash -s "$program" "$work" "$page" "$out" <<'INNER'
set -euo pipefail
program="$1"; work="$2"; page="$3"; out="$4"
cd "$work"
"$program" & pid=$!
wait_for() {  # condition, seconds
    for _ in $(seq 1 "$(( $2 * 10 ))"); do eval "$1" && return 0; sleep 0.1; done
    echo "timed out waiting for: $1" >&2; return 1
}
wait_for 'xdotool search --onlyvisible --name "^Morvena 1\\.3\\.0" >/dev/null 2>&1' 30
window=$(xdotool search --onlyvisible --name "^Morvena 1\.3\.0" | head -n 1)
xdotool windowfocus --sync "$window"
wait_for '[ -s "$page" ]' 10            # the first group's page
# open the first group and its first subgroup, then step onto the first recipe
xdotool key --delay 150 Right Down Right Down
wait_for 'head -c 40 "$page" | grep -q "<title>[0-9][0-9]* - "' 10
sleep 0.5
import -window root "$out/morvena-smoke.png"
xdotool key ctrl+q
wait_for 'xdotool search --onlyvisible --name "^Morvena\$" >/dev/null 2>&1' 10
xdotool windowfocus --sync "$(xdotool search --onlyvisible --name '^Morvena$' | tail -n 1)"
xdotool key Return
wait_for '! kill -0 '"$pid"' 2>/dev/null' 10
wait "$pid"
INNER
echo "Recipe page shown: $(head -c 80 "$page" | iconv -f windows-1250 -t utf-8 | sed "s/<meta.*//")"
echo "Screenshot: $out/morvena-smoke.png"
