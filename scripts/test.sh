#!/usr/bin/env bash
# Sets up, builds and runs every test on SQLite and on PostgreSQL.
# PostgreSQL: the data source named by $DVNBT_TEST_PG_DSN when it is set;
# otherwise a throwaway server that this script starts and stops.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"
bash "$root/scripts/build.sh"
if [ -z "${DVNBT_TEST_PG_DSN:-}" ]; then
    # shellcheck source=pg-temp.sh
    . "$root/scripts/pg-temp.sh"
    dvn_pg_start
fi
export DVNBT_TEST_REQUIRE_PG="${DVNBT_TEST_REQUIRE_PG:-1}"
cd "${DVN_BUILD_DIR:-$root/build}"
ctest --output-on-failure -j"${DVN_JOBS:-2}"
