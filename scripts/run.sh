#!/usr/bin/env bash
# Sets up, builds and runs the main job on the embedded default: creates a
# fresh repository in an SQLite database file (default ./dvnbt.db, or the
# first argument), imports examples/categories.trx into it, shows what
# was stored and exports the repository into dvnbt-export.trx beside it.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh"
dvnbt="${DVN_BUILD_DIR:-$root/build}/tools/dvnbt/dvnbt"
db="${1:-dvnbt.db}"
"$dvnbt" --db "$db" init --recreate
"$dvnbt" --db "$db" import --initial-load "$root/examples/categories.trx"
sqlite3 -header -column "$db" \
  "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM CATEGORY ORDER BY NAME; SELECT * FROM VERSION;"
"$dvnbt" --db "$db" export -o "$(dirname "$db")/dvnbt-export.trx"
