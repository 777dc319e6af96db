#!/usr/bin/env bash
# Builds and runs every benchmark program against generated databases: SQLite files (kept in
# $BUILD_DIR/bench-cache, so later runs skip generating them) and a private PostgreSQL server
# (tests/postgres/start.sh), which is always stopped at the end. Prints figures only.
#   bench/run.sh            all programs
#   bench/run.sh search     only bench_search (any program name without its "bench_")
# BUILD_DIR (default: ./build under the repository root) selects the build folder.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
build=${BUILD_DIR:-$root/build}
jobs=${JOBS:-$(nproc)}
programs=("${@:-foundation mainwindow start editor picker search tree copy settings access pages mealmaster exchange}")
read -r -a programs <<<"${programs[*]}"

cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$build" -j"$jobs"
cache="$build/bench-cache"
mkdir -p "$cache"

address_file=$(mktemp /tmp/morvena-bench-pg.XXXXXX)
cleanup() {
    bash "$root/tests/postgres/stop.sh" "$address_file" || true
    rm -f "$address_file" "$address_file.cluster"
}
trap cleanup EXIT
trap 'exit 130' INT TERM

pg=()
if bash "$root/tests/postgres/start.sh" "$address_file"; then
    pg=(--pg-server "$(cat "$address_file")")
else
    echo "run.sh: the private PostgreSQL server did not start; measuring SQLite only" >&2
fi

for program in "${programs[@]}"; do
    echo
    case "$program" in
        foundation) "$build/bench/bench_foundation" --cache-dir "$cache" "${pg[@]}" ;;
        mainwindow) "$build/bench/bench_mainwindow" --cache-dir "$cache" "${pg[@]}" \
                        --program "$build/app/morvena" --sample "$build/share/Morvena.mdb" ;;
        start) "$build/bench/bench_start" --tool "$build/tools/morvena-tool" --cache-dir "$cache" ;;
        editor) "$build/bench/bench_editor" --cache-dir "$cache" ;;
        picker) "$build/bench/bench_picker" --cache-dir "$cache" "${pg[@]}" ;;
        search) "$build/bench/bench_search" --cache-dir "$cache" "${pg[@]}" \
                    --tool "$build/tools/morvena-tool" ;;
        tree) "$build/bench/bench_tree" --cache-dir "$cache" "${pg[@]}" ;;
        copy) "$build/bench/bench_copy" --cache-dir "$cache" "${pg[@]}" ;;
        settings) "$build/bench/bench_settings" ;;
        access) "$build/bench/bench_access" --tool "$build/tools/morvena-tool" ;;
        pages) "$build/bench/bench_pages" --tool "$build/tools/morvena-tool" ;;
        mealmaster) "$build/bench/bench_mealmaster" ;;
        exchange) "$build/bench/bench_exchange" --tool "$build/tools/morvena-tool" \
                      --cache-dir "$cache" "${pg[@]}" ;;
        *) echo "run.sh: no benchmark named $program" >&2; exit 2 ;;
    esac
done
