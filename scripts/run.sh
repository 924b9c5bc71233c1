#!/usr/bin/env bash
# Sets up, builds and runs the main job on the embedded default: creates a
# fresh repository in an SQLite database file (default ./dvnbt.db, or the
# first argument), imports the team of examples/team.trx into it as the
# initial load, logs in as one of its persons to import
# examples/categories.trx, shows what was stored and exports the repository
# into dvnbt-export.trx beside the database.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh"
dvnbt="${DVN_BUILD_DIR:-$root/build}/tools/dvnbt/dvnbt"
db="${1:-dvnbt.db}"
"$dvnbt" --db "$db" init --recreate
"$dvnbt" --db "$db" import --initial-load "$root/examples/team.trx"
DVNBT_USER=anna DVNBT_PASSWORD=anna-pw "$dvnbt" --db "$db" import "$root/examples/categories.trx"
sqlite3 -header -column "$db" \
  "SELECT USERID, LEVEL_ID, STAFF_AUTH, PROC_DEF_AUTH FROM PERSON ORDER BY USERID;
   SELECT NAME, CHECKED_OUT, DESCRIPTION FROM CATEGORY ORDER BY NAME; SELECT * FROM VERSION;"
DVNBT_USER=admin DVNBT_PASSWORD=change-me "$dvnbt" --db "$db" export -o "$(dirname "$db")/dvnbt-export.trx"
