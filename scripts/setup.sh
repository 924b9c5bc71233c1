#!/usr/bin/env bash
# Installs what a fresh Debian/Ubuntu machine lacks to build and test dvnbdbbe.
# Packages already installed are skipped; nothing is installed when none is missing.
set -euo pipefail

packages=(build-essential cmake googletest libgtest-dev unixodbc unixodbc-dev
          libsqliteodbc odbc-postgresql postgresql libssl-dev perl sqlite3
          pkg-config groff-base)
missing=()
for p in "${packages[@]}"; do
    if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
        missing+=("$p")
    fi
done
if [ ${#missing[@]} -eq 0 ]; then
    echo "setup: all packages present"
    exit 0
fi
sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "setup: installing ${missing[*]}"
$sudo apt-get update
DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y --no-install-recommends "${missing[@]}"
