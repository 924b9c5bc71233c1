#!/usr/bin/env bash
# Sets up, builds and runs the main job on the embedded default: a fresh
# SQLite database file (default ./dvnbt.db, or the first argument).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh"
"${DVN_BUILD_DIR:-$root/build}/tools/dvnbt/dvnbt" --db "${1:-dvnbt.db}" ping
