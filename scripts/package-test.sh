#!/usr/bin/env bash
# Makes the Debian package from the build (folder $DVN_BUILD_DIR, default
# build) with CPack, installs it on this machine with apt (root, or sudo) and
# runs the README's main job with the installed dvnbt, from a folder outside
# the tree, on the machine's own unixODBC configuration. The package is
# removed again afterwards unless it was installed before or
# DVN_KEEP_PACKAGE=1.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${DVN_BUILD_DIR:-$root/build}"
tmp="$(mktemp -d /tmp/dvnbt-package.XXXXXX)"
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
installed_before=0
if dpkg-query -W -f='${Status}' dvnbdbbe 2>/dev/null | grep -q "install ok installed"; then installed_before=1; fi
cleanup() {
    rm -rf "$tmp"
    if [ "$installed_before" = 0 ] && [ "${DVN_KEEP_PACKAGE:-0}" != 1 ] \
       && dpkg-query -W -f='${Status}' dvnbdbbe 2>/dev/null | grep -q "install ok installed"; then
        $sudo dpkg --purge dvnbdbbe >/dev/null
    fi
}
trap cleanup EXIT
unset ODBCSYSINI ODBCINI ODBCINSTINI DVN_SQLITE_ODBC_DRIVER
fail() { echo "package-test: $*" >&2; exit 1; }

echo "== cpack -G DEB"
(cd "$build" && rm -f dvnbdbbe_*.deb && cpack -G DEB >"$tmp/cpack.log" 2>&1) \
    || { cat "$tmp/cpack.log" >&2; fail "cpack failed"; }
deb="$(ls "$build"/dvnbdbbe_*.deb)"
dpkg-deb --field "$deb" Package Version Architecture Depends Installed-Size
echo "size: $(stat -c %s "$deb") bytes"
depends="$(dpkg-deb --field "$deb" Depends)"
for p in libodbc libsqliteodbc libssl; do
    grep -q "$p" <<<"$depends" || fail "the package does not depend on $p"
done
dpkg-deb --contents "$deb" | awk '{ print "  " $6 ($7 ? " " $7 " " $8 : "") }' | tee "$tmp/contents"
# (Checked in the package: minimal images tell dpkg to leave out manual pages.)
for f in ./usr/bin/dvnbt ./usr/share/man/man1/dvnbt.1 ./usr/share/dvnbdbbe/examples/categories.trx; do
    grep -qxF "  $f" "$tmp/contents" || fail "$f is not in the package"
done

echo "== apt-get install $deb"
export DEBIAN_FRONTEND=noninteractive
if ! $sudo apt-get install -y --no-install-recommends "$deb" >"$tmp/apt.log" 2>&1; then
    # A fresh machine may lack the package lists for the dependencies.
    $sudo apt-get update >/dev/null
    $sudo apt-get install -y --no-install-recommends "$deb" >"$tmp/apt.log" 2>&1 \
        || { cat "$tmp/apt.log" >&2; fail "apt-get install failed"; }
fi
dvnbt="$(command -v dvnbt)" || fail "dvnbt is not on the PATH"
[ "$dvnbt" = /usr/bin/dvnbt ] || fail "dvnbt found at $dvnbt, not from the package"

echo "== the main job with $dvnbt"
cd "$tmp"
dvnbt --version
examples=/usr/share/dvnbdbbe/examples
dvnbt --db dvnbt.db init --recreate
dvnbt --db dvnbt.db import --initial-load "$examples/team.trx"
DVNBT_USER=anna DVNBT_PASSWORD=anna-pw dvnbt --db dvnbt.db import "$examples/categories.trx"
got="$(sqlite3 dvnbt.db "SELECT NAME FROM CATEGORY ORDER BY NAME" | tr '\n' '|')"
[ "$got" = "Human Resources|Purchasing|Sales|" ] || fail "categories stored: $got"
sqlite3 -header -column dvnbt.db "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM CATEGORY ORDER BY NAME"
DVNBT_USER=admin DVNBT_PASSWORD=change-me dvnbt --db dvnbt.db export -o dvnbt-export.trx
grep -q '^Category "Sales" {' dvnbt-export.trx || fail "the export holds no category Sales"
echo "== package test passed"
