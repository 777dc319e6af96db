#!/usr/bin/env bash
# Starts a private PostgreSQL server for the tests on a free loopback port and writes
# "host:port" to the file given as the first argument. The cluster lives in a temporary folder,
# owned by an unprivileged user when the tests run as root.
set -euo pipefail
address_file="$1"
bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -x "$bin/initdb" ] || { echo "PostgreSQL server programs not found" >&2; exit 1; }

cluster=$(mktemp -d /tmp/morvena-pg.XXXXXX)
run=()
if [ "$(id -u)" = 0 ]; then
    owner=postgres
    id "$owner" >/dev/null 2>&1 || owner=nobody
    chown "$owner" "$cluster"
    run=(runuser -u "$owner" --)
fi
printf 'morvena-test\n' > "$cluster/pwfile"
chmod 644 "$cluster/pwfile"
"${run[@]}" "$bin/initdb" -D "$cluster/data" -U morvena --pwfile="$cluster/pwfile" \
    -A scram-sha-256 -E UTF8 --locale=C.UTF-8 >"$cluster/initdb.log" 2>&1 \
    || { cat "$cluster/initdb.log" >&2; exit 1; }

for attempt in $(seq 1 30); do
    port=$(( (RANDOM % 30000) + 20000 ))
    (exec 3<>"/dev/tcp/127.0.0.1/$port") 2>/dev/null && continue
    if "${run[@]}" "$bin/pg_ctl" -D "$cluster/data" -l "$cluster/server.log" -w -t 60 \
        -o "-p $port -k $cluster -c listen_addresses=127.0.0.1 -c fsync=off" start >/dev/null; then
        echo "127.0.0.1:$port" > "$address_file"
        echo "$cluster" > "$address_file.cluster"
        exit 0
    fi
done
cat "$cluster/server.log" >&2
exit 1
