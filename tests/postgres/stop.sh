#!/usr/bin/env bash
# Stops the tests' PostgreSQL server started by start.sh and removes its cluster.
set -uo pipefail
address_file="$1"
[ -f "$address_file.cluster" ] || exit 0
cluster=$(cat "$address_file.cluster")
bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
run=()
[ "$(id -u)" = 0 ] && run=(runuser -u "$(stat -c %U "$cluster")" --)
"${run[@]}" "$bin/pg_ctl" -D "$cluster/data" -m fast -w stop >/dev/null 2>&1
rm -rf "$cluster" "$address_file" "$address_file.cluster"
exit 0
