#!/usr/bin/env bash
# Installs the build (folder $DVN_BUILD_DIR, default build) into a temporary
# prefix without root and uses the installed copy as a program outside the
# tree would:
#   - the installed files are all there (program, libraries with their
#     SONAME, public headers, CMake package, pkg-config file, manual page,
#     schema scripts, examples), and no installed text names this tree;
#   - the installed dvnbt creates a repository, and tests/install, built
#     through find_package(dvnbdbbe), imports the installed
#     examples/categories.trx into it;
#   - the installation is moved elsewhere and tests/install, built through
#     pkg-config, does the same again.
# The SQLite ODBC driver is found the way an installed program finds it:
# through the machine's unixODBC configuration, without $DVN_SQLITE_ODBC_DRIVER.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${DVN_BUILD_DIR:-$root/build}"
tmp="$(mktemp -d /tmp/dvnbt-install.XXXXXX)"
trap 'rm -rf "$tmp"' EXIT
unset ODBCSYSINI ODBCINI ODBCINSTINI DVN_SQLITE_ODBC_DRIVER
fail() { echo "install-test: $*" >&2; exit 1; }

prefix="$tmp/prefix"
cmake --install "$build" --prefix "$prefix" >"$tmp/install.log"
echo "== installed into $prefix"
(cd "$prefix" && find . -type f -o -type l | sort | sed 's|^\./|  |')

lib="$(dirname "$(find "$prefix" -name 'libdvnbdbbe.so' | head -1)")"
[ -d "$lib" ] || fail "libdvnbdbbe.so not installed"
libdir="${lib#"$prefix"/}"
for f in bin/dvnbt \
         "$libdir"/libdvnbdbbe.so "$libdir"/libdvnkernn.so "$libdir"/libdvnfcorn.so "$libdir"/libdvnfffdn.so \
         include/dvnbdbbe/dvnbdbif.h include/dvnbdbbe/dvnbauth.h include/dvnbdbbe/dvnbdbrd.h \
         include/dvnbdbbe/dvnkernn.h include/dvnbdbbe/dvnfcorn.h include/dvnbdbbe/dvnfffdn.h \
         include/dvnbdbbe/odbcframe.h include/dvnbdbbe/cstring.h \
         "$libdir"/cmake/dvnbdbbe/dvnbdbbeConfig.cmake "$libdir"/cmake/dvnbdbbe/dvnbdbbeConfigVersion.cmake \
         "$libdir"/pkgconfig/dvnbdbbe.pc share/man/man1/dvnbt.1 \
         share/dvnbdbbe/examples/categories.trx share/dvnbdbbe/schema/dvbt-sqlite.sql \
         share/dvnbdbbe/schema/dvbt-postgresql.sql; do
    [ -e "$prefix/$f" ] || fail "$f not installed"
done
# Each library answers to its SONAME, a link of that name beside it.
for l in dvnbdbbe dvnkernn dvnfcorn dvnfffdn; do
    soname="$(objdump -p "$lib/lib$l.so" | awk '$1 == "SONAME" { print $2 }')"
    case "$soname" in "lib$l.so."[0-9]*) ;; *) fail "lib$l.so has SONAME '$soname'" ;; esac
    [ -e "$lib/$soname" ] || fail "$soname not installed"
done
# No installed text file points back into the tree or the build.
if grep -rIl -e "$root" -e "$build" "$prefix" >"$tmp/paths" 2>/dev/null; then
    cat "$tmp/paths" >&2
    fail "installed files name the source or build folder"
fi
# The manual page renders without a warning.
if command -v groff >/dev/null; then
    warnings="$(groff -man -Tutf8 -ww -z "$prefix/share/man/man1/dvnbt.1" 2>&1)"
    [ -z "$warnings" ] || fail "dvnbt.1: $warnings"
fi

# The program runs from the installation, on its own libraries.
used="$(ldd "$prefix/bin/dvnbt" | awk '$1 ~ /^libdvnbdbbe\.so/ { print $3 }')"
if [ -z "$used" ] || [ "$(realpath "$used")" != "$(realpath "$lib/libdvnbdbbe.so")" ]; then
    fail "installed dvnbt uses '$used', not the installed library"
fi
"$prefix/bin/dvnbt" --version

# Runs tests/install (binary $1) on a fresh repository in $2 made by the
# installed dvnbt $3, and checks what it stored.
import_categories() {
    local program="$1" db="$2" dvnbt="$3" examples="$4"
    "$dvnbt" --db "$db" init >/dev/null
    "$program" "$db" "$examples/categories.trx" >"$tmp/out" 2>"$tmp/err" \
        || { cat "$tmp/out" "$tmp/err" >&2; fail "$program failed"; }
    cat "$tmp/out"
    grep -q '^level: 0$' "$tmp/out" || fail "import level not 0"
    grep -q 'Category Sales added' "$tmp/err" || { cat "$tmp/err" >&2; fail "no message for Sales"; }
    local got
    got="$(grep '^category: ' "$tmp/out" | tr '\n' '|')"
    [ "$got" = "category: Human Resources|category: Purchasing|category: Sales|" ] \
        || fail "categories stored: $got"
}

echo "== tests/install through find_package(dvnbdbbe)"
cmake -S "$root/tests/install" -B "$tmp/cmake" -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_BUILD_TYPE=Release \
    >"$tmp/cmake.log" || { cat "$tmp/cmake.log" >&2; fail "configure against the package failed"; }
cmake --build "$tmp/cmake" >"$tmp/cmake-build.log" 2>&1 || { cat "$tmp/cmake-build.log" >&2; fail "build failed"; }
import_categories "$tmp/cmake/import_categories" "$tmp/cmake.db" "$prefix/bin/dvnbt" "$prefix/share/dvnbdbbe/examples"

echo "== tests/install through pkg-config, the installation moved"
moved="$tmp/moved"
mv "$prefix" "$moved"
export PKG_CONFIG_PATH="$moved/$libdir/pkgconfig"
pkg-config --modversion dvnbdbbe
# shellcheck disable=SC2046
c++ -std=c++20 -o "$tmp/pc-import" "$root/tests/install/import_categories.cpp" \
    $(pkg-config --cflags --libs dvnbdbbe) -Wl,-rpath,"$moved/$libdir"
import_categories "$tmp/pc-import" "$tmp/pc.db" "$moved/bin/dvnbt" "$moved/share/dvnbdbbe/examples"
echo "== install test passed"
