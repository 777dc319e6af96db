#!/usr/bin/env bash
# Installs what is missing, builds, and runs every test (SQLite files and a private PostgreSQL
# server that the tests start on loopback and stop afterwards).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-deps.sh
scripts/build.sh
cd build
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j"$(nproc)"
