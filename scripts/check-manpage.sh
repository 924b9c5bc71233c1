#!/bin/sh
# Checks the manual page made from docs/cli.md against the program:
#   sh scripts/check-manpage.sh DVNBT PAGE
# The page renders without a warning, and every command, option and exit
# status that `dvnbt --help` lists has an entry of its own in the page.
set -eu
dvnbt="$1"
page="$2"
status=0

if command -v groff >/dev/null 2>&1; then
    warnings="$(groff -man -Tutf8 -ww -z "$page" 2>&1)"
    if [ -n "$warnings" ]; then
        echo "$page: groff warns: $warnings"
        status=1
    fi
else
    echo "groff not found: rendering not checked"
fi

# The tags of the page's entries (the line after each .TP), first word, as printed.
tags="$(awk 'tp { print; tp = 0 } /^\.TP/ { tp = 1 }' "$page" |
        sed -e 's/\\f[BIRP]//g' -e 's/\\-/-/g' -e 's/\\&//g' | awk '{ print $1 }')"

help="$("$dvnbt" --help)"
commands="$(printf '%s\n' "$help" | awk '/^Commands:/ { on = 1; next } on && /^$/ { on = 0 } on { print $1 }')"
options="$(printf '%s\n' "$help" | awk '$1 ~ /^--[a-z-]+$/ { print $1 }')"
[ -n "$commands" ] || { echo "no commands in dvnbt --help"; exit 1; }
[ -n "$options" ] || { echo "no options in dvnbt --help"; exit 1; }
for want in $commands $options 0 1 2 3 4; do
    if ! printf '%s\n' "$tags" | grep -qxF -- "$want"; then
        echo "$page: no entry for '$want' (dvnbt --help lists it; describe it in docs/cli.md)"
        status=1
    fi
done
exit $status
