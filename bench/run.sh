#!/usr/bin/env bash
# Builds and runs bench_foundation against generated SQLite files and a private PostgreSQL
# server (tests/postgres/start.sh), which is always stopped at the end.
#   bench/run.sh [extra bench_foundation options]
# BUILD_DIR (default: ./build under the repository root) selects the build folder; the generated
# SQLite files are kept in $BUILD_DIR/bench-cache so later runs skip generating them.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${BUILD_DIR:-$root/build}
jobs=${JOBS:-$(nproc)}

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$jobs" --target bench_foundation

address_file=$(mktemp /tmp/morvena-bench-pg.XXXXXX)
cleanup() {
    bash "$root/tests/postgres/stop.sh" "$address_file" || true
    rm -f "$address_file" "$address_file.cluster"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

pg_options=()
if bash "$root/tests/postgres/start.sh" "$address_file"; then
    pg_options=(--pg-server "$(cat "$address_file")")
else
    echo "run.sh: the private PostgreSQL server did not start; measuring SQLite only" >&2
fi

"$build/bench/bench_foundation" --cache-dir "$build/bench-cache" "${pg_options[@]}" "$@"
