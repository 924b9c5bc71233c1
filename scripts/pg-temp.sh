# Sourced by scripts/test.sh and .ci/run: starts a throwaway PostgreSQL server
# on a free loopback port, with its data and socket under a temporary folder,
# and writes a temporary unixODBC configuration with two data sources:
#   dvnbt_sqlite  a fresh SQLite file in the temporary folder
#   dvnbt_pg      the throwaway server (database postgres, user postgres)
# The server trusts every role but one: dvnbt_secret must give its password
# (scram-sha-256), so that tests can tell a right password from a wrong one.
# Exports ODBCSYSINI, ODBCINI, DVNBT_TEST_PG_DSN, and the role's name and
# password as DVNBT_TEST_PG_SECRET_USER and DVNBT_TEST_PG_SECRET_PASSWORD.
# The caller must call dvn_pg_stop on exit (dvn_pg_start installs a trap for
# EXIT, INT and TERM).

dvn_pg_stop() {
    if [ -n "${DVN_PG_TMP:-}" ] && [ -d "$DVN_PG_TMP" ]; then
        if [ -f "$DVN_PG_TMP/pg/data/postmaster.pid" ]; then
            dvn_pg_as_owner "$DVN_PG_BIN/pg_ctl" -D "$DVN_PG_TMP/pg/data" -m immediate -w stop >/dev/null 2>&1 || true
        fi
        rm -rf "$DVN_PG_TMP"
    fi
    DVN_PG_TMP=""
}

dvn_pg_as_owner() {
    if [ "$(id -u)" -eq 0 ]; then runuser -u postgres -- "$@"; else "$@"; fi
}

dvn_free_port() {
    perl -MIO::Socket::INET -e \
        'my $s = IO::Socket::INET->new(Listen => 1, LocalAddr => "127.0.0.1", LocalPort => 0) or die; print $s->sockport' 2>/dev/null \
    || python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1])'
}

dvn_pg_start() {
    DVN_PG_BIN="$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -1)"
    if [ -z "$DVN_PG_BIN" ]; then echo "pg-temp: PostgreSQL server binaries not found" >&2; return 1; fi
    DVN_PG_TMP="$(mktemp -d /tmp/dvnbt-pg.XXXXXX)"
    trap dvn_pg_stop EXIT
    trap 'dvn_pg_stop; exit 130' INT
    trap 'dvn_pg_stop; exit 143' TERM
    chmod 755 "$DVN_PG_TMP"
    mkdir -p "$DVN_PG_TMP/pg"
    if [ "$(id -u)" -eq 0 ]; then chown postgres "$DVN_PG_TMP/pg"; fi
    local port
    port="$(dvn_free_port)"
    dvn_pg_as_owner "$DVN_PG_BIN/initdb" -D "$DVN_PG_TMP/pg/data" -A trust -U postgres -E UTF8 --locale=C.UTF-8 \
        >"$DVN_PG_TMP/initdb.log" 2>&1 || { cat "$DVN_PG_TMP/initdb.log" >&2; return 1; }
    # The first line that matches decides: the secret role needs its password
    # on every road, everybody else is trusted.
    local secret=dvnbt_secret secret_password
    # Letters and digits only: a driver may give other characters back
    # encoded, and the tests look for the password as it is.
    secret_password="dvnbtpw$(od -An -N12 -tx1 /dev/urandom | tr -d ' \n')"
    dvn_pg_as_owner tee "$DVN_PG_TMP/pg/data/pg_hba.conf" >/dev/null <<HBA
local all $secret scram-sha-256
host  all $secret 127.0.0.1/32 scram-sha-256
host  all $secret ::1/128 scram-sha-256
local all all trust
host  all all 127.0.0.1/32 trust
host  all all ::1/128 trust
HBA
    # Single-user mode needs no client; the server is not running yet. The
    # password is hashed by the server (password_encryption scram-sha-256).
    echo "CREATE ROLE $secret LOGIN PASSWORD '$secret_password'" \
        | dvn_pg_as_owner "$DVN_PG_BIN/postgres" --single -D "$DVN_PG_TMP/pg/data" postgres >"$DVN_PG_TMP/role.log" 2>&1 \
        || { cat "$DVN_PG_TMP/role.log" >&2; return 1; }
    dvn_pg_as_owner "$DVN_PG_BIN/pg_ctl" -D "$DVN_PG_TMP/pg/data" -l "$DVN_PG_TMP/pg/log" -w \
        -o "-p $port -k $DVN_PG_TMP/pg -c listen_addresses=127.0.0.1 ${DVN_PG_OPTIONS:--c fsync=off}" start >/dev/null \
        || { cat "$DVN_PG_TMP/pg/log" >&2; return 1; }

    local odbcdir sqlite_driver pg_driver
    odbcdir="$(dirname "$(find /usr/lib /usr/local/lib -name 'psqlodbcw.so' 2>/dev/null | head -1)")"
    pg_driver="$odbcdir/psqlodbcw.so"
    sqlite_driver="$(find /usr/lib /usr/local/lib -name 'libsqlite3odbc.so' 2>/dev/null | head -1)"
    cat >"$DVN_PG_TMP/odbcinst.ini" <<INI
[SQLite3]
Driver=$sqlite_driver
[PostgreSQL Unicode]
Driver=$pg_driver
INI
    cat >"$DVN_PG_TMP/odbc.ini" <<INI
[dvnbt_sqlite]
Driver=SQLite3
Database=$DVN_PG_TMP/dvnbt.db
Timeout=10000
[dvnbt_pg]
Driver=PostgreSQL Unicode
Servername=127.0.0.1
Port=$port
Database=postgres
Username=postgres
INI
    export ODBCSYSINI="$DVN_PG_TMP" ODBCINI="$DVN_PG_TMP/odbc.ini" DVNBT_TEST_PG_DSN=dvnbt_pg
    export DVNBT_TEST_PG_SECRET_USER="$secret" DVNBT_TEST_PG_SECRET_PASSWORD="$secret_password"
    echo "pg-temp: PostgreSQL on 127.0.0.1:$port, unixODBC configuration in $DVN_PG_TMP"
}
